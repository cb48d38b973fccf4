// Dates as serial numbers: 1 is 1 January 1900, and 60 the 29 February 1900 that Excel keeps for the sake of
// Lotus 1-2-3 ("Excel incorrectly assumes that the year 1900 is a leap year"). The fraction is the time of day.
#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace excelhost {

inline constexpr double kLastSerial = 2958465;  // 31 December 9999

inline constexpr std::array<std::string_view, 12> kMonthNames = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};

struct Date {
    int year;
    unsigned month;
    unsigned day;
};

// Nothing for a serial below 0 or beyond the year 9999. 0 is 0 January 1900.
[[nodiscard]] std::optional<Date> DateFrom(double serial);

// Whole numbers; months and days may lie outside of a year and a month. Nothing for a date that has no serial.
[[nodiscard]] std::optional<double> SerialFrom(double year, double month, double day);

// The second of the day of a serial, rounded; 86,400 when that is the next day's first.
[[nodiscard]] int SecondOf(double serial);

}  // namespace excelhost
