#include "platform/bits.h"

#include <cstddef>
#include <cstring>

namespace {

// Inlined, so that its counts become what the caller's target has for them.
[[gnu::always_inline]] inline std::int32_t CountOf(const std::uint8_t* bytes, std::size_t length) noexcept {
    std::int32_t count = 0;
    std::uint64_t word = 0;
    for (; length >= sizeof word; bytes += sizeof word, length -= sizeof word) {
        std::memcpy(&word, bytes, sizeof word);
        count += __builtin_popcountll(word);
    }
    word = 0;
    std::memcpy(&word, bytes, length);
    return count + __builtin_popcountll(word);
}

#if defined(__x86_64__) || defined(__i386__)

// The processor's own instruction, which the oldest x86 processors lack.
[[gnu::target("popcnt")]] std::int32_t CountByInstruction(const std::uint8_t* bytes,
                                                          std::size_t length) noexcept {
    return CountOf(bytes, length);
}

const bool hasInstruction = __builtin_cpu_supports("popcnt");

#else

std::int32_t CountByInstruction(const std::uint8_t* bytes, std::size_t length) noexcept {
    return CountOf(bytes, length);
}

constexpr bool hasInstruction = true;

#endif

}  // namespace

std::int32_t BitCountOfArray(const std::uint8_t* bytes, std::int32_t bits) noexcept {
    if (bits < 1) return 0;
    const auto before = static_cast<std::size_t>(bits - 1) >> 3;
    const unsigned last = bytes[before] >> (7 - ((bits - 1) & 7));
    return BitCount32(last) + (hasInstruction ? CountByInstruction(bytes, before) : CountOf(bytes, before));
}
