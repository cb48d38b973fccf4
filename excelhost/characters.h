// Text of the simulated Excel: 16-bit units inside, UTF-8 outside.
#pragma once

#include <windows.h>

#include <compare>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace excelhost {

using Text = std::basic_string<WCHAR>;
using TextView = std::basic_string_view<WCHAR>;

// UTF-8 to wide text and back. Bad sequences and lone surrogates become U+FFFD.
[[nodiscard]] Text Wide(std::string_view utf8);
[[nodiscard]] std::string Utf8(TextView text);

// The length of the longest beginning that is UTF-8.
[[nodiscard]] std::size_t Utf8Prefix(std::string_view text) noexcept;

// Text for a message or a trace, in UTF-8: at most `most` units, no character split, an ellipsis where it is
// cut. Control characters, and those that turn the direction of a line, are shown as \t, \n, \r or \uXXXX, so
// that what a sheet holds can't disturb the terminal.
[[nodiscard]] std::string Excerpt(TextView text, std::size_t most = 200);
[[nodiscard]] std::string Excerpt(std::string_view utf8, std::size_t most = 200);

// Of ASCII alone, whatever the locale.
template <class Unit>
[[nodiscard]] constexpr bool IsDigit(Unit unit) noexcept {
    return unit >= '0' && unit <= '9';
}
template <class Unit>
[[nodiscard]] constexpr Unit LowerAscii(Unit unit) noexcept {
    return unit >= 'A' && unit <= 'Z' ? static_cast<Unit>(unit - 'A' + 'a') : unit;
}
template <class Unit>
[[nodiscard]] constexpr bool IsLetter(Unit unit) noexcept {
    return LowerAscii(unit) >= 'a' && LowerAscii(unit) <= 'z';
}

// Equal without regard to case, for the names of workbooks and functions (letters A to Z only).
[[nodiscard]] bool SameName(TextView a, TextView b) noexcept;

// Upper and lower case as the system maps single units, which is what Excel's UPPER and LOWER give: ä is Ä, ß
// stays.
[[nodiscard]] Text UpperCase(Text text);
[[nodiscard]] Text LowerCase(Text text);

// The order of texts without regard to case: by the units of their upper case. Excel's own order is that of
// the user's language; both agree on what is equal.
[[nodiscard]] std::strong_ordering CompareTexts(TextView a, TextView b) noexcept;

[[nodiscard]] std::string Utf8From(const std::filesystem::path& path);

// Appends a text in UTF-8 as a string of JSON, quoted; "<" is escaped too, so that it may stand in a script of an HTML
// page.
void AppendJson(std::string& json, std::string_view text);

}  // namespace excelhost
