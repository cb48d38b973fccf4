#include "platform/primes.h"

#include <algorithm>
#include <bit>
#include <iterator>

namespace {

constexpr std::uint32_t TimesModulo(std::uint32_t a, std::uint32_t b, std::uint32_t modulus) noexcept {
    return static_cast<std::uint32_t>(std::uint64_t{a} * b % modulus);
}

constexpr std::uint32_t PowerModulo(std::uint32_t base, std::uint32_t exponent,
                                    std::uint32_t modulus) noexcept {
    std::uint32_t power = 1;
    for (; exponent != 0; exponent >>= 1) {
        if ((exponent & 1) != 0) power = TimesModulo(power, base, modulus);
        base = TimesModulo(base, base, modulus);
    }
    return power;
}

// The test of Miller and Rabin: whether `odd` behaves towards this base as a prime does.
constexpr bool MayBePrime(std::uint32_t odd, std::uint32_t base) noexcept {
    const int twos = std::countr_zero(odd - 1);
    std::uint32_t power = PowerModulo(base, (odd - 1) >> twos, odd);
    if (power == 1 || power == odd - 1) return true;
    for (int i = 1; i < twos; ++i) {
        power = TimesModulo(power, power, odd);
        if (power == odd - 1) return true;
    }
    return false;
}

// Below 4,759,123,141 no composite number passes for all three of these bases: G. Jaeschke, "On strong
// pseudoprimes to several bases", Mathematics of Computation 61 (1993).
constexpr std::uint32_t bases[] = {2, 7, 61};

// Of an odd number from 3 on.
constexpr bool IsPrime(std::uint32_t odd) noexcept {
    for (const std::uint32_t divisor : {3U, 5U, 7U, 11U, 13U, 61U}) {
        if (odd % divisor == 0) return odd == divisor;
    }
    return std::all_of(std::begin(bases), std::end(bases),
                       [odd](std::uint32_t base) { return MayBePrime(odd, base); });
}

}  // namespace

std::int32_t LargestPrimeBelow(std::int32_t limit) noexcept {
    const auto from = static_cast<std::uint32_t>(std::max(limit, 8));
    std::uint32_t candidate = from - 1 - from % 2;  // the largest odd number below
    while (!IsPrime(candidate)) candidate -= 2;
    return static_cast<std::int32_t>(candidate);
}
