// The bulk of a cyclic redundancy check by the carry-less multiplication of x86 processors, after V. Gopal
// et al., "Fast CRC Computation for Generic Polynomials Using PCLMULQDQ Instruction" (Intel, 2009).
//
// A message of any length is brought down to 16 bytes that are congruent to it modulo the polynomial. So the
// step of the check, taken over those 16 bytes from the state 0, gives the state after the whole message; no
// further reduction is needed, and only the step knows the table.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace detail {

// The polynomials, without their highest coefficient. That of the CRC-32 (IEEE 802.3) is written reflected,
// the coefficient of x^0 as the highest bit; that of the CRC-64 (ECMA-182) isn't.
inline constexpr std::uint32_t Crc32Polynomial = 0xEDB88320;
inline constexpr std::uint64_t Crc64Polynomial = 0x42F0E1EBA9EA3693;

// From this many bytes on it pays to fold. Never less than 64.
inline constexpr std::size_t LeastToFold = 64;

// Whether this machine can fold.
[[nodiscard]] bool CanFold() noexcept;

using CrcRemainder = std::array<unsigned char, 16>;

// The 16 bytes that lead from the state 0 to where `length` bytes at `data` lead from `state`. `length` is a
// multiple of 16 and at least LeastToFold; the machine has to be one that can fold.
[[nodiscard]] CrcRemainder FoldCrc32(std::uint32_t state, const unsigned char* data,
                                     std::size_t length) noexcept;
[[nodiscard]] CrcRemainder FoldCrc64(std::uint64_t state, const unsigned char* data,
                                     std::size_t length) noexcept;

}  // namespace detail
