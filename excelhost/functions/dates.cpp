#include "excelhost/functions/calendar.h"
#include "excelhost/functions/functions.h"
#include "excelhost/functions/typeddate.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <ctime>
#include <mutex>
#include <vector>

namespace excelhost {
namespace {

Date DateAt(const Given& given, std::size_t i) {
    const auto date = DateFrom(given.Number(i));
    if (!date) Fail(xlerrNum);
    return *date;
}

Value SerialOrError(std::optional<double> serial) {
    return serial ? Value(*serial) : Value(ErrorValue{xlerrNum});
}

// Years below 1900 count from 1900.
Value DateOf(const Given& given) {
    const double year = std::trunc(given.Number(0));
    if (year < 0) return ErrorValue{xlerrNum};
    return SerialOrError(SerialFrom(year < 1900 ? year + 1900 : year, std::trunc(given.Number(1)),
                                    std::trunc(given.Number(2))));
}

template <auto Member>
Value PartOf(const Given& given) {
    return static_cast<double>(DateAt(given, 0).*Member);
}

// The same day so many months later, or the last one of a shorter month; or the last of that month in any case.
template <bool LastDay>
Value MonthsLater(const Given& given) {
    const Date date = DateAt(given, 0);
    const double month = date.month + std::trunc(given.Number(1));
    const auto first = SerialFrom(date.year, month, 1);
    const auto next = SerialFrom(date.year, month + 1, 1);
    if (!first || !next) return ErrorValue{xlerrNum};
    const double last = *next - 1;
    return LastDay ? last : std::min(last, *first + date.day - 1);
}

Value Days(const Given& given) {
    const double end = std::floor(given.Number(0));
    const double start = std::floor(given.Number(1));
    return DateFrom(end) && DateFrom(start) ? Value(end - start) : Value(ErrorValue{xlerrNum});
}

// TIME(hour, minute, second): a part of a day.
Value TimeOf(const Given& given) {
    double seconds = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const double part = std::trunc(given.Number(i));
        if (part > 32767) return ErrorValue{xlerrNum};
        seconds = seconds * 60 + part;
    }
    constexpr double day = 86400;
    return seconds < 0 ? Value(ErrorValue{xlerrNum}) : Value(std::fmod(seconds, day) / day);
}

template <int Divisor, int Modulus>
Value TimePart(const Given& given) {
    const double serial = given.Number(0);
    if (!DateFrom(serial)) return ErrorValue{xlerrNum};
    return static_cast<double>(SecondOf(serial) / Divisor % Modulus);
}

// The local time.
Value Now(const Given&) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    static std::mutex mutex;  // std::localtime has one place for all threads
    const std::tm local = [&] {
        const std::lock_guard lock(mutex);
        return *std::localtime(&seconds);
    }();
    const double day = (local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec;
    return SerialFrom(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday).value_or(0) + day / 86400;
}

Value Today(const Given& given) {
    return std::floor(*Now(given).If<double>());
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

// -- Workdays: from Monday to Friday, without holidays.

bool IsWeekday(double serial) {
    return std::fmod(serial + 5, 7) < 5;
}

double DayAt(const Given& given, std::size_t i) {
    const double serial = std::floor(given.Number(i));
    if (!DateFrom(serial)) Fail(xlerrNum);
    return serial;
}

// Those that aren't on a weekend, in order, each once.
std::vector<double> HolidaysOf(const Given& given, std::size_t i) {
    std::vector<double> holidays;
    if (!given.Has(i) || given.Raw(i).Is<Missing>()) return holidays;
    given.EachNumber(i, [&](double number) {
        const double serial = std::floor(number);
        if (IsWeekday(serial)) holidays.push_back(serial);
    });
    std::sort(holidays.begin(), holidays.end());
    holidays.erase(std::unique(holidays.begin(), holidays.end()), holidays.end());
    return holidays;
}

// NETWORKDAYS(start, end, [holidays]): both days included; negative for an end before the start.
Value CountWorkdays(const Given& given) {
    const double start = DayAt(given, 0);
    const double end = DayAt(given, 1);
    const double first = std::min(start, end);
    const double last = std::max(start, end);
    const int days = static_cast<int>(last - first) + 1;
    const int inWeeks = days / 7 * 5;
    double count = inWeeks;
    for (int rest = 0; rest < days % 7; ++rest) count += IsWeekday(last - rest) ? 1 : 0;
    for (const double holiday : HolidaysOf(given, 2)) count -= holiday >= first && holiday <= last ? 1 : 0;
    return end < start ? -count : count;
}

// WORKDAY(start, days, [holidays]): so many workdays later, or earlier.
Value WorkdayAfter(const Given& given) {
    double day = DayAt(given, 0);
    const double days = std::trunc(given.Number(1));
    if (std::fabs(days) > kLastSerial) return ErrorValue{xlerrNum};
    const std::vector<double> holidays = HolidaysOf(given, 2);
    const double step = days < 0 ? -1 : 1;
    double left = std::fabs(days);
    while (left > 0) {
        day += step;
        if (day < 0 || day > kLastSerial) return ErrorValue{xlerrNum};
        left -= IsWeekday(day) && !std::binary_search(holidays.begin(), holidays.end(), day) ? 1 : 0;
    }
    return day;
}

// DATEDIF(start, end, unit): whole "Y"ears, "M"onths or "D"ays; "YM" are the months beyond years, "YD" and "MD" the
// days beyond years and months.
Value Difference(const Given& given) {
    const double start = DayAt(given, 0);
    const double end = DayAt(given, 1);
    const Text unit = UpperCase(given.String(2));
    if (start > end) return ErrorValue{xlerrNum};
    const Date from = DateAt(given, 0);
    const Date to = DateAt(given, 1);
    const double months = (to.year - from.year) * 12.0 + to.month - from.month - (to.day < from.day ? 1 : 0);
    const double years = std::floor(months / 12);
    if (unit == TEXT("Y")) return years;
    if (unit == TEXT("M")) return months;
    if (unit == TEXT("D")) return end - start;
    if (unit == TEXT("YM")) return months - years * 12;
    // The start's day that many years or months later; a month too short for it goes on in the next.
    const auto since = [&](double later) { return SerialFrom(from.year, from.month + later, from.day); };
    if (unit == TEXT("YD")) return end - since(years * 12).value_or(end);
    if (unit == TEXT("MD")) return end - since(months).value_or(end);
    return ErrorValue{xlerrNum};
}

// Of DATEVALUE and TIMEVALUE: each leaves out the other part, and is 0 without its own.
TypedMoment MomentAt(const Given& given) {
    const auto moment = ReadTypedMoment(Utf8(given.String(0)));
    if (!moment) Fail(xlerrValue);
    return *moment;
}

constexpr auto kFunctions = std::to_array<Builtin>({
    {"DATE", 3, 3, DateOf},
    {"DATEDIF", 3, 3, Difference},
    {"DATEVALUE", 1, 1, [](const Given& given) { return Value(MomentAt(given).date.value_or(0)); }},
    {"DAY", 1, 1, PartOf<&Date::day>},
    {"DAYS", 2, 2, Days},
    {"EDATE", 2, 2, MonthsLater<false>},
    {"EOMONTH", 2, 2, MonthsLater<true>},
    {"HOUR", 1, 1, TimePart<3600, 24>},
    {"MINUTE", 1, 1, TimePart<60, 60>},
    {"MONTH", 1, 1, PartOf<&Date::month>},
    {"NETWORKDAYS", 2, 3, CountWorkdays, {0b11, true}},
    {"NOW", 0, 0, Now},
    {"SECOND", 1, 1, TimePart<1, 60>},
    {"TIME", 3, 3, TimeOf},
    {"TIMEVALUE", 1, 1, [](const Given& given) { return Value(MomentAt(given).time.value_or(0)); }},
    {"TODAY", 0, 0, Today},
    {"WEEKDAY", 1, 2, Weekday},
    {"WORKDAY", 2, 3, WorkdayAfter, {0b11, true}},
    {"YEAR", 1, 1, PartOf<&Date::year>},
});

}  // namespace

std::span<const Builtin> DateFunctions() noexcept {
    return kFunctions;
}

}  // namespace excelhost
