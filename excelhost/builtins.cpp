#include "excelhost/builtins.h"

#include "excelhost/formula.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace excelhost {
namespace {

using Arguments = std::span<const Value>;

// Calls `use` with each number among the arguments, by the rule that the aggregates share: cells and elements
// of arrays count when they hold numbers, an argument given as itself counts when it can be read as one. The
// first error ends it.
template <class Use>
std::optional<ErrorValue> EachNumber(Arguments arguments, const Grid& grid, Use use) {
    const auto take = [&](const Value& cell) -> std::optional<ErrorValue> {
        if (const auto* error = cell.If<ErrorValue>()) return *error;
        if (const auto* number = cell.If<double>()) use(*number);
        if (const auto* whole = cell.If<int>()) use(*whole);
        return std::nullopt;
    };
    for (const Value& argument : arguments) {
        if (const Area* area = argument.If<Area>()) {
            const auto inside = grid.Inside(*area);
            if (!inside) continue;
            const XLREF12& r = inside->rectangle;
            for (RW row = r.rwFirst; row <= r.rwLast; ++row) {
                for (COL column = r.colFirst; column <= r.colLast; ++column) {
                    if (const auto error = take(grid.At({row, column}))) return error;
                }
            }
        } else if (const Array* array = argument.If<Array>()) {
            for (const Value& cell : array->cells) {
                if (const auto error = take(cell)) return error;
            }
        } else {
            double number = 0;
            if (const auto error = ToNumber(argument, number)) return error;
            use(number);
        }
    }
    return std::nullopt;
}

Value Sum(Arguments arguments, const Grid& grid, const Place&) {
    double sum = 0;
    const auto error = EachNumber(arguments, grid, [&](double number) { sum += number; });
    return error ? Value(*error) : FiniteNumber(sum);
}

Value Average(Arguments arguments, const Grid& grid, const Place&) {
    double sum = 0;
    double count = 0;
    const auto error = EachNumber(arguments, grid, [&](double number) { sum += number, ++count; });
    if (error) return *error;
    return count == 0 ? Value(ErrorValue{xlerrDiv0}) : FiniteNumber(sum / count);
}

// The extreme of no numbers is 0.
template <class Better>
Value Extreme(Arguments arguments, const Grid& grid, Better better) {
    std::optional<double> best;
    const auto error = EachNumber(arguments, grid, [&](double number) {
        if (!best || better(number, *best)) best = number;
    });
    return error ? Value(*error) : Value(best.value_or(0.0));
}
Value Max(Arguments arguments, const Grid& grid, const Place&) {
    return Extreme(arguments, grid, [](double a, double b) { return a > b; });
}
Value Min(Arguments arguments, const Grid& grid, const Place&) {
    return Extreme(arguments, grid, [](double a, double b) { return a < b; });
}

// Errors and text that is no number don't count and don't disturb.
Value Count(Arguments arguments, const Grid& grid, const Place&) {
    double count = 0;
    for (const Value& argument : arguments) {
        if (const Area* area = argument.If<Area>()) {
            const auto inside = grid.Inside(*area);
            if (!inside) continue;
            for (RW row = inside->rectangle.rwFirst; row <= inside->rectangle.rwLast; ++row) {
                for (COL column = inside->rectangle.colFirst; column <= inside->rectangle.colLast; ++column) {
                    const Value& cell = grid.At({row, column});
                    count += cell.Is<double>() || cell.Is<int>() ? 1 : 0;
                }
            }
        } else if (const Array* array = argument.If<Array>()) {
            count += static_cast<double>(
                std::count_if(array->cells.begin(), array->cells.end(),
                              [](const Value& v) { return v.Is<double>() || v.Is<int>(); }));
        } else {
            double number = 0;
            count += ToNumber(argument, number) ? 0 : 1;
        }
    }
    return count;
}

Value Absolute(Arguments arguments, const Grid& grid, const Place& place) {
    double number = 0;
    const auto error = ToNumber(grid.Scalar(arguments[0], place), number);
    return error ? Value(*error) : Value(std::fabs(number));
}

// Half away from zero, at a decimal place; a negative one rounds ahead of the point.
Value Round(Arguments arguments, const Grid& grid, const Place& place) {
    double number = 0;
    double digits = 0;
    if (const auto error = ToNumber(grid.Scalar(arguments[0], place), number)) return *error;
    if (const auto error = ToNumber(grid.Scalar(arguments[1], place), digits)) return *error;
    digits = std::clamp(std::trunc(digits), -308.0, 308.0);
    const double scale = std::pow(10.0, std::fabs(digits));
    const double scaled = digits < 0 ? number / scale : number * scale;
    if (!std::isfinite(scaled) || scaled == std::trunc(scaled)) return number;
    // 1.005 * 100 is a hair below 100.5: the decimal digits decide, not the binary ones.
    double decimal = scaled;
    (void)ReadNumber(NumberText(scaled), decimal);
    const double whole = std::round(decimal);
    return FiniteNumber(digits < 0 ? whole * scale : whole / scale);
}

Value Exact(Arguments arguments, const Grid& grid, const Place& place) {
    Text a;
    Text b;
    if (const auto error = ToText(grid.Scalar(arguments[0], place), a)) return *error;
    if (const auto error = ToText(grid.Scalar(arguments[1], place), b)) return *error;
    return a == b;
}

Value IfError(Arguments arguments, const Grid& grid, const Place& place) {
    Value value = grid.Scalar(arguments[0], place);
    return value.Is<ErrorValue>() ? grid.Scalar(arguments[1], place) : value;
}

Value NotAvailable(Arguments, const Grid&, const Place&) {
    return ErrorValue{xlerrNA};
}

constexpr auto kBuiltins = std::to_array<Builtin>({
    {"ABS", 1, 1, Absolute},
    {"AVERAGE", 1, kArgumentLimit, Average},
    {"COUNT", 1, kArgumentLimit, Count},
    {"EXACT", 2, 2, Exact},
    {"IFERROR", 2, 2, IfError},
    {"MAX", 1, kArgumentLimit, Max},
    {"MIN", 1, kArgumentLimit, Min},
    {"NA", 0, 0, NotAvailable},
    {"ROUND", 2, 2, Round},
    {"SUM", 1, kArgumentLimit, Sum},
});

}  // namespace

const Builtin* FindBuiltin(TextView name) noexcept {
    for (const Builtin& builtin : kBuiltins) {
        const auto same = [](char upper, WCHAR unit) {
            return unit == static_cast<WCHAR>(upper) || (unit >= 'a' && unit <= 'z' && unit - 0x20 == upper);
        };
        if (std::equal(builtin.name.begin(), builtin.name.end(), name.begin(), name.end(), same))
            return &builtin;
    }
    return nullptr;
}

}  // namespace excelhost
