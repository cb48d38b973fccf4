// The desktop, of which there is none.
#pragma once

#include "winapi/types.h"

using HWND = struct HWND__*;

#define SM_SERVERR2 89

// 0 for every figure.
[[nodiscard]] int WINAPI GetSystemMetrics(int index) noexcept;

// No window is ever found: null.
[[nodiscard]] HWND WINAPI FindWindowA(LPCSTR windowClass, LPCSTR title) noexcept;
