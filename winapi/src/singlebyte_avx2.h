// A step of the single-byte conversions for machines with AVX2; without such a machine it may not be called.
#pragma once

#include <string_view>

#include "codepage_tables.h"

namespace winapi::avx2 {

// Widens the text as far as there are whole blocks, for a page in which only 0x80 to 0x9F have units of other
// numbers than their own. Gives the count of bytes taken, which is that of the units written.
std::size_t WidenLatin1Page(const CodePage::SingleBytes& units, std::string_view text, char16_t* to) noexcept;

}  // namespace winapi::avx2
