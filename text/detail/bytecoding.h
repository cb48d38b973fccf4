// Bytes as hexadecimal digits and as six-bit characters, and back: the inner loops, over memory that the
// caller has measured. They run on registers of 16 bytes where the machine has SSSE3, and else, and at the
// ends, byte by byte with the same results.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrolumen::detail {

// Two upper-case digits a byte.
void EncodeHex(const std::uint8_t* bytes, std::size_t size, char* digits) noexcept;

// One byte from each pair of characters. Gives whether all of them are hexadecimal digits. What isn't counts,
// with a to z as A to Z, as its code minus 48 below "A", minus 55 from there on; the sum is cut to 8 bits.
bool DecodeHex(const char* digits, std::size_t pairs, std::uint8_t* bytes) noexcept;

[[nodiscard]] bool IsHexDigit(unsigned unit) noexcept;
// 0 to 15 for a hexadecimal digit.
[[nodiscard]] unsigned HexDigitValue(unsigned unit) noexcept;

// Characters for `size` bytes: the smallest whole number that holds their bits.
[[nodiscard]] constexpr std::uint64_t SixBitLength(std::uint64_t size) noexcept {
    return (size * 4 + 2) / 3;
}
void EncodeSixBit(const std::uint8_t* bytes, std::size_t size, char* text) noexcept;

// The whole bytes that `length` characters hold, length * 6 / 8 of them. A character outside the alphabet
// counts as 255, whose upper bits fall onto its neighbours.
void DecodeSixBit(const char* text, std::size_t length, std::uint8_t* bytes) noexcept;

}  // namespace kestrolumen::detail
