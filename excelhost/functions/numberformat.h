// Number formats, as TEXT takes them ("Number format codes").
#pragma once

#include "excelhost/value.h"

#include <optional>

namespace excelhost {

// A number in a format: up to three sections, for positive numbers, negative ones and zero; in each either digits
// (0 # ? with a point, commas between and behind them, %), or a date (y m d h s, AM/PM), and texts in quotes, behind
// "\" or of signs that mean nothing. General is the number in 15 digits. Months and days have English names.
// Nothing for a format of another kind: exponents, fractions, conditions, colours and elapsed hours are those.
[[nodiscard]] std::optional<Text> FormattedNumber(double number, TextView format);

}  // namespace excelhost
