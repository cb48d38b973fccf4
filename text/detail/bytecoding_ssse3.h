// The whole blocks of text/detail/bytecoding.h in registers of 16 bytes. Each gives the count of bytes, pairs or
// characters that it has taken: 0 on a machine without SSSE3. Decoding stops at the first block that holds a
// character outside the alphabet.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrolumen::detail {

std::size_t EncodeHexBlocks(const std::uint8_t* bytes, std::size_t size, char* digits) noexcept;
std::size_t DecodeHexBlocks(const char* digits, std::size_t pairs, std::uint8_t* bytes) noexcept;
// A multiple of 3 and of 4.
std::size_t EncodeSixBitBlocks(const std::uint8_t* bytes, std::size_t size, char* text) noexcept;
std::size_t DecodeSixBitBlocks(const char* text, std::size_t length, std::uint8_t* bytes) noexcept;

}  // namespace kestrolumen::detail
