#include "excelhost/functions/functions.h"

#include "excelhost/calculate.h"

#include <array>
#include <optional>

namespace excelhost {
namespace {

// Calls `use` with each truth: in references and arrays booleans and numbers count, texts and empty cells don't.
// #VALUE! when there is none.
template <class Use>
void EachTruth(const Given& given, Use use) {
    bool any = false;
    const auto take = [&](const Value& cell) {
        if (const auto* error = cell.If<ErrorValue>()) throw ErrorFound{*error};
        if (cell.Is<Text>() || cell.Is<Empty>()) return;
        bool truth = false;
        (void)ToTruth(cell, truth);
        any = true;
        use(truth);
    };
    for (std::size_t i = 0; i < given.Count(); ++i) {
        if (IsReference(given.Raw(i)) || given.Raw(i).Is<Array>()) {
            given.EachValue(i, take);
        } else {
            take(given.Truth(i));
        }
    }
    if (!any) Fail(xlerrValue);
}

Value And(const Given& given) {
    bool all = true;
    EachTruth(given, [&](bool truth) { all = all && truth; });
    return all;
}

Value Or(const Given& given) {
    bool any = false;
    EachTruth(given, [&](bool truth) { any = any || truth; });
    return any;
}

Value ExclusiveOr(const Given& given) {
    bool odd = false;
    EachTruth(given, [&](bool truth) { odd = odd != truth; });
    return odd;
}

Value IfError(const Given& given) {
    Value value = given.Any(0);
    return value.Is<ErrorValue>() ? given.Any(1) : value;
}

Value IfNotAvailable(const Given& given) {
    Value value = given.Any(0);
    return value == Value(ErrorValue{xlerrNA}) ? given.Any(1) : value;
}

Value Ifs(const Given& given) {
    for (std::size_t i = 0; i + 1 < given.Count(); i += 2) {
        if (given.Truth(i)) return given.Any(i + 1);
    }
    return ErrorValue{xlerrNA};
}

// SWITCH(value, case, result, ..., [otherwise])
Value Switch(const Given& given) {
    const Value value = given.Scalar(0);
    std::size_t next = 1;
    for (; next + 1 < given.Count(); next += 2) {
        if (std::is_eq(CompareScalars(value, given.Scalar(next)))) return given.Any(next + 1);
    }
    return next < given.Count() ? given.Any(next) : Value(ErrorValue{xlerrNA});
}

constexpr auto kFunctions = std::to_array<Builtin>({
    {"AND", 1, kArgumentLimit, And, kWholeArrays},
    {"FALSE", 0, 0, [](const Given&) { return Value(false); }},
    {"IFERROR", 2, 2, IfError},
    {"IFNA", 2, 2, IfNotAvailable},
    {"IFS", 2, kArgumentLimit, Ifs},
    {"NOT", 1, 1, [](const Given& given) { return Value(!given.Truth(0)); }},
    {"OR", 1, kArgumentLimit, Or, kWholeArrays},
    {"SWITCH", 3, kArgumentLimit, Switch},
    {"TRUE", 0, 0, [](const Given&) { return Value(true); }},
    {"XOR", 1, kArgumentLimit, ExclusiveOr, kWholeArrays},
});

}  // namespace

std::span<const Builtin> LogicalFunctions() noexcept {
    return kFunctions;
}

}  // namespace excelhost
