#include "excelhost/functions/calendar.h"

#include <chrono>
#include <cmath>

namespace excelhost {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr sys_days kDayZero = sys_days(year(1899) / 12 / 30);  // of serials beyond 60

}  // namespace

std::optional<Date> DateFrom(double serial) {
    serial = std::floor(serial);
    if (!(serial >= 0 && serial <= kLastSerial)) return std::nullopt;
    if (serial == 0) return Date{1900, 1, 0};
    if (serial == 60) return Date{1900, 2, 29};
    const year_month_day date(kDayZero + days(static_cast<int>(serial) + (serial < 60 ? 1 : 0)));
    return Date{static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day())};
}

std::optional<double> SerialFrom(double givenYear, double month, double day) {
    constexpr double most = 1e7;
    if (std::fabs(givenYear) > most || std::fabs(month) > most || std::fabs(day) > most) return std::nullopt;
    const double months = givenYear * 12 + month - 1;
    const double inYear = std::floor(months / 12);
    if (inYear < 1899 || inYear > 9999) return std::nullopt;
    const auto first = year(static_cast<int>(inYear)) /
                       std::chrono::month(static_cast<unsigned>(months - inYear * 12) + 1) / 1;
    auto serial = static_cast<double>((sys_days(first) - kDayZero).count());
    if (serial <= 60) --serial;
    serial += day - 1;
    return serial >= 0 && serial <= kLastSerial ? std::optional(serial) : std::nullopt;
}

int SecondOf(double serial) {
    constexpr double day = 86400;
    return static_cast<int>(std::floor((serial - std::floor(serial)) * day + 0.5));
}

}  // namespace excelhost
