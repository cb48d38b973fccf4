// Cyclic redundancy checks by the carry-less multiplication of x86 processors, after V. Gopal et al., "Fast
// CRC Computation for Generic Polynomials Using PCLMULQDQ Instruction" (Intel, 2009).
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrolumen::detail {

// The polynomials, without their highest coefficient. That of the CRC-32 (IEEE 802.3) is written reflected,
// the coefficient of x^0 as the highest bit; that of the CRC-64 (ECMA-182) isn't.
inline constexpr std::uint32_t Crc32Polynomial = 0xEDB88320;
inline constexpr std::uint64_t Crc64Polynomial = 0x42F0E1EBA9EA3693;

// The fewest bytes that can be folded. It pays from there on.
inline constexpr std::size_t LeastToFold = 16;

// Whether this machine can fold. It reads as false until the library's static objects are built, and the
// table does the work until then.
extern const bool canFold;

// The state after `length` bytes, which are LeastToFold or more. The machine has to be one that can fold.
[[nodiscard]] std::uint32_t FoldCrc32(std::uint32_t state, const unsigned char* data,
                                      std::size_t length) noexcept;
[[nodiscard]] std::uint64_t FoldCrc64(std::uint64_t state, const unsigned char* data,
                                      std::size_t length) noexcept;

}  // namespace kestrolumen::detail
