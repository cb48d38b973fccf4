// Dates and times as people type them, in the order and with the names of US English.
#pragma once

#include <optional>
#include <string_view>

namespace excelhost {

struct TypedMoment {
    std::optional<double> date;  // a serial number
    std::optional<double> time;  // a part of a day; hours beyond the day begin again
};

// A date, a time or one behind the other:
//   3/15/2024  3/15/24  2024-3-15  2024/3/15  15-Mar-2024  15 March 2024  March 15, 2024  Mar 2024
//   14:30  14:30:05.5  2:30 PM  2 PM
// Years of two digits are those from 1930 to 2029. Nothing for other text, and for days that no month has.
[[nodiscard]] std::optional<TypedMoment> ReadTypedMoment(std::string_view text);

}  // namespace excelhost
