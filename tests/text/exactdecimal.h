// The exact decimal expansion of a double by school arithmetic, and its rounding.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace support {

// All digits of the positive `value`, without leading zeros, and the place of the point in front of them.
inline std::pair<std::string, int> ExactDecimal(double value) {
    constexpr std::uint64_t base = 1'000'000'000;
    int exponent = 0;
    auto mantissa = static_cast<std::uint64_t>(std::ldexp(std::frexp(value, &exponent), 53));
    exponent -= 53;
    std::vector<std::uint64_t> limbs{mantissa % base, mantissa / base};
    // Times 2, or for a negative exponent times 5 with a decimal place more.
    const unsigned factor = exponent < 0 ? 5 : 2;
    for (int step = std::abs(exponent); step > 0; --step) {
        std::uint64_t carry = 0;
        for (std::uint64_t& limb : limbs) {
            carry += limb * factor;
            limb = carry % base;
            carry /= base;
        }
        if (carry != 0) limbs.push_back(carry);
    }
    std::string digits;
    for (auto limb = limbs.rbegin(); limb != limbs.rend(); ++limb) {
        const std::string part = std::to_string(*limb);
        digits.append(9 - part.size(), '0').append(part);
    }
    const auto zeros = digits.find_first_not_of('0');
    const int point = static_cast<int>(digits.size() - zeros) + (exponent < 0 ? exponent : 0);
    return {digits.substr(zeros), point};
}

// To `count` digits, halves away from zero.
inline std::pair<std::string, int> RoundedAwayFromZero(double value, int count) {
    auto [digits, point] = ExactDecimal(value);
    const auto kept = static_cast<std::size_t>(count);
    digits.resize(std::max(digits.size(), kept + 1), '0');
    const bool up = digits[kept] >= '5';
    digits.resize(kept);
    if (!up) return {digits, point};
    const auto last = digits.find_last_not_of('9');
    if (last == digits.npos) return {"1" + std::string(kept - 1, '0'), point + 1};
    ++digits[last];
    for (std::size_t i = last + 1; i < kept; ++i) digits[i] = '0';
    return {digits, point};
}

}  // namespace support
