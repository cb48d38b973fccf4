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
};

// Null for a page that is not known here.
[[nodiscard]] const CodePageFacts* FindFacts(UINT codePage) noexcept;

// A page of one or two bytes a character. Both directions give 0 for what the page lacks; only the zero
// byte itself is the zero unit.
class CodePage {
  public:
    using SingleBytes = std::array<char16_t, 256>;

    // Builds a page that has the single bytes of `single` and no others. Bytes that are 0 there, except the
    // first, are undefined.
    CodePage(const CodePageFacts& facts, const SingleBytes& single);

    void AddPair(std::uint8_t lead, std::uint8_t trail, char16_t unit);

    // Makes `code`, which must mean `unit`, the one that stands for it: several codes may mean one unit.
    void PreferCode(char16_t unit, std::uint16_t code);

    [[nodiscard]] const CodePageFacts& Facts() const noexcept { return facts_; }
    [[nodiscard]] bool IsDoubleByte() const noexcept { return facts_.MaxCharSize() == 2; }
    // Whether 0xA0 to 0xFF are U+00A0 to U+00FF, as in page 1252. ASCII is itself in all pages.
    [[nodiscard]] bool HasLatin1() const noexcept { return hasLatin1_; }
    [[nodiscard]] bool IsUndefined(std::uint8_t byte) const noexcept { return undefined_[byte]; }
    [[nodiscard]] bool IsLeadByte(std::uint8_t byte) const noexcept { return leadRows_[byte] != 0; }

    [[nodiscard]] const SingleBytes& Bytes() const noexcept { return singleBytes_; }
    [[nodiscard]] char16_t UnitOfByte(std::uint8_t byte) const noexcept { return singleBytes_[byte]; }
    [[nodiscard]] char16_t UnitOfPair(std::uint8_t lead, std::uint8_t trail) const noexcept {
        return pairs_[(leadRows_[lead] - 1u) * 256u + trail];
    }
    // Below 0x100 a single byte, else lead byte times 256 plus trail byte.
    [[nodiscard]] std::uint16_t CodeOfUnit(char16_t unit) const noexcept {
        return codes_[codeRows_[unit >> 8] * 256u + (unit & 0xFFu)];
    }

  private:
    void SetSingleBytes();
    void SetCode(char16_t unit, std::uint16_t code);

    const CodePageFacts& facts_;
    SingleBytes singleBytes_;
    bool hasLatin1_ = false;
    std::bitset<256> undefined_;
    std::array<std::uint8_t, 256> leadRows_ = {};   // 0: not a lead byte; else 1 + its row in `pairs_`
    std::vector<char16_t> pairs_;                   // rows of 256 by trail byte
    std::array<std::uint16_t, 256> codeRows_ = {};  // by a unit's high byte; row 0 is the empty one
    std::vector<std::uint16_t> codes_;              // rows of 256 by a unit's low byte
};

// The tables of a page, built on first use and kept; null for UTF-8 and for a page that is not known or
// that iconv doesn't have. Any thread may call; throws std::bad_alloc.
[[nodiscard]] const CodePage* FindCodePage(UINT codePage);

}  // namespace winapi
