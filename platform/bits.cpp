#include "platform/bits.h"

#include "text/detail/compiler.h"
#include "text/detail/cpusupport.h"

#include <bit>
#include <cstddef>
#include <cstring>

namespace {

// A part of its caller, so that its counts become what the processor has for them.
KESTROLUMEN_INLINE std::int32_t CountOf(const std::uint8_t* bytes, std::size_t length) noexcept {
    std::int32_t count = 0;
    std::uint64_t word = 0;
    for (; length >= sizeof word; bytes += sizeof word, length -= sizeof word) {
        std::memcpy(&word, bytes, sizeof word);
        count += std::popcount(word);
    }
    word = 0;
    std::memcpy(&word, bytes, length);
    return count + std::popcount(word);
}

// The processor's own instruction, which the oldest x86 processors lack.
KESTROLUMEN_FOR("popcnt")
std::int32_t CountByInstruction(const std::uint8_t* bytes, std::size_t length) noexcept {
    return CountOf(bytes, length);
}

}  // namespace

std::int32_t BitCountOfArray(const std::uint8_t* bytes, std::int32_t bits) noexcept {
    if (bits < 1) return 0;
    const auto before = static_cast<std::size_t>(bits - 1) >> 3;
    const unsigned last = bytes[before] >> (7 - ((bits - 1) & 7));
    const bool hasInstruction = kestrolumen::detail::KnownCpuSupport().popcnt;
    return BitCount32(last) + (hasInstruction ? CountByInstruction(bytes, before) : CountOf(bytes, before));
}
