// Case of wide text, as Microsoft's winuser.h describes it.
#pragma once

#include "winapi/types.h"

// Each maps the `length` units at `text` in place, one by one, and gives `length`. Zero units are units like
// any other. The locale plays no part. As on Windows, a unit of the Basic Multilingual Plane has another case
// only where the way back leads to it again: U+017F and U+00B5 stay, whatever their upper case in Unicode.
DWORD WINAPI CharUpperBuffW(LPWSTR text, DWORD length) noexcept;
DWORD WINAPI CharLowerBuffW(LPWSTR text, DWORD length) noexcept;
