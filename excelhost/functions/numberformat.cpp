#include "excelhost/functions/numberformat.h"

#include "excelhost/functions/calendar.h"
#include "excelhost/numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace excelhost {
namespace {

// A piece of a section: a text that stands as it is, a placeholder or sign of digits, or letters of a date.
struct Token {
    enum class Kind { Literal, Digit, Point, Comma, Percent, DatePart } kind;
    std::string text;  // of Digit its placeholder; of DatePart the letters in lower case
};

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::vector<std::string> SectionsOf(std::string_view format) {
    std::vector<std::string> sections(1);
    bool isQuoted = false;
    for (std::size_t i = 0; i < format.size(); ++i) {
        const char c = format[i];
        if (c == '\\' && !isQuoted) {
            sections.back() += format.substr(i++, 2);
        } else if (c == ';' && !isQuoted) {
            sections.emplace_back();
        } else {
            if (c == '"') isQuoted = !isQuoted;
            sections.back() += c;
        }
    }
    return sections;
}

// Nothing for what isn't known.
std::optional<std::vector<Token>> TokensOf(std::string_view section) {
    using Kind = Token::Kind;
    std::vector<Token> tokens;
    while (!section.empty()) {
        const char c = section.front();
        std::size_t length = 1;
        if (c == '"') {
            const std::size_t end = std::min(section.find('"', 1), section.size());
            tokens.push_back({Kind::Literal, std::string(section.substr(1, end - 1))});
            length = std::min(end + 1, section.size());
        } else if (c == '\\') {
            // A character of UTF-8 may have several bytes; the others follow as literals.
            tokens.push_back({Kind::Literal, std::string(section.substr(1, 1))});
            length = std::min<std::size_t>(2, section.size());
        } else if (c == '0' || c == '#' || c == '?') {
            tokens.push_back({Kind::Digit, std::string(1, c)});
        } else if (c == '.') {
            tokens.push_back({Kind::Point, "."});
        } else if (c == ',') {
            tokens.push_back({Kind::Comma, ","});
        } else if (c == '%') {
            tokens.push_back({Kind::Percent, "%"});
        } else if (section.starts_with("AM/PM") || section.starts_with("am/pm")) {
            tokens.push_back({Kind::DatePart, "am/pm"});
            length = 5;
        } else if (std::string_view("ymdhs").find(Lower(c)) != std::string_view::npos) {
            while (length < section.size() && Lower(section[length]) == Lower(c)) ++length;
            tokens.push_back({Kind::DatePart, std::string(length, Lower(c))});
        } else if (static_cast<unsigned char>(c) >= 0x80 ||
                   std::string_view(" $-+/():!^&'~{}<>=").find(c) != std::string_view::npos) {
            tokens.push_back({Kind::Literal, std::string(1, c)});
        } else {
            return std::nullopt;
        }
        section.remove_prefix(length);
    }
    return tokens;
}

// -- Dates.

constexpr std::array<const char*, 12> kMonths = {"January",   "February", "March",    "April",
                                                 "May",       "June",     "July",     "August",
                                                 "September", "October",  "November", "December"};
constexpr std::array<const char*, 7> kDays = {"Saturday",  "Sunday",   "Monday", "Tuesday",
                                              "Wednesday", "Thursday", "Friday"};

std::string Padded(unsigned number, std::size_t width) {
    std::string text = std::to_string(number);
    return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

// "m" is the minute behind an hour or ahead of a second.
bool IsMinute(std::span<const Token> tokens, std::size_t i) {
    const auto isPart = [&](std::size_t k, char letter) {
        return tokens[k].kind == Token::Kind::DatePart && tokens[k].text.front() == letter;
    };
    for (std::size_t k = i; k-- > 0;) {
        if (tokens[k].kind != Token::Kind::DatePart) continue;
        if (isPart(k, 'h')) return true;
        break;
    }
    for (std::size_t k = i + 1; k < tokens.size(); ++k) {
        if (tokens[k].kind == Token::Kind::DatePart) return isPart(k, 's');
    }
    return false;
}

std::string DatePart(const std::string& letters, bool isMinute, bool isTwelve, const Date& date, double day,
                     unsigned second) {
    const std::size_t length = letters.size();
    const unsigned hour = second / 3600;
    switch (letters.front()) {
        case 'y':
            return length > 2 ? Padded(static_cast<unsigned>(date.year), 4)
                              : Padded(static_cast<unsigned>(date.year) % 100, 2);
        case 'm':
            if (isMinute) return Padded(second / 60 % 60, length);
            if (length <= 2) return Padded(date.month, length);
            return std::string(kMonths[date.month - 1])
                .substr(0, length == 3   ? 3
                           : length == 5 ? 1
                                         : std::string::npos);
        case 'd':
            if (length <= 2) return Padded(date.day, length);
            return std::string(kDays[static_cast<std::size_t>(day) % 7])
                .substr(0, length == 3 ? 3 : std::string::npos);
        case 'h':
            return Padded(!isTwelve        ? hour
                          : hour % 12 == 0 ? 12
                                           : hour % 12,
                          std::min<std::size_t>(length, 2));
        case 's':
            return Padded(second % 60, std::min<std::size_t>(length, 2));
        default:
            return hour < 12 ? "AM" : "PM";
    }
}

std::optional<std::string> FormattedDate(double serial, std::span<const Token> tokens) {
    auto second = static_cast<unsigned>(SecondOf(serial));
    double day = std::floor(serial);
    // A time without seconds is cut, not rounded; a second that is rounded may begin the next day.
    if (second == 86400) ++day, second = 0;
    const auto date = DateFrom(day);
    if (!date) return std::nullopt;
    const bool isTwelve =
        std::any_of(tokens.begin(), tokens.end(), [](const Token& token) { return token.text == "am/pm"; });
    std::string text;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        switch (tokens[i].kind) {
            case Token::Kind::DatePart:
                text += DatePart(tokens[i].text, tokens[i].text.front() == 'm' && IsMinute(tokens, i),
                                 isTwelve, *date, day, second);
                break;
            case Token::Kind::Digit:
            case Token::Kind::Percent:
                return std::nullopt;
            default:
                text += tokens[i].text;
        }
    }
    return text;
}

// -- Digits.

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

DigitLayout LayoutOf(std::span<const Token> tokens) {
    DigitLayout layout;
    layout.point = tokens.size();
    std::size_t commas = 0;
    bool hasDigit = false;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        switch (tokens[i].kind) {
            case Token::Kind::Point:
                if (layout.point == tokens.size()) layout.point = i;
                break;
            case Token::Kind::Digit:
                if (commas > 0 && hasDigit) layout.isGrouped = true;
                commas = 0;
                hasDigit = true;
                if (layout.point < i) ++layout.decimals;
                break;
            case Token::Kind::Comma:
                ++commas;
                break;
            case Token::Kind::Percent:
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
std::string WholePart(std::span<const Token> tokens, std::string digits, bool isGrouped) {
    std::size_t places = static_cast<std::size_t>(std::count_if(
        tokens.begin(), tokens.end(), [](const Token& token) { return token.kind == Token::Kind::Digit; }));
    // A zero stands for itself and all placeholders behind it.
    std::string reversed;
    std::size_t written = 0;
    const auto write = [&](char digit) {
        if (isGrouped && written > 0 && written % 3 == 0 && digit != ' ') reversed += ',';
        reversed += digit;
        ++written;
    };
    const auto firstZero = std::find_if(tokens.begin(), tokens.end(), [](const Token& token) {
        return token.kind == Token::Kind::Digit && token.text == "0";
    });
    for (std::size_t i = tokens.size(); i-- > 0;) {
        const Token& token = tokens[i];
        if (token.kind == Token::Kind::Literal || token.kind == Token::Kind::Percent) {
            reversed.append(token.text.rbegin(), token.text.rend());
        } else if (token.kind == Token::Kind::Digit) {
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

std::string Decimals(std::span<const Token> tokens, const std::string& digits) {
    std::string text;
    std::size_t next = 0;
    for (const Token& token : tokens) {
        if (token.kind == Token::Kind::Literal || token.kind == Token::Kind::Percent ||
            token.kind == Token::Kind::Point) {
            text += token.text;
        } else if (token.kind == Token::Kind::Digit) {
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

// The absolute value of the number.
std::string FormattedDigits(double number, std::span<const Token> tokens, bool& isZero) {
    const DigitLayout layout = LayoutOf(tokens);
    const double scaled = std::fabs(number) * std::pow(100, static_cast<double>(layout.percents)) /
                          std::pow(1000, static_cast<double>(layout.scale));
    const double rounded = Rounded(scaled, static_cast<double>(layout.decimals), Rounding::HalfAwayFromZero);
    isZero = rounded == 0;
    auto [whole, decimals] = DigitsOf(rounded, layout.decimals);
    return WholePart(tokens.first(layout.point), std::move(whole), layout.isGrouped) +
           Decimals(tokens.subspan(layout.point), decimals);
}

}  // namespace

std::optional<Text> FormattedNumber(double number, TextView format) {
    const std::vector<std::string> sections = SectionsOf(Utf8(format));
    if (sections.size() > 4) return std::nullopt;
    const std::size_t chosen = number < 0 && sections.size() > 1    ? 1
                               : number == 0 && sections.size() > 2 ? 2
                                                                    : 0;
    // A section of its own says by itself that a number is negative.
    const bool isSigned = number < 0 && chosen == 0;
    const std::string& section = sections[chosen];
    if (SameName(Wide(section), TEXT("General"))) {
        return Wide(NumberText(chosen == 1 ? -number : number));
    }
    const auto tokens = TokensOf(section);
    if (!tokens) return std::nullopt;
    const bool isDate = std::any_of(tokens->begin(), tokens->end(),
                                    [](const Token& token) { return token.kind == Token::Kind::DatePart; });
    if (isDate) {
        const auto date = FormattedDate(number, *tokens);
        return date ? std::optional(Wide(*date)) : std::nullopt;
    }
    // A fraction: digits on both sides of a stroke.
    for (std::size_t i = 1; i + 1 < tokens->size(); ++i) {
        const auto isDigit = [&](std::size_t k) { return (*tokens)[k].kind == Token::Kind::Digit; };
        if ((*tokens)[i].text == "/" && isDigit(i - 1) && isDigit(i + 1)) return std::nullopt;
    }
    bool isZero = false;
    const std::string digits = FormattedDigits(number, *tokens, isZero);
    return Wide((isSigned && !isZero ? "-" : "") + digits);
}

}  // namespace excelhost
