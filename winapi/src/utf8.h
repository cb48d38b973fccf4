// UTF-8 and UTF-16. Ill-formed text never stops a conversion: each maximal subpart of an ill-formed UTF-8
// sequence becomes U+FFFD, and so does each lone surrogate (The Unicode Standard, 3.9, "U+FFFD Substitution
// of Maximal Subparts").
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "vectors.h"

namespace winapi::utf8 {

// The units that the text takes in the other form; exact for ill-formed text too.
[[nodiscard]] std::size_t Utf16Length(std::string_view text, VectorSet vectors = BestVectorSet()) noexcept;
[[nodiscard]] std::size_t Utf8Length(std::u16string_view text, VectorSet vectors = BestVectorSet()) noexcept;

// Converts and gives the units written, or nothing if the result doesn't fit; what then stands in the
// destination is of no use. Nothing outside the two ranges is read or written.
[[nodiscard]] std::optional<std::size_t> ToUtf16(std::string_view text, std::span<char16_t> destination,
                                                 VectorSet vectors = BestVectorSet()) noexcept;
[[nodiscard]] std::optional<std::size_t> ToUtf8(std::u16string_view text, std::span<char> destination,
                                                VectorSet vectors = BestVectorSet()) noexcept;

[[nodiscard]] bool IsWellFormed(std::string_view text) noexcept;
[[nodiscard]] bool IsWellFormed(std::u16string_view text) noexcept;

}  // namespace winapi::utf8
