// Numbers by Excel's rules: binary doubles of which 15 significant decimal digits count ("Excel specifications
// and limits": number precision, 15 digits).
#pragma once

#include <string>
#include <string_view>

namespace excelhost {

// A number as a formula writes it: digits with a point and an exponent, a sign, and nothing else. Digits
// beyond the 15th count as 0, as Excel drops them. False for other text and for one that no double can hold.
[[nodiscard]] bool ReadNumber(std::string_view text, double& number);

// A number as people type it into a cell: besides that, spaces around it, "1,234,567", "12%", "$5" and "(5)"
// for -5. Dates, times and fractions aren't read.
[[nodiscard]] bool ReadTypedNumber(std::string_view text, double& number);

// A number in up to 15 significant digits; no locale, and the same digits in every build.
[[nodiscard]] std::string NumberText(double number);

// Whether both numbers have the same 15 significant digits. This is how Excel's comparisons see numbers:
// =0.1+0.2=0.3 is TRUE.
[[nodiscard]] bool SameNumber(double a, double b) noexcept;

// a - b as the last step of a formula: 0 when both have the same 15 digits. Microsoft's "Floating-point
// arithmetic may give inaccurate results in Excel" tells that an addition or subtraction that results at or
// very close to zero is compensated, and shows that =.5-.4-.1 is 0 whereas =1*(.5-.4-.1) isn't; it publishes
// no limit, and the one of the comparisons is taken here.
[[nodiscard]] double FinalDifference(double a, double b) noexcept;

// To `places` behind the point, ahead of it when negative. The decimal digits decide, not the binary ones:
// 1.005 is 1.01 in two places. Those are the 15 that Excel shows, or, to round at the 15th or beyond, all
// that tell the double from its neighbours.
enum class Rounding { HalfAwayFromZero, AwayFromZero, TowardsZero };
[[nodiscard]] double Rounded(double number, double places, Rounding rounding);

}  // namespace excelhost
