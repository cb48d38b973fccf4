#include "decimal.h"

#include <algorithm>
#include <charconv>

namespace winapi {

namespace {
constexpr std::uint8_t negativeSign = 0x80;
}

Decimal::Decimal(bool isNegative, std::uint64_t whole, int decimals) noexcept
    : limbs{static_cast<std::uint32_t>(whole), static_cast<std::uint32_t>(whole >> 32), 0},
      scale(decimals),
      negative(isNegative && whole != 0) {}

Decimal::Decimal(const DECIMAL& value) noexcept : Decimal(false, value.Lo64, value.scale) {
    limbs[2] = value.Hi32;
    negative = (value.sign & negativeSign) != 0;
}

bool Decimal::MultiplyAdd(std::uint32_t factor, std::uint32_t summand) noexcept {
    std::array<std::uint32_t, 3> product{};
    std::uint64_t carry = summand;
    for (std::size_t i = 0; i < limbs.size(); ++i) {
        carry += std::uint64_t{limbs[i]} * factor;
        product[i] = static_cast<std::uint32_t>(carry);
        carry >>= 32;
    }
    if (carry != 0) return false;
    limbs = product;
    return true;
}

std::uint32_t Decimal::DivideByTen() noexcept {
    std::uint64_t remainder = 0;
    for (std::size_t i = limbs.size(); i-- > 0;) {
        remainder = (remainder << 32) | limbs[i];
        limbs[i] = static_cast<std::uint32_t>(remainder / 10);
        remainder %= 10;
    }
    return static_cast<std::uint32_t>(remainder);
}

void Decimal::RoundTo(int decimals) noexcept {
    std::uint32_t last = 0;
    bool more = false;
    for (; scale > decimals; --scale) {
        more = more || last != 0;
        last = DivideByTen();
    }
    if (last > 5 || (last == 5 && (more || limbs[0] % 2 != 0))) {
        [[maybe_unused]] const bool fits = MultiplyAdd(1, 1);  // a tenth of 96 bits and one
    }
    if (IsZero()) negative = false;
}

std::optional<std::uint64_t> Decimal::Scaled(int decimals) const noexcept {
    Decimal result = *this;
    result.RoundTo(decimals);
    for (; result.scale < decimals; ++result.scale) {
        if (!result.MultiplyAdd(10, 0)) return std::nullopt;
    }
    if (result.limbs[2] != 0) return std::nullopt;
    return (std::uint64_t{result.limbs[1]} << 32) | result.limbs[0];
}

std::optional<Decimal> Decimal::FromText(std::string_view text) noexcept {
    Decimal result;
    if (text.starts_with('-')) result.negative = true;
    if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);

    int exponent = 0;
    if (const auto at = text.find_first_of("eE"); at != std::string_view::npos) {
        std::string_view digits = text.substr(at + 1);
        if (digits.starts_with('+')) digits.remove_prefix(1);
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
        if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
        text = text.substr(0, at);
    }

    bool behindPoint = false;
    for (const char unit : text) {
        if (unit == '.') {
            behindPoint = true;
        } else if (result.MultiplyAdd(10, static_cast<std::uint32_t>(unit - '0'))) {
            result.scale += behindPoint ? 1 : 0;
        } else if (behindPoint) {
            break;
        } else {
            return std::nullopt;
        }
    }
    if (result.IsZero()) return Decimal();
    for (; exponent > 0 && result.scale > 0; --exponent) --result.scale;
    for (; exponent > 0; --exponent) {
        if (!result.MultiplyAdd(10, 0)) return std::nullopt;
    }
    if (exponent < -2 * maxDecimals) return Decimal();
    result.scale -= exponent;
    result.RoundTo(maxDecimals);
    return result;
}

DECIMAL Decimal::ToDecimal() const noexcept {
    DECIMAL result{};
    result.scale = static_cast<std::uint8_t>(scale);
    result.sign = negative ? negativeSign : std::uint8_t{0};
    result.Hi32 = limbs[2];
    result.Lo64 = (std::uint64_t{limbs[1]} << 32) | limbs[0];
    return result;
}

double Decimal::ToDouble() const noexcept {
    if (scale == 0 && limbs[2] == 0) {
        const auto magnitude = static_cast<double>((std::uint64_t{limbs[1]} << 32) | limbs[0]);
        return negative ? -magnitude : magnitude;
    }
    const std::string text = ToText();
    double result = 0;
    std::from_chars(text.data(), text.data() + text.size(), result);
    return result;
}

std::string Decimal::ToText() const {
    std::string text;  // from the last digit to the first
    for (Decimal rest = *this; !rest.IsZero() || text.size() <= static_cast<std::size_t>(scale);) {
        text += static_cast<char>('0' + rest.DivideByTen());
    }
    if (scale > 0) {
        text.insert(static_cast<std::size_t>(scale), 1, '.');
        text.erase(0, text.find_first_not_of('0'));
        if (text.starts_with('.')) text.erase(0, 1);
    }
    if (negative) text += '-';
    std::reverse(text.begin(), text.end());
    return text;
}

}  // namespace winapi
