// What is known of each code page, and the tables of those that are not UTF-8.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <string_view>
#include <vector>

#include "winapi/types.h"

namespace winapi {

constexpr UINT utf8CodePage = 65001;

// The published facts of a page.
struct CodePageFacts {
    UINT number;
    std::u16string_view name;                    // as Windows words it
    std::array<std::uint8_t, 4> leadBytes = {};  // pairs of first and last; zeros for none
    char16_t unicodeDefault = u'?';              // what stands for bytes that mean nothing in the page
    // Windows gives the bytes that a page leaves undefined units of the private use area, in the order of the
    // bytes, from this one on. 0: all are defined, those without a meaning as control characters.
    char16_t undefinedFrom = 0;

    // Bytes of a character.
    [[nodiscard]] UINT MaxCharSize() const noexcept {
        if (number == utf8CodePage) return 4;
        return leadBytes[0] != 0 ? 2 : 1;
    }
    [[nodiscard]] bool IsLeadByte(std::uint8_t byte) const noexcept {
        return byte != 0 && ((byte >= leadBytes[0] && byte <= leadBytes[1]) ||
                             (byte >= leadBytes[2] && byte <= leadBytes[3]));
    }
};

// Null for a page that is not known here.
[[nodiscard]] const CodePageFacts* FindFacts(UINT codePage) noexcept;

// A page of one or two bytes a character. A code is a single byte, or lead byte times 256 plus trail byte.
// Both directions give 0 for what the page lacks; only the zero byte itself is the zero unit.
struct CodePage {
    const CodePageFacts& facts;
    std::vector<char16_t> unitOfCode;
    std::vector<std::uint16_t> codeOfUnit;
    std::bitset<256>
        undefined;  // single bytes that have a unit of the private use area for want of a meaning
};

// The tables of a page, built on first use and kept; null for UTF-8 and for a page that is not known or
// that iconv doesn't have. Any thread may call; throws std::bad_alloc.
[[nodiscard]] const CodePage* FindCodePage(UINT codePage);

}  // namespace winapi
