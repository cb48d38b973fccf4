// BSTR, the string of automation: a pointer to text, a 32-bit byte count directly in front of the text, a
// zero unit behind it. A null BSTR is a valid value, the empty text. The text may hold zeros, and bytes in
// place of 16-bit units.
#pragma once

#include "winapi/types.h"

using OLECHAR = WCHAR;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
using BSTR = OLECHAR*;

// A new BSTR, freed by SysFreeString. Each gives null when memory runs out.
// - SysAllocString: a zero-terminated text; null gives null.
// - SysAllocStringLen: `length` units, of any content where `text` is null.
// - SysAllocStringByteLen: `length` bytes, odd or even, of any content where `text` is null.
[[nodiscard]] BSTR WINAPI SysAllocString(const OLECHAR* text) noexcept;
[[nodiscard]] BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT length) noexcept;
[[nodiscard]] BSTR WINAPI SysAllocStringByteLen(LPCSTR text, UINT length) noexcept;

void WINAPI SysFreeString(BSTR text) noexcept;

// 0 for null. An odd last byte doesn't count as a unit.
[[nodiscard]] UINT WINAPI SysStringLen(BSTR text) noexcept;
[[nodiscard]] UINT WINAPI SysStringByteLen(BSTR text) noexcept;
