#include "excelvalues/callexcel.h"

#include "excelvalues/makers.h"
#include "excelvalues/detail/memory.h"
#include "platform/detail/blockpool.h"

#include <array>
#include <cstdarg>

EXCEL12PROC Excel12EntryPoint = nullptr;

namespace {

// Excel12 without its variable arguments, which keep it from becoming a part of its callers.
int CallEntryPoint(int functionNumber, int count, LPXLOPER12* operands, LPXLOPER12 result) {
    if (Excel12EntryPoint == nullptr) return xlretFailed;
    return Excel12EntryPoint(functionNumber, count, operands, result);
}

// Between the two switches of messages. The record, so far empty, becomes the call's result or the error
// value of a failed call.
void CallInto(XLOPER12& record, int functionNumber, int count, LPXLOPER12* operands) {
    record.xltype = 0;
    CallEntryPoint(xlEnableXLMsgs, 0, nullptr, nullptr);
    const int code = CallEntryPoint(functionNumber, count, operands, &record);
    CallEntryPoint(xlDisableXLMsgs, 0, nullptr, nullptr);
    if (code != xlretSuccess) {
        SetErrorValue(record, xlerrValue);
        record.val.failure.returnCode = code;
    }
}

// Excel frees what it put into the record.
void GiveBack(LPXLOPER12 record) {
    CallEntryPoint(xlEnableXLMsgs, 0, nullptr, nullptr);
    CallEntryPoint(xlFree, 1, &record, nullptr);
    CallEntryPoint(xlDisableXLMsgs, 0, nullptr, nullptr);
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
    const LPXLOPER12 record = kestrolumen::detail::Operand(value);
    GiveBack(record);
    std::free(record);
}

ExcelResult::~ExcelResult() {
    GiveBack(&record_);
}

void ExcelResult::Call(int functionNumber, int count, LPXLOPER12* operands) noexcept {
    CallInto(record_, functionNumber, count, operands);
}

XXloperPtr CallExcelWithOperands(int functionNumber, int count, LPXLOPER12* operands) {
    kestrolumen::detail::MallocPtr<XXloper> record(new (kestrolumen::detail::Malloc(sizeof(XXloper)))
                                                       XXloper());
    CallInto(*record, functionNumber, count, operands);
    return {record.release(), CallExcelToFree(), kestrolumen::detail::PooledAllocator<XXloper>()};
}

void CallExcelForEffect(int functionNumber, const XLOPER12& operand) noexcept {
    const ExcelResult dropped(functionNumber, operand);
}
