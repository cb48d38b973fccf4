#include "datetext.h"

#include <charconv>
#include <chrono>
#include <cmath>

namespace winapi {

namespace {

using namespace std::chrono;

constexpr sys_days dayZero{year(1899) / December / 30};
constexpr double firstDay = -657434;  // 1 January 100
constexpr double lastDay = 2958466;   // the day after 31 December 9999
constexpr int secondsPerDay = 86400;

// Takes a date or time apart from the left; each step says whether the text went on so.
class Reader {
  public:
    explicit Reader(std::string_view rest) noexcept : text(rest) {}

    bool Number(int& value) noexcept {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || value < 0) return false;
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        return true;
    }
    bool Skip(char unit) noexcept {
        if (!text.starts_with(unit)) return false;
        text.remove_prefix(1);
        return true;
    }
    void Blanks() noexcept {
        while (Skip(' ')) {
        }
    }
    [[nodiscard]] bool AtEnd() const noexcept { return text.empty(); }

    bool Date(sys_days& days) noexcept {
        int first = 0;
        int second = 0;
        int third = 0;
        if (!Number(first)) return false;
        const char separator = text.starts_with('-') ? '-' : '/';
        if (!Skip(separator) || !Number(second) || !Skip(separator) || !Number(third)) return false;
        const bool yearFirst = separator == '-';
        const year_month_day date = yearFirst ? year(first) / month(static_cast<unsigned>(second)) / third
                                              : year(third) / month(static_cast<unsigned>(first)) / second;
        if (!date.ok() || date.year() < year(100) || date.year() > year(9999)) return false;
        days = date;
        return true;
    }

    bool Time(int& seconds) noexcept {
        int hour = 0;
        int minute = 0;
        int second = 0;
        if (!Number(hour) || !Skip(':') || !Number(minute)) return false;
        if (Skip(':') && !Number(second)) return false;
        Blanks();
        if (Skip('A') || Skip('P')) {
            const bool afternoon = text.data()[-1] == 'P';
            if (!Skip('M') || hour < 1 || hour > 12) return false;
            hour = hour % 12 + (afternoon ? 12 : 0);
        }
        seconds = (hour * 60 + minute) * 60 + second;
        return hour < 24 && minute < 60 && second < 60;
    }

  private:
    std::string_view text;
};

}  // namespace

bool IsDate(double days) noexcept {
    return days > firstDay - 1 && days < lastDay;
}

std::optional<std::string> TextFromDate(double days) {
    if (!IsDate(days)) return std::nullopt;
    double wholeDays = std::trunc(days);
    auto seconds = static_cast<int>(std::lround(std::fabs(days - wholeDays) * secondsPerDay));
    if (seconds == secondsPerDay) {
        wholeDays += 1;
        seconds = 0;
    }
    if (wholeDays >= lastDay) return std::nullopt;

    std::string text;
    if (wholeDays != 0) {
        const year_month_day date{dayZero + std::chrono::days(static_cast<int>(wholeDays))};
        text = std::to_string(static_cast<unsigned>(date.month())) + '/' +
               std::to_string(static_cast<unsigned>(date.day())) + '/' +
               std::to_string(static_cast<int>(date.year()));
    }
    if (seconds != 0 || wholeDays == 0) {
        const auto twoDigits = [](int value) {
            return std::string(value < 10 ? "0" : "") + std::to_string(value);
        };
        const int hour = seconds / 3600;
        if (!text.empty()) text += ' ';
        text += std::to_string(hour % 12 == 0 ? 12 : hour % 12) + ':' + twoDigits(seconds / 60 % 60) + ':' +
                twoDigits(seconds % 60) + (hour < 12 ? " AM" : " PM");
    }
    return text;
}

std::optional<double> DateFromText(std::string_view text) noexcept {
    sys_days date = dayZero;
    int seconds = 0;
    Reader reader(text);
    reader.Blanks();
    Reader timeOnly = reader;
    if (reader.Date(date)) {
        reader.Blanks();
        if (!reader.AtEnd() && !reader.Time(seconds)) return std::nullopt;
    } else {
        reader = timeOnly;
        if (!reader.Time(seconds)) return std::nullopt;
    }
    reader.Blanks();
    if (!reader.AtEnd()) return std::nullopt;

    const auto days = static_cast<double>((date - dayZero).count());
    const double time = static_cast<double>(seconds) / secondsPerDay;
    return days < 0 ? days - time : days + time;
}

}  // namespace winapi
