// Full-width forms of ASCII folded to ASCII, and characters of multibyte text.
#pragma once

#include "text/strings.h"

// U+FF01 to U+FF5E become U+0021 to U+007E; every other unit stays.
[[nodiscard]] WCHAR HalfWidthFromWide(WCHAR unit) noexcept;

// The same for a character of a double-byte code page, packed as one byte below 0x100, else as lead byte
// times 256 plus second byte. -1 if `character` is no such character of `codePage`, or isn't to be converted.
[[nodiscard]] int HalfWidthFromDbcs(UINT codePage, WORD character) noexcept;

// The code of the character at `index`, counted in characters of the runtime library's current multibyte code
// page, packed as above. -1 if the text ends before or there, for a negative `index` and for a null `text`.
[[nodiscard]] int MbcsCharAt(const char* text, int index) noexcept;
