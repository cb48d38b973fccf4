// Sixteen units of text at a time, by SSE2 where the compiler's target has it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace winapi {

constexpr std::size_t asciiRunSize = 16;

// Where sixteen units were converted as if code and unit were the same: one bit for each of those where they
// aren't, or may not be.
using Exceptions = std::uint32_t;

#if defined(__SSE2__)

namespace detail {

inline std::size_t TrailingZeros(int mask) noexcept {
    return static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(mask) | 0x10000u));
}

inline __m128i Load(const void* from) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

inline void Store(void* to, __m128i value) noexcept {
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

// All bits of each 16-bit lane that holds ASCII.
inline __m128i AsciiLanes(__m128i units) noexcept {
    const __m128i beyond = _mm_set1_epi16(static_cast<short>(0xFF80));
    return _mm_cmpeq_epi16(_mm_and_si128(units, beyond), _mm_setzero_si128());
}

}  // namespace detail

// The functions named Run give the count of leading ASCII units. They write sixteen units whatever comes;
// what stands behind the run is of no use.
inline std::size_t AsciiRun(const char* from) noexcept {
    return detail::TrailingZeros(_mm_movemask_epi8(detail::Load(from)));
}

inline std::size_t WidenAsciiRun(const char* from, char16_t* to) noexcept {
    const __m128i bytes = detail::Load(from);
    detail::Store(to, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    detail::Store(to + 8, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
    return detail::TrailingZeros(_mm_movemask_epi8(bytes));
}

inline std::size_t NarrowAsciiRun(const char16_t* from, char* to) noexcept {
    const __m128i low = detail::Load(from);
    const __m128i high = detail::Load(from + 8);
    detail::Store(to, _mm_packus_epi16(low, high));
    const __m128i ascii = _mm_packs_epi16(detail::AsciiLanes(low), detail::AsciiLanes(high));
    return detail::TrailingZeros(~_mm_movemask_epi8(ascii));
}

// Exceptions: 0x80 to 0x9F.
inline Exceptions WidenLatin1(const char* from, char16_t* to) noexcept {
    const __m128i bytes = detail::Load(from);
    detail::Store(to, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    detail::Store(to + 8, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
    const __m128i from0xA0 = _mm_set1_epi8(static_cast<char>(0xA0));
    return static_cast<Exceptions>(_mm_movemask_epi8(_mm_cmpgt_epi8(from0xA0, bytes)));
}

// Exceptions: all units but ASCII and, with `withLatin1`, U+00A0 to U+00FF.
template <bool withLatin1>
Exceptions Narrow(const char16_t* from, char* to) noexcept {
    const auto isSame = [](__m128i units) {
        const __m128i ascii = detail::AsciiLanes(units);
        if constexpr (!withLatin1) return ascii;
        // In signed lanes: U+00A0 to U+00FF, moved up so that they end at the greatest number.
        const __m128i moved = _mm_add_epi16(units, _mm_set1_epi16(0x7F00));
        return _mm_or_si128(ascii, _mm_cmpgt_epi16(moved, _mm_set1_epi16(0x7F9F)));
    };
    const __m128i low = detail::Load(from);
    const __m128i high = detail::Load(from + 8);
    detail::Store(to, _mm_packus_epi16(low, high));
    const __m128i same = _mm_packs_epi16(isSame(low), isSame(high));
    return static_cast<Exceptions>(~_mm_movemask_epi8(same)) & 0xFFFF;
}

#else

inline Exceptions WidenLatin1(const char* from, char16_t* to) noexcept {
    Exceptions exceptions = 0;
    for (std::size_t i = 0; i < asciiRunSize; ++i) {
        to[i] = static_cast<unsigned char>(from[i]);
        if (to[i] >= 0x80 && to[i] < 0xA0) exceptions |= Exceptions{1} << i;
    }
    return exceptions;
}

template <bool withLatin1>
Exceptions Narrow(const char16_t* from, char* to) noexcept {
    Exceptions exceptions = 0;
    for (std::size_t i = 0; i < asciiRunSize; ++i) {
        to[i] = static_cast<char>(from[i]);
        const bool isSame = from[i] < 0x80 || (withLatin1 && from[i] >= 0xA0 && from[i] <= 0xFF);
        if (!isSame) exceptions |= Exceptions{1} << i;
    }
    return exceptions;
}

inline std::size_t AsciiRun(const char* from) noexcept {
    std::size_t run = 0;
    while (run < asciiRunSize && static_cast<unsigned char>(from[run]) < 0x80) ++run;
    return run;
}

inline std::size_t WidenAsciiRun(const char* from, char16_t* to) noexcept {
    for (std::size_t i = 0; i < asciiRunSize; ++i) to[i] = static_cast<unsigned char>(from[i]);
    return AsciiRun(from);
}

inline std::size_t NarrowAsciiRun(const char16_t* from, char* to) noexcept {
    std::size_t run = 0;
    for (; run < asciiRunSize && from[run] < 0x80; ++run) to[run] = static_cast<char>(from[run]);
    return run;
}

#endif

}  // namespace winapi
