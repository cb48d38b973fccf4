// Text between UTF-16 and UTF-8 or the code pages that have tables. Nothing stops a conversion: what is
// ill-formed or lacking is replaced, and what has no room in the destination is only counted.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "codepagetable.h"

namespace winapi {

struct Converted {
    std::size_t units;  // of the whole result
    bool isExact;       // nothing had to be replaced
};

// Each maximal subpart of an ill-formed UTF-8 sequence becomes U+FFFD, and so does each lone surrogate (The
// Unicode Standard, 3.9, "U+FFFD Substitution of Maximal Subparts").
Converted WideFromUtf8(std::string_view text, std::span<char16_t> destination) noexcept;
Converted Utf8FromWide(std::u16string_view text, std::span<char> destination) noexcept;

Converted WideFromPage(const CodePage& page, std::string_view text, std::span<char16_t> destination) noexcept;
// `defaultChar`: the character that stands for lacking ones, the page's own if null.
Converted PageFromWide(const CodePage& page, std::u16string_view text, std::span<char> destination,
                       const char* defaultChar) noexcept;

}  // namespace winapi
