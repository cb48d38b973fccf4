// Bit arrays in plain buffers, and counts of set bits.
//
// Bit `i` of an array stands in byte `i >> 3` under the mask `0x80 >> (i & 7)`: bit 0 is the highest bit of
// the first byte. An index isn't checked against the buffer.
#pragma once

#include <bit>
#include <cstdint>

namespace kestrolumen::detail {

[[nodiscard]] constexpr std::uint8_t BitMask(std::int32_t index) noexcept {
    return static_cast<std::uint8_t>(0x80 >> (index & 7));
}

}  // namespace kestrolumen::detail

constexpr void SetBit(std::uint8_t* bytes, std::int32_t index) noexcept {
    bytes[index >> 3] = static_cast<std::uint8_t>(bytes[index >> 3] | kestrolumen::detail::BitMask(index));
}

constexpr void ClearBit(std::uint8_t* bytes, std::int32_t index) noexcept {
    bytes[index >> 3] = static_cast<std::uint8_t>(bytes[index >> 3] & ~kestrolumen::detail::BitMask(index));
}

[[nodiscard]] constexpr bool TestBit(const std::uint8_t* bytes, std::int32_t index) noexcept {
    return (bytes[index >> 3] & kestrolumen::detail::BitMask(index)) != 0;
}

// How many bits of a number are set.
[[nodiscard]] constexpr std::int32_t BitCount32(std::uint32_t value) noexcept {
    return std::popcount(value);
}
[[nodiscard]] constexpr std::int32_t BitCount64(std::uint64_t value) noexcept {
    return std::popcount(value);
}

// How many of the array's bits 0 to `bits` - 1 are set. Reads the bytes that hold these and no other; with
// `bits` below 1 none, and gives 0.
[[nodiscard]] std::int32_t BitCountOfArray(const std::uint8_t* bytes, std::int32_t bits) noexcept;
