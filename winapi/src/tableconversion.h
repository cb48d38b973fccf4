// Conversions between UTF-16 and the code pages that have tables. As in utf8.h nothing stops a conversion: a
// result of nothing says that the destination is too small.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "codepage_tables.h"
#include "vectors.h"

namespace winapi {

[[nodiscard]] std::size_t WideLength(const CodePage& page, std::string_view text) noexcept;
[[nodiscard]] std::optional<std::size_t> WideFromPage(const CodePage& page, std::string_view text,
                                                      std::span<char16_t> destination,
                                                      VectorSet vectors = BestVectorSet()) noexcept;

// Whether every character of the text is one of the page's.
[[nodiscard]] bool IsValidText(const CodePage& page, std::string_view text) noexcept;

// The code that stands for lacking characters: the first of `text`, or the page's own if that is null.
[[nodiscard]] std::uint16_t FirstCode(const CodePage& page, const char* text) noexcept;

// `usedDefault` becomes true, and never false, when `defaultCode` had to be used.
[[nodiscard]] std::size_t PageLength(const CodePage& page, std::u16string_view text,
                                     std::uint16_t defaultCode, bool& usedDefault) noexcept;
[[nodiscard]] std::optional<std::size_t> PageFromWide(const CodePage& page, std::u16string_view text,
                                                      std::span<char> destination, std::uint16_t defaultCode,
                                                      bool& usedDefault) noexcept;

}  // namespace winapi
