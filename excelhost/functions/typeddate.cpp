#include "excelhost/functions/typeddate.h"

#include "excelhost/characters.h"
#include "excelhost/functions/calendar.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace excelhost {
namespace {

// Whether the word, in lower case, is the name.
bool IsName(std::string_view word, std::string_view name) {
    return std::equal(word.begin(), word.end(), name.begin(), name.end(),
                      [](char a, char b) { return a == LowerAscii(b); });
}

struct WholeNumber {
    double value = 0;
    std::size_t digits = 0;
};

class MomentReader {
  public:
    explicit MomentReader(std::string_view text) : rest_(text) {}

    std::optional<TypedMoment> Read() {
        SkipSpace();
        TypedMoment moment;
        const std::string_view begin = rest_;
        moment.date = Date();
        if (!moment.date) rest_ = begin;
        SkipSpace();
        if (!rest_.empty()) {
            moment.time = Time();
            if (!moment.time) return std::nullopt;
        }
        SkipSpace();
        if (!rest_.empty() || (!moment.date && !moment.time)) return std::nullopt;
        return moment;
    }

  private:
    void SkipSpace() {
        while (rest_.starts_with(' ')) rest_.remove_prefix(1);
    }
    bool Take(char wanted) {
        if (!rest_.starts_with(wanted)) return false;
        rest_.remove_prefix(1);
        return true;
    }
    // At most four digits: more are no part of a date or time.
    std::optional<WholeNumber> Number() {
        WholeNumber number;
        for (; !rest_.empty() && IsDigit(rest_.front()) && number.digits < 4; rest_.remove_prefix(1)) {
            number.value = number.value * 10 + (rest_.front() - '0');
            ++number.digits;
        }
        if (number.digits == 0 || (!rest_.empty() && IsDigit(rest_.front()))) return std::nullopt;
        return number;
    }
    // In lower case.
    std::string Word() {
        std::string word;
        for (; !rest_.empty() && IsLetter(rest_.front()); rest_.remove_prefix(1))
            word += LowerAscii(rest_.front());
        return word;
    }
    // From 1 on; by the whole name or three letters of it.
    std::optional<double> Month() {
        const std::string word = Word();
        for (std::size_t i = 0; i < kMonthNames.size(); ++i) {
            const std::string_view name = kMonthNames[i];
            if (IsName(word, name) || IsName(word, name.substr(0, 3))) return static_cast<double>(i + 1);
        }
        return std::nullopt;
    }
    // "-", "/", "," or spaces between parts, or nothing of those.
    bool Separator() {
        SkipSpace();
        if (!Take('-') && !Take('/')) Take(',');
        SkipSpace();
        return !rest_.empty();
    }

    std::optional<double> Date() {
        if (!rest_.empty() && IsLetter(rest_.front())) return DateFromMonth();
        const auto first = Number();
        if (!first) return std::nullopt;
        if (rest_.empty() || IsDigit(rest_.front()) || rest_.front() == ':') return std::nullopt;
        const char separator = rest_.front();
        if (!Separator()) return std::nullopt;
        if (IsLetter(rest_.front())) {
            const auto month = Month();
            if (!month || !Separator()) return std::nullopt;
            const auto year = Number();
            return year ? Serial(*year, *month, first->value) : std::nullopt;
        }
        const auto second = Number();
        if (!second || !Take(separator) || separator == ' ' || separator == ',') return std::nullopt;
        const auto third = Number();
        if (!third) return std::nullopt;
        return first->digits > 2 ? Serial(*first, second->value, third->value)
                                 : Serial(*third, first->value, second->value);
    }

    std::optional<double> DateFromMonth() {
        const auto month = Month();
        if (!month || !Separator()) return std::nullopt;
        const auto first = Number();
        if (!first) return std::nullopt;
        if (first->digits == 4) return Serial(*first, *month, 1);
        if (!Separator()) return std::nullopt;
        const auto year = Number();
        return year ? Serial(*year, *month, first->value) : std::nullopt;
    }

    static std::optional<double> Serial(const WholeNumber& year, double month, double day) {
        if (year.digits == 3 || (year.digits > 2 && year.value < 1900)) return std::nullopt;
        const double whole = year.digits > 2 ? year.value : year.value + (year.value < 30 ? 2000 : 1900);
        const auto serial = SerialFrom(whole, month, day);
        const auto date = serial ? DateFrom(*serial) : std::nullopt;
        return date && date->month == month && date->day == day ? serial : std::nullopt;
    }

    std::optional<double> Time() {
        const auto hour = Number();
        if (!hour) return std::nullopt;
        double seconds = 0;
        const bool hasMinutes = Take(':');
        if (hasMinutes) {
            const auto minute = Number();
            if (!minute || minute->value >= 60) return std::nullopt;
            seconds = minute->value * 60;
            if (Take(':')) {
                const auto second = Number();
                if (!second || second->value >= 60) return std::nullopt;
                seconds += second->value + Fraction();
            }
        }
        SkipSpace();
        const std::string half = Word();
        double hours = hour->value;
        if (half.empty()) {
            if (!hasMinutes) return std::nullopt;
        } else if ((half != "am" && half != "pm" && half != "a" && half != "p") || hours > 12) {
            return std::nullopt;
        } else {
            hours = std::fmod(hours, 12) + (half.front() == 'p' ? 12 : 0);
        }
        constexpr double day = 86400;
        return std::fmod(hours * 3600 + seconds, day) / day;
    }
    // Of a second.
    double Fraction() {
        double fraction = 0;
        if (!Take('.')) return fraction;
        for (double unit = 0.1; !rest_.empty() && IsDigit(rest_.front());
             unit /= 10, rest_.remove_prefix(1)) {
            fraction += unit * (rest_.front() - '0');
        }
        return fraction;
    }

    std::string_view rest_;
};

}  // namespace

std::optional<TypedMoment> ReadTypedMoment(std::string_view text) {
    return MomentReader(text).Read();
}

}  // namespace excelhost
