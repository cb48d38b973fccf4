#include "addin/locateexcel.h"

#include "excelvalues/callexcel.h"

namespace {

// A loader gives every export under one type; only its name says what it is.
template <typename Procedure>
Procedure Export(HMODULE module, const char* name) noexcept {
    return reinterpret_cast<Procedure>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace

void LocateExcel12Entry() noexcept {
    if (Excel12EntryPoint != nullptr) return;
    if (const HMODULE library = GetModuleHandleW(TEXT("XLCall32")); library != nullptr) {
        const auto entryPoint = Export<FNGETEXCEL12ENTRYPT>(library, "GetExcel12EntryPt");
        if (entryPoint != nullptr) Excel12EntryPoint = entryPoint();
    }
    if (Excel12EntryPoint != nullptr) return;
    if (const HMODULE host = GetModuleHandleW(nullptr); host != nullptr) {
        Excel12EntryPoint = Export<EXCEL12PROC>(host, "MdCallBack12");
    }
}
