// Whether the real calls are Wine's: where those depart from what Microsoft's pages say, a test has nothing
// to hold them to.
#pragma once

#include <windows.h>

inline bool RunsOnWine() {
    const HMODULE ntdll = GetModuleHandleW(TEXT("ntdll.dll"));
    return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}
