#include "excelhost/functions/functions.h"

#include <array>
#include <cmath>

namespace excelhost {
namespace {

// Whether the value is of one of the types.
template <class... Types>
Value Is(const Given& given) {
    const Value value = given.Any(0);
    return (value.Is<Types>() || ...);
}

// Whether it is #N/A, or another error.
template <bool NotAvailable>
Value IsErrorOf(const Given& given) {
    const Value value = given.Any(0);
    const auto* error = value.If<ErrorValue>();
    return error != nullptr && (error->number == xlerrNA) == NotAvailable;
}

template <bool Odd>
Value HasParity(const Given& given) {
    return (std::fmod(std::trunc(given.Number(0)), 2) != 0) == Odd;
}

// Numbers as they are, TRUE as 1, errors as they are, all else as 0.
Value AsNumber(const Given& given) {
    const Value value = given.Scalar(0);
    return value.Is<Text>() ? 0.0 : given.Number(0);
}

Value AsText(const Given& given) {
    Value value = given.Scalar(0);
    return value.Is<Text>() ? value : Value(Text());
}

constexpr auto kFunctions = std::to_array<Builtin>({
    {"ISBLANK", 1, 1, Is<Empty>},
    {"ISERR", 1, 1, IsErrorOf<false>},
    {"ISERROR", 1, 1, Is<ErrorValue>},
    {"ISEVEN", 1, 1, HasParity<false>},
    {"ISLOGICAL", 1, 1, Is<bool>},
    {"ISNA", 1, 1, IsErrorOf<true>},
    {"ISNUMBER", 1, 1, Is<double, int>},
    {"ISODD", 1, 1, HasParity<true>},
    {"ISTEXT", 1, 1, Is<Text>},
    {"N", 1, 1, AsNumber},
    {"NA", 0, 0, [](const Given&) { return Value(ErrorValue{xlerrNA}); }},
    {"T", 1, 1, AsText},
});

}  // namespace

std::span<const Builtin> InformationFunctions() noexcept {
    return kFunctions;
}

}  // namespace excelhost
