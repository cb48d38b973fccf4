// What add-ins link that call Excel by name instead of asking the host for its callback: on Windows the module
// XLCALL32 beside the program, elsewhere the program itself. The functions of Excel before 2007 are there, since such
// add-ins don't load without them, and always fail.
#include "excelvalues/xlcall.h"

#include <windows.h>

#include <array>
#include <cstdarg>

namespace {

constexpr int kMostOperands = 255;
constexpr int kVersion = 0x0C00;  // Excel 2007, as in every version since

EXCEL12PROC entry_point = nullptr;

EXCEL12PROC EntryPoint() {
    if (entry_point == nullptr) {
        entry_point = reinterpret_cast<EXCEL12PROC>(
            reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleW(nullptr), "MdCallBack12")));
    }
    return entry_point;
}

}  // namespace

extern "C" {

int PASCAL Excel12v(int function, LPXLOPER12 result, int count, LPXLOPER12 operands[]) {
    const EXCEL12PROC entry = EntryPoint();
    return entry != nullptr ? entry(function, count, operands, result) : xlretFailed;
}

int Excel12(int function, LPXLOPER12 result, int count, ...) {
    if (count < 0 || count > kMostOperands) return xlretInvCount;
    std::array<LPXLOPER12, kMostOperands> operands{};
    va_list list;
    va_start(list, count);
    for (int i = 0; i < count; ++i) operands[static_cast<std::size_t>(i)] = va_arg(list, LPXLOPER12);
    va_end(list);
    return Excel12v(function, result, count, operands.data());
}

// For hosts that play Excel: where Excel12 goes from now on.
void PASCAL SetExcel12EntryPt(EXCEL12PROC entry) {
    entry_point = entry;
}

EXCEL12PROC PASCAL GetExcel12EntryPt() {
    return EntryPoint();
}

int PASCAL XLCallVer() {
    return kVersion;
}

int Excel4(int, void*, int, ...) {
    return xlretFailed;
}

int PASCAL Excel4v(int, void*, int, void*[]) {
    return xlretFailed;
}
}
