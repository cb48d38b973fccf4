#include "excelhost/functions/calendar.h"
#include "excelhost/functions/formatsection.h"

#include <array>
#include <cmath>
#include <cstdint>

namespace excelhost {
namespace {

using Kind = FormatToken::Kind;

constexpr std::array<const char*, 7> kDays = {"Saturday",  "Sunday",   "Monday", "Tuesday",
                                              "Wednesday", "Thursday", "Friday"};
constexpr std::uint64_t kSecondsOfDay = 86400;
constexpr std::size_t kMostDecimals = 3;  // of a second

std::string Padded(std::uint64_t number, std::size_t width) {
    std::string text = std::to_string(number);
    return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

bool IsTime(const FormatToken& token, char letter) {
    return (token.kind == Kind::DatePart || token.kind == Kind::Elapsed) && token.text.front() == letter;
}

// "m" is the minute behind an hour or ahead of a second.
bool IsMinute(FormatTokens tokens, std::size_t i) {
    const auto isPart = [](const FormatToken& token) {
        return token.kind == Kind::DatePart || token.kind == Kind::Elapsed;
    };
    for (std::size_t k = i; k-- > 0;) {
        if (!isPart(tokens[k])) continue;
        if (IsTime(tokens[k], 'h')) return true;
        break;
    }
    for (std::size_t k = i + 1; k < tokens.size(); ++k) {
        if (isPart(tokens[k])) return IsTime(tokens[k], 's');
    }
    return false;
}

// A moment in units of the last decimal of a second that is shown; what is smaller is rounded, larger parts are cut.
struct Moment {
    Date date;
    double day;            // the serial number
    std::uint64_t second;  // since the day of serial number 0
    std::uint64_t fraction;
};

std::optional<Moment> MomentFrom(double serial, std::size_t decimals) {
    if (!DateFrom(serial)) return std::nullopt;
    const double units = std::pow(10.0, static_cast<double>(decimals));
    const double day = std::floor(serial);
    const auto inDay = static_cast<std::uint64_t>(
        std::floor((serial - day) * static_cast<double>(kSecondsOfDay) * units + 0.5));
    Moment moment{};
    moment.second =
        static_cast<std::uint64_t>(day) * kSecondsOfDay + inDay / static_cast<std::uint64_t>(units);
    moment.fraction = inDay % static_cast<std::uint64_t>(units);
    const std::uint64_t wholeDays = moment.second / kSecondsOfDay;
    moment.day = static_cast<double>(wholeDays);
    const auto date = DateFrom(moment.day);
    if (!date) return std::nullopt;
    moment.date = *date;
    return moment;
}

std::string DatePart(const std::string& letters, bool isMinute, bool isTwelve, const Moment& moment) {
    const std::size_t length = letters.size();
    const auto number = [&](std::uint64_t value) { return Padded(value, std::min<std::size_t>(length, 2)); };
    const std::uint64_t hour = moment.second / 3600 % 24;
    switch (letters.front()) {
        case 'y': {
            const auto year = static_cast<std::uint64_t>(moment.date.year);
            return length > 2 ? Padded(year, 4) : Padded(year % 100, 2);
        }
        case 'm':
            if (isMinute) return number(moment.second / 60 % 60);
            if (length <= 2) return number(moment.date.month);
            return std::string(kMonthNames[moment.date.month - 1])
                .substr(0, length == 3   ? 3
                           : length == 5 ? 1
                                         : std::string::npos);
        case 'd':
            if (length <= 2) return number(moment.date.day);
            return std::string(kDays[static_cast<std::size_t>(moment.day) % 7])
                .substr(0, length == 3 ? 3 : std::string::npos);
        case 'h':
            return number(isTwelve ? (hour + 11) % 12 + 1 : hour);
        case 's':
            return number(moment.second % 60);
        default:
            return std::string(hour < 12 ? "A" : "P") + (letters == "am/pm" ? "M" : "");
    }
}

std::string ElapsedTime(const std::string& letters, const Moment& moment) {
    const std::uint64_t unit = letters.front() == 'h' ? 3600 : letters.front() == 'm' ? 60 : 1;
    return Padded(moment.second / unit, letters.size());
}

// How many zeros stand behind the point at `point`, which a second is ahead of; none elsewhere.
std::size_t SecondDecimals(FormatTokens tokens, std::size_t point) {
    if (point == 0 || tokens[point].kind != Kind::Point || !IsTime(tokens[point - 1], 's')) return 0;
    std::size_t end = point + 1;
    while (end < tokens.size() && tokens[end].kind == Kind::Digit && tokens[end].text == "0") ++end;
    return end - point - 1;
}

}  // namespace

std::optional<std::string> FormattedDate(double serial, FormatTokens tokens) {
    std::size_t decimals = 0;
    for (std::size_t i = 0; i < tokens.size(); ++i) decimals = std::max(decimals, SecondDecimals(tokens, i));
    if (decimals > kMostDecimals) return std::nullopt;
    const auto moment = MomentFrom(serial, decimals);
    if (!moment) return std::nullopt;
    const bool isTwelve = std::any_of(tokens.begin(), tokens.end(),
                                      [](const FormatToken& token) { return IsTime(token, 'a'); });
    std::string text;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const FormatToken& token = tokens[i];
        switch (token.kind) {
            case Kind::DatePart:
                text += DatePart(token.text, IsTime(token, 'm') && IsMinute(tokens, i), isTwelve, *moment);
                break;
            case Kind::Elapsed:
                text += ElapsedTime(token.text, *moment);
                break;
            case Kind::Point: {
                const std::size_t shown = SecondDecimals(tokens, i);
                text += '.' + Padded(moment->fraction, decimals).substr(0, shown);
                i += shown;
                break;
            }
            case Kind::Literal:
            case Kind::Comma:
            case Kind::Stroke:
                text += token.text;
                break;
            default:
                return std::nullopt;
        }
    }
    return text;
}

}  // namespace excelhost
