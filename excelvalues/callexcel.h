// The one road of calls into Excel's function interface. A call always gives one XXloperPtr, and the caller
// tells the outcomes apart by the value alone:
//
//   outcome                             type           val.err         val.failure.returnCode
//   Excel gave an ordinary value        not xltypeErr
//   Excel gave an error value           xltypeErr      Excel's number  0
//   the call failed                     xltypeErr      xlerrValue      the callback's return code
//
// Every call into Excel, each xlFree included, is bracketed by xlEnableXLMsgs and xlDisableXLMsgs. There is
// no lock and no state but Excel12EntryPoint, so calls may come from any thread on which Excel accepts them.
#pragma once

#include "excelvalues/value.h"

#include <concepts>
#include <cstddef>
#include <type_traits>

// Excel's callback; null until the add-in's attach has found it, constant afterwards. While it is null every
// call fails with xlretFailed, so that a worksheet function shows #VALUE! in a process without Excel.
extern EXCEL12PROC Excel12EntryPoint;

// Excel's published routine: function number, result record or null, count of operands, and that many
// XLOPER12 pointers. Gives the callback's return code; a count beyond 0 to 255 gives xlretInvCount, and Excel
// isn't called. Code outside this layer uses CallExcel.
int Excel12(int functionNumber, LPXLOPER12 result, int count, ...);

// Policy for values that Excel put into a result record: on the last release Excel frees what it put there
// (xlFree), then the record goes back to the malloc heap.
struct CallExcelToFree {
    void operator()(const XXloper* value) const noexcept;
};

// One call into Excel and its result, for what has to be done however short memory is: nothing is allocated
// and nothing raised. The outcome is told as above. The record stands in the object, and at the end of the
// object Excel frees what it put there (xlFree).
//
//     const ExcelResult result(xlfRegister, *file, *procedure, *typeText, *functionText);
class ExcelResult {
  public:
    // Makes the call. The operands are read only.
    template <std::derived_from<XLOPER12>... Operands>
    requires(sizeof...(Operands) != 0) explicit ExcelResult(int functionNumber,
                                                            const Operands&... operands) noexcept {
        LPXLOPER12 pointers[] = {const_cast<XLOPER12*>(static_cast<const XLOPER12*>(&operands))...};
        Call(functionNumber, static_cast<int>(sizeof...(Operands)), pointers);
    }
    ~ExcelResult();
    ExcelResult(const ExcelResult&) = delete;
    ExcelResult& operator=(const ExcelResult&) = delete;

    const XLOPER12* operator->() const noexcept { return &record_; }

  private:
    void Call(int functionNumber, int count, LPXLOPER12* operands) noexcept;

    XLOPER12 record_{};
};

// Calls Excel with `count` operands; `operands` may be null when there are none. The values behind them stay
// the caller's and have to live until the call returns; Excel only reads them. The limit of Excel12 is not
// tested here. Raises std::bad_alloc when there is no memory for the result record, before Excel is called,
// or for the handle, after Excel has taken the result back.
XXloperPtr CallExcelWithOperands(int functionNumber, int count, LPXLOPER12* operands);

// Calls Excel with one operand for the sake of what the call does: whatever its result is goes back to Excel
// at once. Excel sees what it sees of a CallExcel whose handle is dropped; no memory is asked for.
void CallExcelForEffect(int functionNumber, const XLOPER12& operand) noexcept;

namespace kestrolumen::detail {

// The counts of operands for which CallExcel exists: 0 to 9, and 30, the most that Excel's older worksheet
// functions take.
constexpr bool IsOperandCountOfCallExcel(std::size_t count) noexcept {
    return count <= 9 || count == 30;
}

// Excel's interface knows no const; it doesn't write to operands.
inline LPXLOPER12 Operand(const XXloper* value) noexcept {
    return const_cast<XXloper*>(value);
}

}  // namespace kestrolumen::detail

// Calls Excel with operands in the order in which it is to get them, given by their handles.
template <std::same_as<XXloperPtr>... Handles>
requires(kestrolumen::detail::IsOperandCountOfCallExcel(sizeof...(Handles))) XXloperPtr
    CallExcel(int functionNumber, const Handles&... operands) {
    if constexpr (sizeof...(Handles) == 0) {
        return CallExcelWithOperands(functionNumber, 0, nullptr);
    } else {
        LPXLOPER12 pointers[] = {kestrolumen::detail::Operand(operands.get())...};
        return CallExcelWithOperands(functionNumber, static_cast<int>(sizeof...(Handles)), pointers);
    }
}

// The same with one or two operands given by plain pointers.
inline XXloperPtr CallExcel(int functionNumber, const XXloper* operand) {
    LPXLOPER12 pointers[] = {kestrolumen::detail::Operand(operand)};
    return CallExcelWithOperands(functionNumber, 1, pointers);
}
inline XXloperPtr CallExcel(int functionNumber, const XXloper* first, const XXloper* second) {
    LPXLOPER12 pointers[] = {kestrolumen::detail::Operand(first), kestrolumen::detail::Operand(second)};
    return CallExcelWithOperands(functionNumber, 2, pointers);
}

// What leads to no value (nullptr) or is none yet (a number) doesn't compile: Excel reads through each
// operand.
template <class... Operands>
requires((!std::same_as<Operands, XXloperPtr> && !std::is_pointer_v<std::decay_t<Operands>>) ||
         ...) XXloperPtr CallExcel(int functionNumber, const Operands&... operands)
= delete;
