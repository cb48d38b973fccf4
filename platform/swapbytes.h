#pragma once

#include <cstdint>

// Exchanges two ranges of `count` bytes, byte by byte from the front; nothing for a count of 0 or below.
constexpr void SwapBytes(std::uint8_t* first, std::uint8_t* second, std::int32_t count) noexcept {
    for (std::int32_t i = 0; i < count; ++i) {
        const std::uint8_t kept = first[i];
        first[i] = second[i];
        second[i] = kept;
    }
}
