// Numbers as text, and the letters of worksheet columns. No locale has a say: separator and decimal character
// are arguments.
#pragma once

#include "text/strings.h"

#include <cstdint>

// Decimal digits with `separator` between groups of three: -1,234,567. Any unit separates, a zero unit too;
// in the narrow form it goes into the text as it is.
[[nodiscard]] CStringW CStringWFromInt64Grouped(std::int64_t value, WCHAR separator = TEXT(','));
[[nodiscard]] CStringA CStringAFromInt64Grouped(std::int64_t value, char separator = ',');

// `value` with `digits` significant digits and no trailing zeros behind the decimal character: 1234.5, 5E-2,
// 2.147484E9. Rounded correctly, halves away from zero. A whole number from -2^31 to 2^31 - 1 has all its
// digits, whatever `digits` says; else notation with an exponent begins below 0.1, and where the whole part
// has more than `digits` digits.
//
// `digits` below 1 counts as 1, and above 348 as 348. Infinities give "inf" and "-inf", what is no number
// "nan" and its variants, as %g does. `decimalPoint` is of the ANSI code page; zero ends the text there.
[[nodiscard]] CStringW CStringWFromDouble(double value, std::int16_t digits, char decimalPoint);

// The letters of the zero-based column: A, Z, AA ... XFD for 16383, ZZZ for 18277. Empty outside 0 to 18277.
[[nodiscard]] CStringW ColumnLettersFromIndex(std::int32_t index);

inline constexpr std::uint16_t noColumn = 0xFFFF;

// Reads the column letters, three at most, in either case, at the zero-terminated text where `cursor` points,
// and moves it behind them. Gives the zero-based column; noColumn, and the pointer stays, if there is no
// letter or no text. Letters are those of ASCII alone: what some locales take for a capital I is none.
[[nodiscard]] std::uint16_t ColumnIndexFromLetters(const char** cursor) noexcept;
[[nodiscard]] std::uint16_t ColumnIndexFromLetters(const WCHAR** cursor) noexcept;
