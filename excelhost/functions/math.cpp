#include "excelhost/functions/functions.h"

#include "excelhost/formula.h"
#include "excelhost/numbers.h"

#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace excelhost {
namespace {

// A function of one number, given as an operation on doubles.
template <auto Operation>
Value OfNumber(const Given& given) {
    return FiniteNumber(Operation(given.Number(0)));
}

template <Rounding How>
Value RoundTo(const Given& given) {
    return FiniteNumber(Rounded(given.Number(0), given.Number(1, 0), How));
}

double Sign(double number) {
    return number > 0 ? 1 : number < 0 ? -1 : 0;
}

// To the next odd number away from zero; 0 gives 1.
double Odd(double number) {
    const double magnitude = std::fabs(number);
    return std::copysign(magnitude <= 1 ? 1 : 2 * std::ceil((magnitude - 1) / 2) + 1, number);
}

Value Quotient(const Given& given) {
    const double divisor = given.Number(1);
    return divisor == 0 ? Value(ErrorValue{xlerrDiv0}) : FiniteNumber(std::trunc(given.Number(0) / divisor));
}

Value LogarithmTo(double number, double base) {
    if (number <= 0 || base <= 0) return ErrorValue{xlerrNum};
    if (base == 1) return ErrorValue{xlerrDiv0};
    return base == 10 ? std::log10(number) : std::log(number) / std::log(base);
}
Value Log(const Given& given) {
    return LogarithmTo(given.Number(0), given.Number(1, 10));
}
Value Ln(const Given& given) {
    return LogarithmTo(given.Number(0), std::numbers::e);
}

// The remainder has the divisor's sign.
Value Mod(const Given& given) {
    const double number = given.Number(0);
    const double divisor = given.Number(1);
    if (divisor == 0) return ErrorValue{xlerrDiv0};
    const double rest = std::fmod(number, divisor);
    return rest != 0 && std::signbit(rest) != std::signbit(divisor) ? rest + divisor : rest;
}

// A multiple of the significance: 0.3 is three times 0.1, though not in binary.
template <auto Whole>
Value ToMultiple(const Given& given) {
    const double number = given.Number(0);
    const double significance = given.Number(1);
    if (number > 0 && significance < 0) return ErrorValue{xlerrNum};
    if (number == 0 || significance == 0) return 0.0;
    double times = number / significance;
    (void)ReadNumber(NumberText(times), times);
    return FiniteNumber(Whole(times) * significance);
}
Value Floor(const Given& given) {
    if (given.Number(0) != 0 && given.Number(1) == 0) return ErrorValue{xlerrDiv0};
    return ToMultiple<static_cast<double (*)(double)>(std::floor)>(given);
}

Value Power(const Given& given) {
    return PowerOf(given.Number(0), given.Number(1));
}

Value Sum(const Given& given) {
    double sum = 0;
    given.EachNumber([&](double number) { sum += number; });
    return FiniteNumber(sum);
}

Value SumOfSquares(const Given& given) {
    double sum = 0;
    given.EachNumber([&](double number) { sum += number * number; });
    return FiniteNumber(sum);
}

// The product of no numbers is 0.
Value Product(const Given& given) {
    double product = 1;
    bool any = false;
    given.EachNumber([&](double number) { product *= number, any = true; });
    return any ? FiniteNumber(product) : Value(0.0);
}

// What is no number counts as 0.
Value SumProduct(const Given& given) {
    std::vector<double> products;
    for (std::size_t i = 0; i < given.Count(); ++i) {
        if (given.SizeOf(i) != given.SizeOf(0)) return ErrorValue{xlerrValue};
        const Array table = given.Table(i);
        products.resize(table.cells.size(), 1);
        for (std::size_t cell = 0; cell < products.size(); ++cell) {
            const Value& factor = table.cells[cell];
            if (const auto* error = factor.If<ErrorValue>()) return *error;
            const double* number = factor.If<double>();
            products[cell] *= number != nullptr ? *number : 0;
        }
    }
    double sum = 0;
    for (const double product : products) sum += product;
    return FiniteNumber(sum);
}

constexpr auto kFunctions = std::to_array<Builtin>({
    {"ABS", 1, 1, OfNumber<[](double x) { return std::fabs(x); }>},
    {"CEILING", 2, 2, ToMultiple<static_cast<double (*)(double)>(std::ceil)>},
    {"COS", 1, 1, OfNumber<[](double x) { return std::cos(x); }>},
    {"EVEN", 1, 1, OfNumber<[](double x) { return std::copysign(2 * std::ceil(std::fabs(x) / 2), x); }>},
    {"EXP", 1, 1, OfNumber<[](double x) { return std::exp(x); }>},
    {"FLOOR", 2, 2, Floor},
    {"INT", 1, 1, OfNumber<[](double x) { return std::floor(x); }>},
    {"LN", 1, 1, Ln},
    {"LOG", 1, 2, Log},
    {"LOG10", 1, 1, Log},
    {"MOD", 2, 2, Mod},
    {"ODD", 1, 1, OfNumber<Odd>},
    {"PI", 0, 0, [](const Given&) { return Value(std::numbers::pi); }},
    {"POWER", 2, 2, Power},
    {"PRODUCT", 1, kArgumentLimit, Product, kWholeArrays},
    {"QUOTIENT", 2, 2, Quotient},
    {"ROUND", 2, 2, RoundTo<Rounding::HalfAwayFromZero>},
    {"ROUNDDOWN", 2, 2, RoundTo<Rounding::TowardsZero>},
    {"ROUNDUP", 2, 2, RoundTo<Rounding::AwayFromZero>},
    {"SIGN", 1, 1, OfNumber<Sign>},
    {"SIN", 1, 1, OfNumber<[](double x) { return std::sin(x); }>},
    {"SQRT", 1, 1, OfNumber<[](double x) { return std::sqrt(x); }>},
    {"SUM", 1, kArgumentLimit, Sum, kWholeArrays},
    {"SUMPRODUCT", 1, kArgumentLimit, SumProduct, kWholeArrays},
    {"SUMSQ", 1, kArgumentLimit, SumOfSquares, kWholeArrays},
    {"TAN", 1, 1, OfNumber<[](double x) { return std::tan(x); }>},
    {"TRUNC", 1, 2, RoundTo<Rounding::TowardsZero>},
});

}  // namespace

std::span<const Builtin> MathFunctions() noexcept {
    return kFunctions;
}

}  // namespace excelhost
