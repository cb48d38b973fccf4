#include "excelhost/numbers.h"

#include "excelhost/characters.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace excelhost {
namespace {

constexpr int kDigits = 15;

// 0 in place of every digit behind the 15th significant one, up to the exponent.
void DropDigits(std::string& text) {
    int kept = 0;
    for (char& c : text) {
        if (c == 'e' || c == 'E') break;
        if (!IsDigit(c) || (kept == 0 && c == '0')) continue;
        if (++kept > kDigits) c = '0';
    }
}

// "1,234,567.5": groups of three behind the first, none behind the point. Takes the commas out.
bool TakeGroups(std::string& text) {
    if (text.find(',') == std::string::npos) return true;
    const std::size_t whole = std::min(text.find_first_not_of("0123456789,"), text.size());
    if (text.front() == ',' || text.find(',', whole) != std::string::npos) return false;
    std::size_t sinceComma = 0;
    for (std::size_t i = whole; i > 0; --i) {
        if (text[i - 1] != ',') {
            ++sinceComma;
        } else if (sinceComma != 3) {
            return false;
        } else {
            sinceComma = 0;
        }
    }
    std::erase(text, ',');
    return true;
}

// A finite number other than 0 as 0.DIGITS * 10^exponent.
struct Decimal {
    std::string digits;
    int exponent = 0;
};
Decimal DecimalFrom(double magnitude, bool all) {
    std::array<char, 40> buffer{};
    char* const end = buffer.data() + buffer.size();
    const auto result =
        all ? std::to_chars(buffer.data(), end, magnitude, std::chars_format::scientific)
            : std::to_chars(buffer.data(), end, magnitude, std::chars_format::scientific, kDigits - 1);
    const std::string_view text(buffer.data(), static_cast<std::size_t>(result.ptr - buffer.data()));
    const std::size_t mark = text.find('e');
    Decimal decimal;
    for (const char c : text.substr(0, mark)) {
        if (IsDigit(c)) decimal.digits += c;
    }
    decimal.exponent = static_cast<int>(std::strtol(text.data() + mark + 1, nullptr, 10)) + 1;
    return decimal;
}

double NumberFrom(const Decimal& decimal) {
    const std::string text = "0." + decimal.digits + "e" + std::to_string(decimal.exponent);
    double number = HUGE_VAL;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// Cuts behind `kept` digits, which may be none or fewer, and adds one to the last when rounding asks for it.
void Cut(Decimal& decimal, int kept, Rounding rounding) {
    const bool half = kept >= 0 && decimal.digits[static_cast<std::size_t>(kept)] >= '5';
    const bool up = rounding == Rounding::AwayFromZero || (rounding == Rounding::HalfAwayFromZero && half);
    const bool any = decimal.digits.find_first_not_of('0', static_cast<std::size_t>(std::max(kept, 0))) !=
                     std::string::npos;
    decimal.digits.resize(static_cast<std::size_t>(std::max(kept, 0)));
    if (!up || !any) return;
    std::size_t last = decimal.digits.size();
    while (last > 0 && decimal.digits[last - 1] == '9') decimal.digits[--last] = '0';
    if (last > 0) {
        ++decimal.digits[last - 1];
    } else {
        decimal.digits.insert(0, 1, '1');
        decimal.exponent += 1 - std::min(kept, 0);
    }
}

}  // namespace

bool ReadNumber(std::string_view text, double& number) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    if (text.empty() || text.find_first_not_of("0123456789.eE+-") != std::string_view::npos) return false;
    std::string shortened;
    if (text.size() > kDigits) {
        shortened = text;
        DropDigits(shortened);
        text = shortened;
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size();
}

bool ReadTypedNumber(std::string_view text, double& number) {
    while (text.starts_with(' ')) text.remove_prefix(1);
    while (text.ends_with(' ')) text.remove_suffix(1);
    if (text.empty()) return false;
    const char first = text.front();
    if (!IsDigit(first) && std::string_view("+-.$(").find(first) == std::string_view::npos) return false;
    if (ReadNumber(text, number)) return true;
    const bool negative = text.size() > 2 && first == '(' && text.ends_with(')');
    if (negative) text = text.substr(1, text.size() - 2);
    const bool minus = !negative && text.starts_with('-');
    if (minus || (!negative && text.starts_with('+'))) text.remove_prefix(1);
    if (text.starts_with('$')) text.remove_prefix(1);
    const bool percent = text.ends_with('%');
    if (percent) text.remove_suffix(1);
    if (text.empty() || (!IsDigit(text.front()) && text.front() != '.')) return false;
    std::string plain(text);
    if (!TakeGroups(plain) || !ReadNumber(plain, number)) return false;
    if (percent) number /= 100;
    if (negative || minus) number = -number;
    return true;
}

std::string NumberText(double number) {
    if (std::isnan(number)) return "NaN";
    std::array<char, 32> buffer{};
    const double shown = number == 0 ? 0.0 : number;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), shown,
                                   std::chars_format::general, kDigits)
                         .ptr;
    std::string text(buffer.data(), end);
    std::replace(text.begin(), text.end(), 'e', 'E');
    return text;
}

bool SameNumber(double a, double b) noexcept {
    if (a == b) return true;
    // Numbers further apart than that differ in 15 digits; it saves most of them from being written out.
    constexpr double furthest = 2e-14;
    if (!(std::fabs(a - b) <= furthest * std::fabs(a))) return false;
    std::array<char, 32> left{};
    std::array<char, 32> right{};
    const auto write = [](std::array<char, 32>& buffer, double number) {
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::scientific,
                      kDigits - 1);
    };
    write(left, a);
    write(right, b);
    return left == right;
}

double FinalDifference(double a, double b) noexcept {
    return SameNumber(a, b) ? 0 : a - b;
}

double Rounded(double number, double places, Rounding rounding) {
    if (number == 0 || !std::isfinite(number)) return number;
    const int place = static_cast<int>(std::clamp(std::trunc(places), -400.0, 400.0));
    Decimal decimal = DecimalFrom(std::fabs(number), false);
    if (decimal.exponent + place >= kDigits) decimal = DecimalFrom(std::fabs(number), true);
    const int kept = decimal.exponent + place;
    if (kept >= static_cast<int>(decimal.digits.size())) return number;
    Cut(decimal, kept, rounding);
    if (decimal.digits.empty()) return 0;
    return std::copysign(NumberFrom(decimal), number);
}

}  // namespace excelhost
