#include "excelhost/functions/functions.h"

#include "excelhost/formula.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

// Money that is paid is negative, money that is received is positive; rates are per period.

namespace excelhost {
namespace {

// Payments of one amount at the end of each period, or at the beginning. Of all of them holds
//   present value * growth + payment * payments + future value = 0.
struct Annuity {
    double growth = 1;    // of 1 up to the end
    double payments = 0;  // what payments of 1 have become by then

    Annuity(double rate, double periods, bool atBeginning) {
        const double gained =
            rate > -1 ? std::expm1(periods * std::log1p(rate)) : std::pow(1 + rate, periods) - 1;
        growth = 1 + gained;
        payments = rate == 0 ? periods : gained / rate * (atBeginning ? 1 + rate : 1);
    }
};

// From the arguments rate, periods, any, [any], [0 at the end or 1 at the beginning].
Annuity AnnuityOf(const Given& given) {
    return {given.Number(0), given.Number(1), given.Truth(4, false)};
}

// PMT(rate, periods, present value, [future value], [type])
Value Payment(const Given& given) {
    const Annuity annuity = AnnuityOf(given);
    if (annuity.payments == 0) return ErrorValue{xlerrNum};
    return FiniteNumber(-(given.Number(3, 0) + given.Number(2) * annuity.growth) / annuity.payments);
}

// PV(rate, periods, payment, [future value], [type])
Value PresentValue(const Given& given) {
    const Annuity annuity = AnnuityOf(given);
    return FiniteNumber(-(given.Number(3, 0) + given.Number(2) * annuity.payments) / annuity.growth);
}

// FV(rate, periods, payment, [present value], [type])
Value FutureValue(const Given& given) {
    const Annuity annuity = AnnuityOf(given);
    return FiniteNumber(-(given.Number(3, 0) * annuity.growth + given.Number(2) * annuity.payments));
}

// Of amounts at the ends of periods, from the first on.
double NetPresentValue(double rate, const std::vector<double>& amounts) {
    double value = 0;
    for (auto amount = amounts.rbegin(); amount != amounts.rend(); ++amount)
        value = (value + *amount) / (1 + rate);
    return value;
}

// NPV(rate, amount, ...)
Value NetPresentValueOf(const Given& given) {
    const double rate = given.Number(0);
    if (rate == -1) return ErrorValue{xlerrDiv0};
    std::vector<double> amounts;
    for (std::size_t i = 1; i < given.Count(); ++i) {
        given.EachNumber(i, [&](double amount) { amounts.push_back(amount); });
    }
    return FiniteNumber(NetPresentValue(rate, amounts));
}

// The rate near the guess for which a function is 0, by secants; #NUM! when they don't lead there.
template <class Function>
Value RateFor(Function function, double guess) {
    constexpr int mostSteps = 100;
    constexpr double firstStep = 1e-4;
    constexpr double precision = 1e-14;
    if (guess <= -1) return ErrorValue{xlerrNum};
    double last = guess + firstStep;
    double rate = guess;
    double lastResult = function(last);
    for (int step = 0; step < mostSteps; ++step) {
        const double result = function(rate);
        if (result == 0) return rate;
        double next = rate - result * (rate - last) / (result - lastResult);
        if (!std::isfinite(next)) break;
        if (next <= -1) {
            next = (rate - 1) / 2;
        } else if (std::fabs(next - rate) <= precision * std::max(1.0, std::fabs(next))) {
            return next;
        }
        last = rate;
        lastResult = result;
        rate = next;
    }
    return ErrorValue{xlerrNum};
}

constexpr double kGuess = 0.1;

// IRR(amounts, [guess])
Value InternalRate(const Given& given) {
    std::vector<double> amounts;
    given.EachNumber(0, [&](double amount) { amounts.push_back(amount); });
    const auto isPaid = [](double amount) { return amount < 0; };
    const auto isReceived = [](double amount) { return amount > 0; };
    if (std::none_of(amounts.begin(), amounts.end(), isPaid) ||
        std::none_of(amounts.begin(), amounts.end(), isReceived))
        return ErrorValue{xlerrNum};
    return RateFor([&](double rate) { return NetPresentValue(rate, amounts); }, given.Number(1, kGuess));
}

// RATE(periods, payment, present value, [future value], [type], [guess])
Value Rate(const Given& given) {
    const double periods = given.Number(0);
    const double payment = given.Number(1);
    const double present = given.Number(2);
    const double future = given.Number(3, 0);
    const bool atBeginning = given.Truth(4, false);
    if (periods <= 0) return ErrorValue{xlerrNum};
    const auto balance = [&](double rate) {
        const Annuity annuity(rate, periods, atBeginning);
        return present * annuity.growth + payment * annuity.payments + future;
    };
    return RateFor(balance, given.Number(5, kGuess));
}

constexpr auto kFunctions = std::to_array<Builtin>({
    {"FV", 3, 5, FutureValue},
    {"IRR", 1, 2, InternalRate, {0b10, true}},
    {"NPV", 2, kArgumentLimit, NetPresentValueOf, {0b1, true}},
    {"PMT", 3, 5, Payment},
    {"PV", 3, 5, PresentValue},
    {"RATE", 3, 6, Rate},
});

}  // namespace

std::span<const Builtin> FinancialFunctions() noexcept {
    return kFunctions;
}

}  // namespace excelhost
