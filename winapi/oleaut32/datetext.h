// Dates as English (United States) text.
#pragma once

#include <string>

namespace winapi {

// The days that a VT_DATE may count: 1 January 100 to 31 December 9999. A negative one counts its days
// backwards, but its time of day forwards: -1.25 is 6 o'clock on 29 December 1899.
[[nodiscard]] bool IsDate(double days) noexcept;

// "3/15/2023 6:00:00 PM", to the second; without the time at midnight, without the date on day 0. Refuses
// what lies outside the range with DISP_E_OVERFLOW.
[[nodiscard]] std::string TextFromDate(double days);

// That form, or "2023-03-15 18:00:00"; the seconds, the date or the time may be left out. Refuses other text
// with DISP_E_TYPEMISMATCH. No blanks around it.
[[nodiscard]] double DateFromText(const std::string& text);

}  // namespace winapi
