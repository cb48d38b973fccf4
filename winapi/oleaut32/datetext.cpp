#include "datetext.h"

#include "numbertext.h"
#include "winapi/errorcodes.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <initializer_list>
#include <string_view>

#include <time.h>

namespace winapi {

namespace {

using namespace std::chrono;

constexpr sys_days dayZero{year(1899) / December / 30};
constexpr double firstDay = -657434;  // 1 January 100
constexpr double lastDay = 2958466;   // the day after 31 December 9999
constexpr int secondsPerDay = 86400;

// Reads the text's beginning by the first of the forms (strptime's) that it has, and gives what stands behind
// it; null if it has none.
const char* Read(const char* text, std::initializer_list<const char*> forms, std::tm& parts) noexcept {
    for (const char* const form : forms) {
        parts = {};
        if (const char* const rest = strptime(text, form, &parts)) return rest;
    }
    return nullptr;
}

template <class... Parts>
std::string Printed(const char* form, Parts... parts) {
    char text[32];
    return {text, static_cast<std::size_t>(std::snprintf(text, sizeof text, form, parts...))};
}

}  // namespace

bool IsDate(double days) noexcept {
    return days > firstDay - 1 && days < lastDay;
}

std::string TextFromDate(double days) {
    if (!IsDate(days)) Refuse(DISP_E_OVERFLOW);
    double wholeDays = std::trunc(days);
    auto seconds = static_cast<int>(std::lround(std::fabs(days - wholeDays) * secondsPerDay));
    if (seconds == secondsPerDay) {
        wholeDays += 1;
        seconds = 0;
    }
    if (wholeDays >= lastDay) Refuse(DISP_E_OVERFLOW);

    const year_month_day date{dayZero + std::chrono::days(static_cast<int>(wholeDays))};
    const int hour = seconds / 3600;
    std::string text;
    if (wholeDays != 0) {
        text = Printed("%u/%u/%d", static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       static_cast<int>(date.year()));
    }
    if (seconds != 0 || wholeDays == 0) {
        if (!text.empty()) text += ' ';
        text += Printed("%d:%02d:%02d %s", hour % 12 == 0 ? 12 : hour % 12, seconds / 60 % 60, seconds % 60,
                        hour < 12 ? "AM" : "PM");
    }
    return text;
}

double DateFromText(const std::string& text) {
    std::tm date{}, time{};
    const char* rest = text.c_str();
    const char* const behindDate = Read(rest, {"%Y-%m-%d", "%m/%d/%Y"}, date);
    if (behindDate != nullptr) rest = behindDate;
    const char* const behindTime = Read(rest, {"%H:%M:%S ", "%H:%M "}, time);
    if (behindTime != nullptr && (behindDate == nullptr || *rest == ' ')) {
        const std::string_view half(behindTime);
        const bool hasHalf = half == "AM" || half == "PM";
        if (hasHalf && (time.tm_hour < 1 || time.tm_hour > 12)) Refuse(DISP_E_TYPEMISMATCH);
        if (hasHalf) time.tm_hour = time.tm_hour % 12 + (half == "PM" ? 12 : 0);
        rest = hasHalf ? half.end() : half.begin();
    }
    const year_month_day day = behindDate == nullptr
                                   ? year_month_day(dayZero)
                                   : year(date.tm_year + 1900) / (date.tm_mon + 1) / date.tm_mday;
    if (*rest != '\0' || text.empty() || time.tm_sec > 59 || !day.ok() || day.year() < year(100)) {
        Refuse(DISP_E_TYPEMISMATCH);
    }
    const auto days = static_cast<double>((sys_days(day) - dayZero).count());
    const double ofDay = ((time.tm_hour * 60 + time.tm_min) * 60 + time.tm_sec) / double{secondsPerDay};
    return days < 0 ? days - ofDay : days + ofDay;
}

}  // namespace winapi
