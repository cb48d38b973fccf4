#include "excelhost/functions/functions.h"

#include "excelhost/formula.h"
#include "excelhost/numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <numeric>
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

// ATAN2(x, y)
Value ArcTangent2(const Given& given) {
    const double x = given.Number(0);
    const double y = given.Number(1);
    return x == 0 && y == 0 ? Value(ErrorValue{xlerrDiv0}) : Value(std::atan2(y, x));
}

double Factorial(double number) {
    constexpr double last = 170;  // of a finite one
    number = std::trunc(number);
    return number < 0 || number > last ? std::nan("") : std::round(std::tgamma(number + 1));
}

Value Combinations(const Given& given) {
    const double number = std::trunc(given.Number(0));
    const double chosen = std::trunc(given.Number(1));
    if (chosen < 0 || number < chosen) return ErrorValue{xlerrNum};
    const double fewer = std::min(chosen, number - chosen);
    double count = 1;
    double i = 0;
    while (i < fewer && std::isfinite(count)) {
        ++i;
        count = count * (number - fewer + i) / i;
    }
    return FiniteNumber(std::round(count));
}

// Whole numbers alone divide: fractions are cut. #NUM! for negative ones and those that a double doesn't hold to the
// last digit.
constexpr double kWholeLimit = 9007199254740992;

std::uint64_t Divisible(double number) {
    if (number < 0 || number >= kWholeLimit) Fail(xlerrNum);
    return static_cast<std::uint64_t>(number);
}

Value GreatestDivisor(const Given& given) {
    std::uint64_t divisor = 0;
    given.EachNumber([&](double number) { divisor = std::gcd(divisor, Divisible(number)); });
    return static_cast<double>(divisor);
}

Value LeastMultiple(const Given& given) {
    std::uint64_t multiple = 1;
    given.EachNumber([&](double number) {
        const std::uint64_t factor = Divisible(number);
        const std::uint64_t further = multiple == 0 || factor == 0 ? 0 : factor / std::gcd(multiple, factor);
        if (static_cast<double>(multiple) * static_cast<double>(further) >= kWholeLimit) Fail(xlerrNum);
        multiple *= further;
    });
    return static_cast<double>(multiple);
}

constexpr double kDegreesOfRadian = 180 / std::numbers::pi;

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
    {"ACOS", 1, 1, OfNumber<[](double x) { return std::acos(x); }>},
    {"ASIN", 1, 1, OfNumber<[](double x) { return std::asin(x); }>},
    {"ATAN", 1, 1, OfNumber<[](double x) { return std::atan(x); }>},
    {"ATAN2", 2, 2, ArcTangent2},
    {"CEILING", 2, 2, ToMultiple<static_cast<double (*)(double)>(std::ceil)>},
    {"COMBIN", 2, 2, Combinations},
    {"COS", 1, 1, OfNumber<[](double x) { return std::cos(x); }>},
    {"DEGREES", 1, 1, OfNumber<[](double x) { return x * kDegreesOfRadian; }>},
    {"EVEN", 1, 1, OfNumber<[](double x) { return std::copysign(2 * std::ceil(std::fabs(x) / 2), x); }>},
    {"EXP", 1, 1, OfNumber<[](double x) { return std::exp(x); }>},
    {"FACT", 1, 1, OfNumber<Factorial>},
    {"FLOOR", 2, 2, Floor},
    {"GCD", 1, kArgumentLimit, GreatestDivisor, kWholeArrays},
    {"INT", 1, 1, OfNumber<[](double x) { return std::floor(x); }>},
    {"LCM", 1, kArgumentLimit, LeastMultiple, kWholeArrays},
    {"LN", 1, 1, Ln},
    {"LOG", 1, 2, Log},
    {"LOG10", 1, 1, Log},
    {"MOD", 2, 2, Mod},
    {"ODD", 1, 1, OfNumber<Odd>},
    {"PI", 0, 0, [](const Given&) { return Value(std::numbers::pi); }},
    {"POWER", 2, 2, Power},
    {"PRODUCT", 1, kArgumentLimit, Product, kWholeArrays},
    {"QUOTIENT", 2, 2, Quotient},
    {"RADIANS", 1, 1, OfNumber<[](double x) { return x / kDegreesOfRadian; }>},
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
