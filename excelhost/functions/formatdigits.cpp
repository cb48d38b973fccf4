#include "excelhost/functions/formatsection.h"
#include "excelhost/numbers.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace excelhost {
namespace {

using Kind = FormatToken::Kind;

bool IsShown(const FormatToken& token) {
    return token.kind == Kind::Literal || token.kind == Kind::Percent || token.kind == Kind::Stroke;
}

bool IsDigit(const FormatToken& token) {
    return token.kind == Kind::Digit;
}

std::size_t DigitCount(FormatTokens tokens) {
    return static_cast<std::size_t>(std::count_if(tokens.begin(), tokens.end(), IsDigit));
}

// The decimal digits of a number from 0 on: those ahead of the point without leading zeros, and `decimals` behind.
std::pair<std::string, std::string> DigitsOf(double number, std::size_t decimals) {
    std::array<char, 40> text{};
    (void)std::snprintf(text.data(), text.size(), "%.14e", number);
    const std::string shown = text.data();
    const int exponent = std::stoi(shown.substr(shown.find('e') + 1));
    std::string digits = number == 0 ? "" : shown.substr(0, 1) + shown.substr(2, 14);
    const auto whole = static_cast<std::size_t>(std::max(exponent + 1, 0));
    if (exponent < -1 && number != 0) digits.insert(0, static_cast<std::size_t>(-exponent - 1), '0');
    digits.resize(std::max(digits.size(), (number == 0 ? 0 : whole) + decimals), '0');
    if (number == 0) return {"", digits.substr(0, decimals)};
    return {digits.substr(0, whole), digits.substr(whole, decimals)};
}

struct DigitLayout {
    std::size_t point = 0;     // the token, or their count
    std::size_t decimals = 0;  // placeholders behind it
    std::size_t scale = 0;     // commas behind the last placeholder of the whole part: thousands
    std::size_t percents = 0;
    bool isGrouped = false;
};

DigitLayout LayoutOf(FormatTokens tokens) {
    DigitLayout layout;
    layout.point = tokens.size();
    std::size_t commas = 0;
    bool hasDigit = false;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        switch (tokens[i].kind) {
            case Kind::Point:
                if (layout.point == tokens.size()) layout.point = i;
                break;
            case Kind::Digit:
                if (commas > 0 && hasDigit) layout.isGrouped = true;
                commas = 0;
                hasDigit = true;
                if (layout.point < i) ++layout.decimals;
                break;
            case Kind::Comma:
                ++commas;
                break;
            case Kind::Percent:
                ++layout.percents;
                break;
            default:
                break;
        }
    }
    if (hasDigit) layout.scale = commas;
    return layout;
}

// The whole part, from its last digit to the first: the first placeholder takes all digits that are left.
std::string WholePart(FormatTokens tokens, std::string digits, bool isGrouped) {
    std::size_t places = DigitCount(tokens);
    // A zero stands for itself and all placeholders behind it.
    std::string reversed;
    std::size_t written = 0;
    const auto write = [&](char digit) {
        if (isGrouped && written > 0 && written % 3 == 0 && digit != ' ') reversed += ',';
        reversed += digit;
        ++written;
    };
    const auto firstZero = std::find_if(tokens.begin(), tokens.end(), [](const FormatToken& token) {
        return token.kind == Kind::Digit && token.text == "0";
    });
    for (std::size_t i = tokens.size(); i-- > 0;) {
        const FormatToken& token = tokens[i];
        if (IsShown(token)) {
            reversed.append(token.text.rbegin(), token.text.rend());
        } else if (token.kind == Kind::Digit) {
            const bool isForced = static_cast<std::ptrdiff_t>(i) >= firstZero - tokens.begin();
            if (!digits.empty()) {
                write(digits.back());
                digits.pop_back();
            } else if (isForced) {
                write('0');
            } else if (token.text == "?") {
                write(' ');
            }
            if (--places > 0) continue;
            for (; !digits.empty(); digits.pop_back()) write(digits.back());
        }
    }
    return {reversed.rbegin(), reversed.rend()};
}

std::string Decimals(FormatTokens tokens, const std::string& digits) {
    std::string text;
    std::size_t next = 0;
    for (const FormatToken& token : tokens) {
        if (IsShown(token) || token.kind == Kind::Point) {
            text += token.text;
        } else if (token.kind == Kind::Digit) {
            const bool isRest = digits.find_first_not_of('0', next) == std::string::npos;
            if (token.text == "0" || !isRest) {
                text += digits[next];
            } else if (token.text == "?") {
                text += ' ';
            }
            ++next;
        }
    }
    return text;
}

// -- Fractions.

// "# ??/16 in": the whole part, which may be missing, the fraction and what follows.
struct FractionLayout {
    FormatTokens whole;
    FormatTokens numerator;
    FormatTokens denominator;
    FormatTokens behind;
};

FractionLayout FractionLayoutOf(FormatTokens tokens) {
    const std::size_t stroke = FractionStroke(tokens);
    std::size_t first = stroke;
    while (first > 0 && IsDigit(tokens[first - 1])) --first;
    std::size_t end = stroke + 1;
    while (end < tokens.size() && (IsDigit(tokens[end]) || tokens[end].kind == Kind::Number)) ++end;
    return {tokens.first(first), tokens.subspan(first, stroke - first),
            tokens.subspan(stroke + 1, end - stroke - 1), tokens.subspan(end)};
}

// "16", or 0 for placeholders.
double FixedDenominator(FormatTokens denominator) {
    double fixed = 0;
    (void)ReadNumber(denominator.front().text, fixed);
    return fixed;
}

// The denominator up to `most` whose fraction is the nearest, the smaller of several.
double NearestDenominator(double number, int most) {
    double best = 1;
    double least = 1;
    for (int tried = 1; tried <= most; ++tried) {
        const double denominator = tried;
        const double scaled = number * denominator;
        const double distance = std::fabs(scaled - std::round(scaled)) / denominator;
        constexpr double same = 1e-12;
        if (distance >= least - same) continue;
        least = distance;
        best = denominator;
    }
    return best;
}

}  // namespace

std::optional<std::string> FormattedDigits(double number, FormatTokens tokens, bool& isZero) {
    const DigitLayout layout = LayoutOf(tokens);
    const double scaled = std::fabs(number) * std::pow(100, static_cast<double>(layout.percents)) /
                          std::pow(1000, static_cast<double>(layout.scale));
    if (!std::isfinite(scaled)) return std::nullopt;
    const double rounded = Rounded(scaled, static_cast<double>(layout.decimals), Rounding::HalfAwayFromZero);
    isZero = rounded == 0;
    auto [whole, decimals] = DigitsOf(rounded, layout.decimals);
    return WholePart(tokens.first(layout.point), std::move(whole), layout.isGrouped) +
           Decimals(tokens.subspan(layout.point), decimals);
}

std::optional<std::string> FormattedExponent(double number, FormatTokens tokens, bool& isZero) {
    const auto mark = static_cast<std::size_t>(
        std::find_if(tokens.begin(), tokens.end(),
                     [](const FormatToken& token) { return token.kind == Kind::Exponent; }) -
        tokens.begin());
    const FormatTokens front = tokens.first(mark);
    const DigitLayout layout = LayoutOf(front);
    const int step = std::max(1, static_cast<int>(DigitCount(front.first(layout.point))));
    const auto rounded = [&](double mantissa) {
        return Rounded(mantissa, static_cast<double>(layout.decimals), Rounding::HalfAwayFromZero);
    };
    isZero = number == 0;
    std::array<char, 40> text{};
    (void)std::snprintf(text.data(), text.size(), "%.14e", std::fabs(number));
    const std::string shown = text.data();
    const std::size_t e = shown.find('e');
    const int exponent = std::stoi(shown.substr(e + 1));
    int multiple = (exponent >= 0 ? exponent / step : -((step - 1 - exponent) / step)) * step;
    double mantissa = 0;
    (void)ReadNumber(shown.substr(0, e + 1) + std::to_string(exponent - multiple), mantissa);
    // 9.99 may become 10.
    const double limit = std::pow(10.0, step);
    if (rounded(mantissa) >= limit) {
        mantissa /= limit;
        multiple += step;
    }
    auto [whole, decimals] = DigitsOf(rounded(mantissa), layout.decimals);
    const char* sign = multiple < 0 ? "-" : tokens[mark].text.back() == '+' ? "+" : "";
    return WholePart(front.first(layout.point), std::move(whole), false) +
           Decimals(front.subspan(layout.point), decimals) + tokens[mark].text.front() + sign +
           WholePart(tokens.subspan(mark + 1), std::to_string(std::abs(multiple)), false);
}

std::size_t FractionStroke(FormatTokens tokens) {
    for (std::size_t i = 1; i + 1 < tokens.size(); ++i) {
        const FormatToken& next = tokens[i + 1];
        if (tokens[i].kind == Kind::Stroke && IsDigit(tokens[i - 1]) &&
            (IsDigit(next) || next.kind == Kind::Number))
            return i;
    }
    return tokens.size();
}

std::optional<std::string> FormattedFraction(double number, FormatTokens tokens, bool& isZero) {
    const FractionLayout layout = FractionLayoutOf(tokens);
    const bool hasWhole = DigitCount(layout.whole) > 0;
    double whole = hasWhole ? std::floor(std::fabs(number)) : 0;
    const double part = std::fabs(number) - whole;
    constexpr std::size_t mostPlaces = 5;
    const std::size_t places = std::min(DigitCount(layout.denominator), mostPlaces);
    const double fixed = FixedDenominator(layout.denominator);
    const double denominator =
        fixed > 0
            ? fixed
            : NearestDenominator(part, static_cast<int>(std::pow(10.0, static_cast<double>(places))) - 1);
    double numerator = std::round(part * denominator);
    if (!std::isfinite(numerator)) return std::nullopt;
    if (hasWhole && numerator == denominator) {
        ++whole;
        numerator = 0;
    }
    isZero = whole == 0 && numerator == 0;
    const auto digits = [](double value) { return DigitsOf(value, 0).first; };
    const auto isForced = [](FormatTokens placeholders) {
        return std::any_of(placeholders.begin(), placeholders.end(),
                           [](const FormatToken& token) { return token.text == "0"; });
    };
    std::string text = WholePart(layout.whole, isZero && hasWhole ? "0" : digits(whole), false);
    const std::string above = WholePart(layout.numerator, numerator == 0 ? "0" : digits(numerator), false);
    // Numerators stand against the stroke, and so do denominators.
    std::string below = digits(denominator);
    const std::size_t width = fixed > 0 ? below.size() : layout.denominator.size();
    if (below.size() < width) {
        const bool isZeros = isForced(layout.denominator);
        below.insert(isZeros ? 0 : below.size(), width - below.size(), isZeros ? '0' : ' ');
    }
    // Blanks keep the place of a fraction that a whole number doesn't have.
    if (hasWhole && numerator == 0 && !isForced(layout.numerator)) {
        text.append(above.size() + 1 + below.size(), ' ');
    } else {
        text += above + '/' + below;
    }
    return text + WholePart(layout.behind, "", false);
}

}  // namespace excelhost
