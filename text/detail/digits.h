// The decimal digits of doubles, rounded correctly: what the number formats of this layer share. No locale
// has a say here.
#pragma once

namespace kestrolumen::detail {

enum class Ties { toEven, awayFromZero };

// At most this many digits are to be had; every double is exact with 767.
inline constexpr int mostDigits = 348;

// The `count` most significant digits of the finite, positive `value`, rounded, into `digits`; `count` is
// from 1 to mostDigits. Gives the place of the decimal point: 0.d1d2d3... times ten to the power of the
// result.
int SignificantDigits(double value, int count, Ties ties, char* digits) noexcept;

}  // namespace kestrolumen::detail
