// Steps of the UTF-8 conversions for machines with AVX2. Each takes a prefix of the text and tells how far it
// came: it stops where there is no room for a whole block any more, at an ill-formed sequence and, where it
// converts, at a surrogate pair. Without such a machine none may be called.
//
// The method is that of Lemire and Mula, "Transcoding billions of Unicode characters per second with SIMD
// instructions" (Software: Practice and Experience, 2022): all lanes are computed as if each began a
// character, then those that didn't are squeezed out by a shuffle from a table.
#pragma once

#include <span>
#include <string_view>

#include "vectors.h"

namespace winapi::utf8::avx2 {

[[nodiscard]] Progress CountUtf16(std::string_view text) noexcept;
[[nodiscard]] Progress CountUtf8(std::u16string_view text) noexcept;  // stops at nothing but the end
[[nodiscard]] Progress ToUtf16(std::string_view text, std::span<char16_t> destination) noexcept;
[[nodiscard]] Progress ToUtf8(std::u16string_view text, std::span<char> destination) noexcept;

}  // namespace winapi::utf8::avx2
