#include "platform/crcfolding.h"

#if defined(__x86_64__) || defined(__i386__)

#include <immintrin.h>

// Set for each function by itself and not for the file: what the file takes from headers stays usable on
// every machine.
#define WITH_CLMUL [[gnu::target("pclmul,ssse3")]]

namespace {

// What takes 128 bits of the message `bits` bits further: the powers of x, modulo the polynomial, by which
// their two halves are multiplied, each in the half of the register that it belongs to.
struct Multipliers {
    std::uint64_t highHalf;
    std::uint64_t lowHalf;
};

// The message in a register with its first byte highest.
struct Crc64Order {
    static constexpr std::uint64_t PowerOfX(unsigned exponent) {
        std::uint64_t power = 1;
        for (; exponent != 0; --exponent) power = power << 1 ^ (power >> 63) * detail::Crc64Polynomial;
        return power;
    }
    static constexpr Multipliers Further(unsigned bits) { return {PowerOfX(bits + 64), PowerOfX(bits)}; }

    WITH_CLMUL static __m128i Swapped(__m128i bytes) noexcept {
        return _mm_shuffle_epi8(bytes, _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
    }
    WITH_CLMUL static __m128i Load(const unsigned char* from) noexcept {
        return Swapped(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
    }
    WITH_CLMUL static void Store(unsigned char* to, __m128i bytes) noexcept {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), Swapped(bytes));
    }
    WITH_CLMUL static __m128i BeforeMessage(std::uint64_t state) noexcept {
        return _mm_set_epi64x(static_cast<long long>(state), 0);
    }
};

// The message in a register as it lies in memory: reflected, its first bit lowest. A product of two reflected
// halves comes out multiplied by x once more, which the exponents make up for.
struct Crc32Order {
    static constexpr std::uint64_t PowerOfX(unsigned exponent) {
        std::uint32_t power = 0x80000000;
        for (; exponent != 0; --exponent) power = power >> 1 ^ (power & 1) * detail::Crc32Polynomial;
        return std::uint64_t{power} << 32;
    }
    static constexpr Multipliers Further(unsigned bits) {
        return {PowerOfX(bits - 1), PowerOfX(bits + 64 - 1)};
    }

    WITH_CLMUL static __m128i Load(const unsigned char* from) noexcept {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    }
    WITH_CLMUL static void Store(unsigned char* to, __m128i bytes) noexcept {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
    }
    WITH_CLMUL static __m128i BeforeMessage(std::uint32_t state) noexcept {
        return _mm_cvtsi32_si128(static_cast<int>(state));
    }
};

WITH_CLMUL inline __m128i Register(const Multipliers& multipliers) noexcept {
    return _mm_set_epi64x(static_cast<long long>(multipliers.highHalf),
                          static_cast<long long>(multipliers.lowHalf));
}

WITH_CLMUL inline __m128i Advanced(__m128i part, __m128i multipliers) noexcept {
    return _mm_xor_si128(_mm_clmulepi64_si128(part, multipliers, 0x11),
                         _mm_clmulepi64_si128(part, multipliers, 0x00));
}

// Four parts run side by side, since one multiplication takes as long as several in a row can start.
template <typename Order, typename State>
WITH_CLMUL detail::CrcRemainder Fold(State state, const unsigned char* data, std::size_t length) noexcept {
    static constexpr Multipliers over64Bytes = Order::Further(8 * 64);
    static constexpr Multipliers over16Bytes = Order::Further(8 * 16);

    __m128i part0 = _mm_xor_si128(Order::Load(data), Order::BeforeMessage(state));
    __m128i part1 = Order::Load(data + 16);
    __m128i part2 = Order::Load(data + 32);
    __m128i part3 = Order::Load(data + 48);
    const __m128i over64 = Register(over64Bytes);
    for (data += 64, length -= 64; length >= 64; data += 64, length -= 64) {
        part0 = _mm_xor_si128(Advanced(part0, over64), Order::Load(data));
        part1 = _mm_xor_si128(Advanced(part1, over64), Order::Load(data + 16));
        part2 = _mm_xor_si128(Advanced(part2, over64), Order::Load(data + 32));
        part3 = _mm_xor_si128(Advanced(part3, over64), Order::Load(data + 48));
    }
    const __m128i over16 = Register(over16Bytes);
    __m128i all = _mm_xor_si128(Advanced(part0, over16), part1);
    all = _mm_xor_si128(Advanced(all, over16), part2);
    all = _mm_xor_si128(Advanced(all, over16), part3);
    for (; length != 0; data += 16, length -= 16) {
        all = _mm_xor_si128(Advanced(all, over16), Order::Load(data));
    }
    detail::CrcRemainder remainder;
    Order::Store(remainder.data(), all);
    return remainder;
}

}  // namespace

namespace detail {

bool CanFold() noexcept {
    return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("ssse3");
}

CrcRemainder FoldCrc32(std::uint32_t state, const unsigned char* data, std::size_t length) noexcept {
    return Fold<Crc32Order>(state, data, length);
}

CrcRemainder FoldCrc64(std::uint64_t state, const unsigned char* data, std::size_t length) noexcept {
    return Fold<Crc64Order>(state, data, length);
}

}  // namespace detail

#else

namespace detail {

bool CanFold() noexcept {
    return false;
}

CrcRemainder FoldCrc32(std::uint32_t, const unsigned char*, std::size_t) noexcept {
    return {};
}

CrcRemainder FoldCrc64(std::uint64_t, const unsigned char*, std::size_t) noexcept {
    return {};
}

}  // namespace detail

#endif
