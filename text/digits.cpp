#include "text/detail/digits.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>

namespace {

// A number as std::to_chars writes it in scientific notation: d.ddde+xx or de+xx.
struct Scientific {
    char text[kestrolumen::detail::mostDigits + 16];
    char* digits;  // without the point
    int count;
    int point;

    void Parse(const char* end) noexcept {
        const char* exponent = std::find(static_cast<const char*>(text), end, 'e');
        count = static_cast<int>(exponent - text);
        digits = text;
        if (count > 1) {
            --count;
            text[1] = text[0];
            digits = text + 1;
        }
        int power = 0;
        std::from_chars(exponent + (exponent[1] == '+' ? 2 : 1), end, power);
        point = power + 1;
    }
};

// Adds one to the last of the digits. Gives whether they were all nines, and have become 1000...
bool Increment(char* digits, int count) noexcept {
    int last = count - 1;
    while (last >= 0 && digits[last] == '9') digits[last--] = '0';
    if (last >= 0) {
        ++digits[last];
        return false;
    }
    digits[0] = '1';
    return true;
}

// Whether the value lies exactly between two decimals whose last digit has the weight 10^-places. Those
// halves are odd multiples of 10^-places / 2, so the value's lowest bit has the weight 2^-(places + 1); for
// weights above 1 the value has to hold the power of five as well.
bool IsTie(double value, int places) noexcept {
    int exponent = 0;
    auto odd = static_cast<std::uint64_t>(std::ldexp(std::frexp(value, &exponent), 53));
    exponent -= 53;
    for (; (odd & 1) == 0; odd >>= 1) ++exponent;
    if (exponent != -places - 1) return false;
    for (; places < 0; ++places) {
        if (odd % 5 != 0) return false;
        odd /= 5;
    }
    return true;
}

int ExactDigits(double value, int count, kestrolumen::detail::Ties ties, char* digits) noexcept {
    Scientific rounded;
    const auto write = [&](int digitCount) {
        rounded.Parse(std::to_chars(rounded.text, std::end(rounded.text), value,
                                    std::chars_format::scientific, digitCount - 1)
                          .ptr);
        std::copy_n(rounded.digits, count, digits);
    };
    write(count);
    if (ties == kestrolumen::detail::Ties::awayFromZero && IsTie(value, count - rounded.point)) {
        write(count + 1);
        if (Increment(digits, count)) ++rounded.point;
    }
    return rounded.point;
}

// Those that a double holds exactly.
constexpr double powersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                  1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

double Scaled(double value, int places) noexcept {
    return places >= 0 ? value * powersOfTen[places] : value / powersOfTen[-places];
}

// Whether this power and its neighbours are exact.
bool IsExactPower(int places) noexcept {
    return places > -22 && places < 22;
}

// Up to 15 digits of a normal double, as a whole number: the value times a power of ten, which is rounded
// once and so is off by no more than half its last bit. Gives false if that leaves it open which way to
// round.
bool QuickDigits(double value, int count, char* digits, int& point) noexcept {
    const int binary = std::ilogb(value);
    int places = count - 1 - (binary * 1233 >> 12);  // the logarithm of 2 is 0.30103; may be one off
    if (!IsExactPower(places)) return false;
    double scaled = Scaled(value, places);
    if (scaled >= powersOfTen[count]) {
        scaled = Scaled(value, --places);
    } else if (scaled < powersOfTen[count - 1]) {
        scaled = Scaled(value, ++places);
    }
    auto whole = static_cast<std::int64_t>(scaled);
    const double fraction = scaled - static_cast<double>(whole);
    if (std::fabs(fraction - 0.5) <= scaled * std::numeric_limits<double>::epsilon()) return false;
    if (fraction > 0.5) ++whole;
    point = count - places;
    const auto limit = static_cast<std::int64_t>(powersOfTen[count]);
    if (whole == limit) {
        whole = limit / 10;
        ++point;
    }
    std::to_chars(digits, digits + count, whole);
    return true;
}

}  // namespace

namespace kestrolumen::detail {

// What one multiplication leaves open is decided by the shortest decimal that reads back as the value, which
// is quicker to be had than exact digits. Up to 15 digits, which every normal double holds, it rounds as the
// value does: a half between them would be shorter still or nearer. Only when it is such a half itself does
// it not tell on which side of it the value lies.
int SignificantDigits(double value, int count, Ties ties, char* digits) noexcept {
    if (count > 15 || value < std::numeric_limits<double>::min())
        return ExactDigits(value, count, ties, digits);
    int point = 0;
    if (QuickDigits(value, count, digits, point)) return point;
    Scientific shortest;
    shortest.Parse(
        std::to_chars(shortest.text, std::end(shortest.text), value, std::chars_format::scientific).ptr);
    if (shortest.count <= count) {
        std::fill(std::copy_n(shortest.digits, shortest.count, digits), digits + count, '0');
        return shortest.point;
    }
    const char next = shortest.digits[count];
    if (next == '5' && shortest.count == count + 1) return ExactDigits(value, count, ties, digits);
    std::copy_n(shortest.digits, count, digits);
    return shortest.point + (next >= '5' && Increment(digits, count) ? 1 : 0);
}

}  // namespace kestrolumen::detail
