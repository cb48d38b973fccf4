// Number formats, as TEXT takes them ("Number format codes").
#pragma once

#include "excelhost/value.h"

#include <optional>

namespace excelhost {

// A number in a format: up to three sections, for positive numbers, negative ones and zero, or for those that meet the
// conditions in front of two ([>100]) and all others; a section with "@" is for texts and takes no number from them.
// In each
//   digits     0 # ? with a point, commas between and behind them, %
//   exponents  0.00E+00, ##0.0E+0
//   fractions  # ??/??, 0/8: the nearest one
//   dates      y m d h s, AM/PM, A/P, .000 behind s, and [h] [m] [s] that go on beyond a day, an hour, a minute
//   General    the number in 15 digits
// and texts in quotes, behind "\" or of signs that mean nothing. Months and days have English names. Colours are
// dropped, "_x" is a space, "*x" nothing. Nothing for formats of another kind, as those of eras, Thai digits, other
// languages' dates and conditions that leave the number out, and for a date before 1900.
[[nodiscard]] std::optional<Text> FormattedNumber(double number, TextView format);

// A text in a format: the section for texts, if there is one, with the text for each "@".
[[nodiscard]] std::optional<Text> FormattedText(TextView text, TextView format);

}  // namespace excelhost
