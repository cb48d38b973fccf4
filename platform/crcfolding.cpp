#include "platform/detail/crcfolding.h"

#include "text/detail/compiler.h"
#include "text/detail/cpusupport.h"

#if KESTROLUMEN_X86

#include <span>

#define WITH_CLMUL KESTROLUMEN_FOR("pclmul,sse4.1")
#define WITH_WIDE_CLMUL KESTROLUMEN_FOR("vpclmulqdq,pclmul,avx2")

// The message is a polynomial, its first bit the highest coefficient. Folding keeps 16 bytes that are
// congruent to what has been read so far, modulo the polynomial P of the check: to go n bits on, the two
// halves of the 16 bytes are multiplied by powers of x, taken modulo P, and the products added to the bytes
// that stand there. At the end the 16 bytes, times x^64, are reduced modulo P: the quotient is a product with
// the reciprocal of P (Barrett's reduction), and the remainder is the state.
namespace {

using Bytes = std::span<const unsigned char>;

// The halves of a register.
struct Halves {
    std::uint64_t high;
    std::uint64_t low;
};

WITH_CLMUL inline __m128i Register(const Halves& halves) noexcept {
    return _mm_set_epi64x(static_cast<long long>(halves.high), static_cast<long long>(halves.low));
}

WITH_CLMUL inline std::uint64_t LowHalf(__m128i halves) noexcept {
    std::uint64_t low;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(&low), halves);
    return low;
}

// The CRC-64: the message's first bit is the highest of the register.
struct HighestBitFirst {
    using State = std::uint64_t;

    static constexpr std::uint64_t TimesX(std::uint64_t a) {
        return a << 1 ^ (a >> 63) * kestrolumen::detail::Crc64Polynomial;
    }
    static constexpr std::uint64_t PowerOfX(unsigned exponent) {
        std::uint64_t power = 1;
        for (; exponent != 0; --exponent) power = TimesX(power);
        return power;
    }
    // x^128 / P, rounded down and without its highest coefficient.
    static constexpr std::uint64_t Reciprocal() {
        std::uint64_t quotient = 0;
        std::uint64_t remainder = kestrolumen::detail::Crc64Polynomial;
        for (int i = 0; i < 64; ++i) {
            quotient = quotient << 1 | remainder >> 63;
            remainder = TimesX(remainder);
        }
        return quotient;
    }

    static constexpr Halves Over(unsigned bits) { return {PowerOfX(bits + 64), PowerOfX(bits)}; }

    // From the order of memory to that of the register, and back.
    static constexpr Halves swapped{0x0001020304050607, 0x08090A0B0C0D0E0F};
    WITH_CLMUL static __m128i Ordered(__m128i bytes) noexcept {
        return _mm_shuffle_epi8(bytes, Register(swapped));
    }
    WITH_WIDE_CLMUL static __m256i Ordered(__m256i bytes) noexcept {
        return _mm256_shuffle_epi8(bytes, _mm256_broadcastsi128_si256(Register(swapped)));
    }

    WITH_CLMUL static __m128i AtFirstBits(State state) noexcept { return Register({state, 0}); }

    WITH_CLMUL static State Reduced(__m128i all) noexcept {
        static constexpr Halves forScale{0, PowerOfX(128)};
        static constexpr Halves forQuotient{0, Reciprocal()};
        static constexpr Halves forMultiple{0, kestrolumen::detail::Crc64Polynomial};
        const __m128i scaled =
            _mm_xor_si128(_mm_clmulepi64_si128(all, Register(forScale), 0x01), _mm_slli_si128(all, 8));
        const __m128i quotient =
            _mm_xor_si128(_mm_clmulepi64_si128(scaled, Register(forQuotient), 0x01), scaled);
        return LowHalf(_mm_xor_si128(scaled, _mm_clmulepi64_si128(quotient, Register(forMultiple), 0x01)));
    }
};

// The CRC-32: the message's first bit is the lowest of the register, and all else is reflected too. Taken
// times x^32, its polynomial is one of degree 64 as well, and the state a half of a register.
//
// The product of two reflected halves comes out times x. The constants make up for that.
struct LowestBitFirst {
    using State = std::uint32_t;

    static constexpr std::uint64_t TimesX(std::uint64_t a) {
        return a >> 1 ^ (a & 1) * std::uint64_t{kestrolumen::detail::Crc32Polynomial};
    }
    static constexpr std::uint64_t PowerOfX(unsigned exponent) {
        std::uint64_t power = std::uint64_t{1} << 63;
        for (; exponent != 0; --exponent) power = TimesX(power);
        return power;
    }
    // x^127 / P, rounded down.
    static constexpr std::uint64_t Reciprocal() {
        std::uint64_t quotient = 1;
        std::uint64_t remainder = kestrolumen::detail::Crc32Polynomial;
        for (int i = 1; i < 64; ++i) {
            quotient |= (remainder & 1) << i;
            remainder = TimesX(remainder);
        }
        return quotient;
    }

    static constexpr Halves Over(unsigned bits) { return {PowerOfX(bits - 1), PowerOfX(bits + 63)}; }

    WITH_CLMUL static __m128i Ordered(__m128i bytes) noexcept { return bytes; }
    WITH_WIDE_CLMUL static __m256i Ordered(__m256i bytes) noexcept { return bytes; }

    WITH_CLMUL static __m128i AtFirstBits(State state) noexcept {
        return _mm_cvtsi32_si128(static_cast<int>(state));
    }

    WITH_CLMUL static State Reduced(__m128i all) noexcept {
        static constexpr Halves forScale{0, PowerOfX(127)};
        static constexpr Halves forQuotient{0, Reciprocal()};
        static constexpr Halves forMultiple{0, std::uint64_t{kestrolumen::detail::Crc32Polynomial} << 1};
        const __m128i scaled =
            _mm_xor_si128(_mm_clmulepi64_si128(all, Register(forScale), 0x00), _mm_srli_si128(all, 8));
        const __m128i quotient = _mm_clmulepi64_si128(scaled, Register(forQuotient), 0x00);
        const __m128i rest =
            _mm_xor_si128(scaled, _mm_clmulepi64_si128(quotient, Register(forMultiple), 0x00));
        return static_cast<State>(_mm_extract_epi32(rest, 2));
    }
};

WITH_CLMUL inline __m128i Load(const unsigned char* from) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

template <typename Order>
WITH_CLMUL inline __m128i Next(Bytes rest, std::size_t at = 0) noexcept {
    return Order::Ordered(Load(rest.data() + at));
}

WITH_CLMUL inline __m128i Advanced(__m128i part, __m128i factors) noexcept {
    return _mm_xor_si128(_mm_clmulepi64_si128(part, factors, 0x11),
                         _mm_clmulepi64_si128(part, factors, 0x00));
}

template <typename Order>
WITH_CLMUL inline __m128i Over16Bytes() noexcept {
    static constexpr Halves factors = Order::Over(8 * 16);
    return Register(factors);
}

// Takes blocks of 64 bytes off the front of `rest`, one at least. Four parts run side by side, since a
// multiplication takes longer than it is until the next can start.
template <typename Order>
WITH_CLMUL __m128i FoldBlocks(__m128i state, Bytes& rest) noexcept {
    static constexpr Halves factors = Order::Over(8 * 64);
    const __m128i over64 = Register(factors);
    __m128i part0 = _mm_xor_si128(Next<Order>(rest), state);
    __m128i part1 = Next<Order>(rest, 16);
    __m128i part2 = Next<Order>(rest, 32);
    __m128i part3 = Next<Order>(rest, 48);
    for (rest = rest.subspan(64); rest.size() >= 64; rest = rest.subspan(64)) {
        part0 = _mm_xor_si128(Advanced(part0, over64), Next<Order>(rest));
        part1 = _mm_xor_si128(Advanced(part1, over64), Next<Order>(rest, 16));
        part2 = _mm_xor_si128(Advanced(part2, over64), Next<Order>(rest, 32));
        part3 = _mm_xor_si128(Advanced(part3, over64), Next<Order>(rest, 48));
    }
    __m128i all = part0;
    for (const __m128i& part : {part1, part2, part3}) {
        all = _mm_xor_si128(Advanced(all, Over16Bytes<Order>()), part);
    }
    return all;
}

// Whether the machine has registers of 32 bytes for that.
bool CanFoldWide() noexcept {
    return KESTROLUMEN_WIDE_REGISTERS && kestrolumen::detail::KnownCpuSupport().vpclmulqdq;
}

template <typename Order>
WITH_WIDE_CLMUL inline __m256i NextWide(Bytes rest, std::size_t at = 0) noexcept {
    return Order::Ordered(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(rest.data() + at)));
}

WITH_WIDE_CLMUL inline __m256i Advanced(__m256i part, __m256i factors) noexcept {
    return _mm256_xor_si256(_mm256_clmulepi64_epi128(part, factors, 0x11),
                            _mm256_clmulepi64_epi128(part, factors, 0x00));
}

// The same with blocks of 128 bytes.
template <typename Order>
WITH_WIDE_CLMUL __m128i FoldWideBlocks(__m128i state, Bytes& rest) noexcept {
    static constexpr Halves overBlock = Order::Over(8 * 128);
    static constexpr Halves overPart = Order::Over(8 * 32);
    const __m256i over128 = _mm256_broadcastsi128_si256(Register(overBlock));
    __m256i part0 = _mm256_xor_si256(NextWide<Order>(rest), _mm256_zextsi128_si256(state));
    __m256i part1 = NextWide<Order>(rest, 32);
    __m256i part2 = NextWide<Order>(rest, 64);
    __m256i part3 = NextWide<Order>(rest, 96);
    for (rest = rest.subspan(128); rest.size() >= 128; rest = rest.subspan(128)) {
        part0 = _mm256_xor_si256(Advanced(part0, over128), NextWide<Order>(rest));
        part1 = _mm256_xor_si256(Advanced(part1, over128), NextWide<Order>(rest, 32));
        part2 = _mm256_xor_si256(Advanced(part2, over128), NextWide<Order>(rest, 64));
        part3 = _mm256_xor_si256(Advanced(part3, over128), NextWide<Order>(rest, 96));
    }
    const __m256i over32 = _mm256_broadcastsi128_si256(Register(overPart));
    part1 = _mm256_xor_si256(Advanced(part0, over32), part1);
    part2 = _mm256_xor_si256(Advanced(part1, over32), part2);
    part3 = _mm256_xor_si256(Advanced(part2, over32), part3);
    return _mm_xor_si128(Advanced(_mm256_castsi256_si128(part3), Over16Bytes<Order>()),
                         _mm256_extracti128_si256(part3, 1));
}

// Goes on by the last bytes of a message, fewer than 16, before which at least 16 others stand. The first of
// the 16 bytes in `all` become a part of their own, and the message's last ones move up behind the rest.
template <typename Order>
WITH_CLMUL __m128i WithLastBytes(__m128i all, Bytes last) noexcept {
    // From here on a window of 16 shifts a register's bytes down or up; 0x80 brings in a zero.
    static constexpr unsigned char shifts[48] = {
        0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80,  //
        0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,   11,   12,   13,   14,   15,    //
        0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};
    const __m128i bytes = Order::Ordered(all);
    const __m128i control = Load(shifts + last.size());
    const __m128i first = _mm_shuffle_epi8(bytes, control);
    const __m128i others = _mm_shuffle_epi8(bytes, Load(shifts + 16 + last.size()));
    const __m128i end = _mm_blendv_epi8(Load(last.data() + last.size() - 16), others, control);
    return _mm_xor_si128(Advanced(Order::Ordered(first), Over16Bytes<Order>()), Order::Ordered(end));
}

template <typename Order>
WITH_CLMUL typename Order::State Fold(typename Order::State state, Bytes rest) noexcept {
    __m128i all = Order::AtFirstBits(state);
    if (rest.size() >= 256 && CanFoldWide()) {
        all = FoldWideBlocks<Order>(all, rest);
    } else if (rest.size() >= 64) {
        all = FoldBlocks<Order>(all, rest);
    } else {
        all = _mm_xor_si128(all, Next<Order>(rest));
        rest = rest.subspan(16);
    }
    for (; rest.size() >= 16; rest = rest.subspan(16)) {
        all = _mm_xor_si128(Advanced(all, Over16Bytes<Order>()), Next<Order>(rest));
    }
    if (!rest.empty()) all = WithLastBytes<Order>(all, rest);
    return Order::Reduced(all);
}

}  // namespace

namespace kestrolumen::detail {

const bool canFold = KnownCpuSupport().pclmul;

std::uint32_t FoldCrc32(std::uint32_t state, const unsigned char* data, std::size_t length) noexcept {
    return Fold<LowestBitFirst>(state, {data, length});
}

std::uint64_t FoldCrc64(std::uint64_t state, const unsigned char* data, std::size_t length) noexcept {
    return Fold<HighestBitFirst>(state, {data, length});
}

}  // namespace kestrolumen::detail

#else

namespace kestrolumen::detail {

const bool canFold = false;

std::uint32_t FoldCrc32(std::uint32_t state, const unsigned char*, std::size_t) noexcept {
    return state;
}

std::uint64_t FoldCrc64(std::uint64_t state, const unsigned char*, std::size_t) noexcept {
    return state;
}

}  // namespace kestrolumen::detail

#endif
