#pragma once

#include <cstdint>

// The largest prime number that is smaller than `limit`; a limit below 8 counts as 8, and gives 7. It needs
// no memory, so it always gives a prime.
[[nodiscard]] std::int32_t LargestPrimeBelow(std::int32_t limit) noexcept;
