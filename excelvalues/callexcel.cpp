#include "excelvalues/callexcel.h"

#include "excelvalues/makers.h"
#include "excelvalues/memory.h"

#include <array>
#include <cstdarg>

EXCEL12PROC Excel12EntryPoint = nullptr;

namespace {

int CallEntryPoint(int functionNumber, int count, LPXLOPER12* operands, LPXLOPER12 result) {
    if (Excel12EntryPoint == nullptr) return xlretFailed;
    return Excel12EntryPoint(functionNumber, count, operands, result);
}

}  // namespace

int Excel12(int functionNumber, LPXLOPER12 result, int count, ...) {
    constexpr int limit = 255;
    if (count < 0 || count > limit) return xlretInvCount;
    if (count == 0) return CallEntryPoint(functionNumber, 0, nullptr, result);

    std::array<LPXLOPER12, limit> operands;
    va_list arguments;
    va_start(arguments, count);
    for (int i = 0; i < count; ++i) operands[static_cast<std::size_t>(i)] = va_arg(arguments, LPXLOPER12);
    va_end(arguments);
    return CallEntryPoint(functionNumber, count, operands.data(), result);
}

void CallExcelToFree::operator()(const XXloper* value) const noexcept {
    const LPXLOPER12 record = detail::Operand(value);
    Excel12(xlEnableXLMsgs, nullptr, 0);
    Excel12(xlFree, nullptr, 1, record);
    Excel12(xlDisableXLMsgs, nullptr, 0);
    std::free(record);
}

XXloperPtr CallExcelWithOperands(int functionNumber, int count, LPXLOPER12* operands) {
    auto* const result = new (detail::Malloc(sizeof(XXloper))) XXloper();
    result->xltype = 0;
    Excel12(xlEnableXLMsgs, nullptr, 0);
    const int code = CallEntryPoint(functionNumber, count, operands, result);
    Excel12(xlDisableXLMsgs, nullptr, 0);
    if (code != xlretSuccess) {
        SetErrorValue(*result, xlerrValue);
        result->val.returnCode = code;
    }
    return {result, CallExcelToFree()};
}
