// Moments as Windows counts them.
#pragma once

#include "winapi/types.h"

#include <cstdint>

#include <time.h>

namespace winapi {

// In steps of 100 nanoseconds since the start of the year 1601, as a FILETIME counts.
[[nodiscard]] inline std::uint64_t FileTimeFromTimespec(const timespec& moment) noexcept {
    constexpr std::int64_t stepsPerSecond = 10'000'000, nanosecondsPerStep = 100;
    constexpr std::int64_t secondsFrom1601To1970 = 11'644'473'600;
    return static_cast<std::uint64_t>((moment.tv_sec + secondsFrom1601To1970) * stepsPerSecond +
                                      moment.tv_nsec / nanosecondsPerStep);
}

[[nodiscard]] constexpr FILETIME FileTimeOf(std::uint64_t steps) noexcept {
    return {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
}

}  // namespace winapi
