// Dates as serial numbers: 1 is 1 January 1900, and 60 the 29 February 1900 that Excel keeps for the sake of
// Lotus 1-2-3 ("Excel incorrectly assumes that the year 1900 is a leap year").
#include "excelhost/functions/functions.h"

#include <array>
#include <chrono>
#include <cmath>

namespace excelhost {
namespace {

using std::chrono::days;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr sys_days kDayZero = sys_days(year(1899) / 12 / 30);  // of serials beyond 60
constexpr double kLastSerial = 2958465;                        // 31 December 9999

struct Date {
    int year;
    unsigned month;
    unsigned day;
};

Date DateFrom(double serial) {
    serial = std::floor(serial);
    if (serial < 0 || serial > kLastSerial) Fail(xlerrNum);
    if (serial == 0) return {1900, 1, 0};
    if (serial == 60) return {1900, 2, 29};
    const year_month_day date(kDayZero + days(static_cast<int>(serial) + (serial < 60 ? 1 : 0)));
    return {static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
            static_cast<unsigned>(date.day())};
}

// Months and days may lie outside of a year and a month; years below 1900 count from 1900.
Value DateOf(const Given& given) {
    const double givenYear = std::trunc(given.Number(0));
    const double givenMonth = std::trunc(given.Number(1));
    const double givenDay = std::trunc(given.Number(2));
    constexpr double most = 1e7;
    if (givenYear < 0 || std::fabs(givenYear) > most || std::fabs(givenMonth) > most ||
        std::fabs(givenDay) > most)
        return ErrorValue{xlerrNum};
    const double months = (givenYear < 1900 ? givenYear + 1900 : givenYear) * 12 + givenMonth - 1;
    const double inYear = std::floor(months / 12);
    if (inYear < 1899 || inYear > 9999) return ErrorValue{xlerrNum};
    const auto first =
        year(static_cast<int>(inYear)) / month(static_cast<unsigned>(months - inYear * 12) + 1) / 1;
    auto serial = static_cast<double>((sys_days(first) - kDayZero).count());
    if (serial <= 60) --serial;
    serial += givenDay - 1;
    return serial >= 0 && serial <= kLastSerial ? Value(serial) : Value(ErrorValue{xlerrNum});
}

template <auto Member>
Value PartOf(const Given& given) {
    return static_cast<double>(DateFrom(given.Number(0)).*Member);
}

// From Sunday, 1, on; the second argument is 1, 2 (from Monday, 1) or 3 (from Monday, 0).
Value Weekday(const Given& given) {
    const double serial = std::floor(given.Number(0));
    if (serial < 0 || serial > kLastSerial) return ErrorValue{xlerrNum};
    const double fromSunday = std::fmod(serial + 6, 7);
    const double fromMonday = std::fmod(serial + 5, 7);
    const std::size_t kind = given.Whole(1, 0, 1);
    if (kind < 1 || kind > 3) return ErrorValue{xlerrNum};
    return kind == 1 ? fromSunday + 1 : kind == 2 ? fromMonday + 1 : fromMonday;
}

constexpr auto kFunctions = std::to_array<Builtin>({
    {"DATE", 3, 3, DateOf},
    {"DAY", 1, 1, PartOf<&Date::day>},
    {"MONTH", 1, 1, PartOf<&Date::month>},
    {"WEEKDAY", 1, 2, Weekday},
    {"YEAR", 1, 1, PartOf<&Date::year>},
});

}  // namespace

std::span<const Builtin> DateFunctions() noexcept {
    return kFunctions;
}

}  // namespace excelhost
