// 64 bytes of UTF-8 as sets of bits, one bit a byte, from which a block's form is checked at once.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "utf8_rules.h"

namespace winapi::utf8 {

constexpr std::size_t blockSize = 64;

// The block begins where a character begins, or what ought to be one.
struct Block {
    std::uint64_t continuations;
    std::uint64_t leads;    // of two bytes and more
    std::uint64_t leads3;   // of three bytes and more
    std::uint64_t leads4;   // of four bytes, and bytes that UTF-8 doesn't have
    std::uint64_t guarded;  // leads that don't take every continuation byte, and bytes that are none
};

// The bytes of the block's whole characters: all but those of one that the block's end cuts off.
inline unsigned WholeCharacters(const Block& block) noexcept {
    constexpr std::uint64_t one = 1;
    const std::uint64_t cut =
        (block.leads & one << 63) | (block.leads3 & one << 62) | (block.leads4 & one << 61);
    return static_cast<unsigned>(std::countr_zero(cut));
}

inline std::uint64_t FirstBits(unsigned count) noexcept {
    return count >= blockSize ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

// Whether the `whole` bytes before the one that the block's end cuts off are well formed. The first byte of
// that one is looked at, too: it may not stand where a character before it should go on.
inline bool IsWellFormed(const Block& block, const char* text, unsigned whole) noexcept {
    const std::uint64_t expected = block.leads << 1 | block.leads3 << 2 | block.leads4 << 3;
    if (((expected ^ block.continuations) & FirstBits(whole + 1)) != 0) return false;
    for (std::uint64_t left = block.guarded & FirstBits(whole); left != 0; left &= left - 1) {
        const char* const lead = text + std::countr_zero(left);
        if (!IsSecondByte(static_cast<std::uint8_t>(lead[0]), static_cast<std::uint8_t>(lead[1])))
            return false;
    }
    return true;
}

// The UTF-16 units of the bytes that `within` has.
inline std::size_t CountUnits(const Block& block, std::uint64_t within) noexcept {
    return static_cast<std::size_t>(std::popcount(~block.continuations & within)) +
           static_cast<std::size_t>(std::popcount(block.leads4 & within));
}

}  // namespace winapi::utf8
