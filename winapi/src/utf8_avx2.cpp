#include "utf8_avx2.h"

#if defined(__x86_64__) || defined(__i386__)

#include <immintrin.h>

#include <array>
#include <bit>
#include <cstdint>

#include "utf8_block.h"
#include "utf8_count.h"

// Set for each function by itself and not for the file: what the file takes from headers stays usable on
// every machine.
#define WITH_AVX2 [[gnu::target("avx2,bmi,bmi2,popcnt")]]

namespace winapi::utf8::avx2 {
namespace {

using Shuffle = std::array<std::uint8_t, 16>;
constexpr std::uint8_t nothing = 0x80;

WITH_AVX2 inline __m128i Load128(const void* from) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
WITH_AVX2 inline __m256i Load256(const void* from) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}
WITH_AVX2 inline void Store128(void* to, __m128i value) noexcept {
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}
WITH_AVX2 inline void Store256(void* to, __m256i value) noexcept {
    _mm256_storeu_si256(static_cast<__m256i*>(to), value);
}

WITH_AVX2 inline std::uint64_t Bits(__m256i low, __m256i high) noexcept {
    const auto lowBits = static_cast<std::uint32_t>(_mm256_movemask_epi8(low));
    const auto highBits = static_cast<std::uint32_t>(_mm256_movemask_epi8(high));
    return lowBits | static_cast<std::uint64_t>(highBits) << 32;
}

WITH_AVX2 inline __m256i AtLeast(__m256i bytes, int least) noexcept {
    return _mm256_cmpeq_epi8(_mm256_max_epu8(bytes, _mm256_set1_epi8(static_cast<char>(least))), bytes);
}

WITH_AVX2 inline __m256i Equal(__m256i bytes, int value) noexcept {
    return _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(static_cast<char>(value)));
}

WITH_AVX2 inline __m256i Guarded(__m256i bytes) noexcept {
    const __m256i even = _mm256_and_si256(bytes, _mm256_set1_epi8(static_cast<char>(0xFE)));
    return _mm256_or_si256(_mm256_or_si256(Equal(bytes, 0xE0), Equal(bytes, 0xED)), Equal(even, 0xC0));
}

WITH_AVX2 inline Block Classify(__m256i low, __m256i high) noexcept {
    const __m256i least = _mm256_set1_epi8(static_cast<char>(0xC0));
    Block block;
    block.continuations = Bits(_mm256_cmpgt_epi8(least, low), _mm256_cmpgt_epi8(least, high));
    block.leads = Bits(low, high) & ~block.continuations;
    block.leads3 = Bits(AtLeast(low, 0xE0), AtLeast(high, 0xE0));
    block.leads4 = Bits(AtLeast(low, 0xF0), AtLeast(high, 0xF0));
    block.guarded = Bits(Guarded(low), Guarded(high)) | block.leads4;
    return block;
}

// For each set of lanes to drop: the shuffle that moves the others of eight 16-bit lanes to the front.
constexpr std::array<Shuffle, 256> MakeDrops16() {
    std::array<Shuffle, 256> table{};
    for (unsigned drops = 0; drops < 256; ++drops) {
        Shuffle& shuffle = table[drops];
        shuffle.fill(nothing);
        std::size_t to = 0;
        for (unsigned lane = 0; lane < 8; ++lane) {
            if ((drops >> lane & 1) != 0) continue;
            shuffle[to++] = static_cast<std::uint8_t>(2 * lane);
            shuffle[to++] = static_cast<std::uint8_t>(2 * lane + 1);
        }
    }
    return table;
}
alignas(64) constexpr std::array<Shuffle, 256> drops16 = MakeDrops16();

WITH_AVX2 inline char16_t* StoreKept(char16_t* to, __m128i units, unsigned drops) noexcept {
    Store128(to, _mm_shuffle_epi8(units, Load128(drops16[drops].data())));
    return to + (8 - std::popcount(drops));
}

// Sixteen units, each as if its byte began a character of one, two or three bytes. Reads 18 bytes.
WITH_AVX2 inline __m256i Units(const char* text) noexcept {
    const __m256i first = _mm256_cvtepu8_epi16(Load128(text));
    const __m256i second = _mm256_cvtepu8_epi16(Load128(text + 1));
    const __m256i third = _mm256_cvtepu8_epi16(Load128(text + 2));

    const __m256i secondAndThird =
        _mm256_add_epi16(_mm256_slli_epi16(second, 6), _mm256_sub_epi16(third, _mm256_set1_epi16(0x2080)));
    const __m256i three = _mm256_add_epi16(_mm256_slli_epi16(first, 12), secondAndThird);
    const __m256i two =
        _mm256_add_epi16(_mm256_slli_epi16(first, 6), _mm256_sub_epi16(second, _mm256_set1_epi16(0x3080)));
    const __m256i isTwo = _mm256_cmpgt_epi16(first, _mm256_set1_epi16(0xBF));
    const __m256i isThree = _mm256_cmpgt_epi16(first, _mm256_set1_epi16(0xDF));
    return _mm256_blendv_epi8(_mm256_blendv_epi8(first, two, isTwo), three, isThree);
}

WITH_AVX2 inline void WidenAscii(__m256i bytes, char16_t* to) noexcept {
    Store256(to, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(bytes)));
    Store256(to + 16, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(bytes, 1)));
}

}  // namespace

WITH_AVX2 Progress CountUtf16(std::string_view text) noexcept {
    std::size_t at = 0;
    std::size_t units = 0;
    while (text.size() - at >= blockSize) {
        const char* const from = text.data() + at;
        const __m256i low = Load256(from);
        const __m256i high = Load256(from + 32);
        if (_mm256_movemask_epi8(_mm256_or_si256(low, high)) == 0) {
            at += blockSize;
            units += blockSize;
            continue;
        }
        const Block block = Classify(low, high);
        const unsigned whole = WholeCharacters(block);
        const std::uint64_t within = FirstBits(whole);
        if (!IsWellFormed(block, from, whole)) break;
        at += whole;
        units += CountUnits(block, within);
    }
    return {at, units};
}

WITH_AVX2 Progress ToUtf16(std::string_view text, std::span<char16_t> destination) noexcept {
    constexpr std::size_t overread = 2;
    std::size_t at = 0;
    char16_t* to = destination.data();
    const char16_t* const end = to + destination.size();
    while (text.size() - at >= blockSize + overread && static_cast<std::size_t>(end - to) >= blockSize) {
        const char* const from = text.data() + at;
        const __m256i low = Load256(from);
        const __m256i high = Load256(from + 32);
        if (_mm256_movemask_epi8(_mm256_or_si256(low, high)) == 0) {
            WidenAscii(low, to);
            WidenAscii(high, to + 32);
            at += blockSize;
            to += blockSize;
            continue;
        }
        const Block block = Classify(low, high);
        const unsigned whole = WholeCharacters(block);
        const std::uint64_t within = FirstBits(whole);
        if ((block.leads4 & within) != 0 || !IsWellFormed(block, from, whole)) break;
        const std::uint64_t drops = block.continuations | ~within;
        for (unsigned lane = 0; lane < blockSize; lane += 16) {
            const __m256i units = Units(from + lane);
            to = StoreKept(to, _mm256_castsi256_si128(units), static_cast<std::uint8_t>(drops >> lane));
            to = StoreKept(to, _mm256_extracti128_si256(units, 1),
                           static_cast<std::uint8_t>(drops >> (lane + 8)));
        }
        at += whole;
    }
    return {at, static_cast<std::size_t>(to - destination.data())};
}

WITH_AVX2 Progress CountUtf8(std::u16string_view text) noexcept {
    return CountUtf8Vectors<32>(text);
}

namespace {

// For each set of eight 16-bit lanes whose second byte is to be dropped: the shuffle that does it.
constexpr std::array<Shuffle, 256> MakeDrops8() {
    std::array<Shuffle, 256> table{};
    for (unsigned drops = 0; drops < 256; ++drops) {
        Shuffle& shuffle = table[drops];
        shuffle.fill(nothing);
        std::size_t to = 0;
        for (unsigned lane = 0; lane < 8; ++lane) {
            shuffle[to++] = static_cast<std::uint8_t>(2 * lane);
            if ((drops >> lane & 1) == 0) shuffle[to++] = static_cast<std::uint8_t>(2 * lane + 1);
        }
    }
    return table;
}
alignas(64) constexpr std::array<Shuffle, 256> drops8 = MakeDrops8();

// The same for four 32-bit lanes, which hold up to three bytes. Bits 0 to 3 of the index: lanes with a second
// byte, bits 4 to 7: lanes with a third.
constexpr std::array<Shuffle, 256> MakeKeeps32() {
    std::array<Shuffle, 256> table{};
    for (unsigned keeps = 0; keeps < 256; ++keeps) {
        Shuffle& shuffle = table[keeps];
        shuffle.fill(nothing);
        std::size_t to = 0;
        for (unsigned lane = 0; lane < 4; ++lane) {
            shuffle[to++] = static_cast<std::uint8_t>(4 * lane);
            if ((keeps >> lane & 1) != 0) shuffle[to++] = static_cast<std::uint8_t>(4 * lane + 1);
            if ((keeps >> (lane + 4) & 1) != 0) shuffle[to++] = static_cast<std::uint8_t>(4 * lane + 2);
        }
    }
    return table;
}
alignas(64) constexpr std::array<Shuffle, 256> keeps32 = MakeKeeps32();

// Eight units below U+0800; writes 16 bytes.
WITH_AVX2 inline char* StoreUpToTwo(char* to, __m128i units) noexcept {
    const __m128i isOne = _mm_cmpgt_epi16(_mm_set1_epi16(0x80), units);
    // Byte 0 of a lane: 110 and bits 6 to 10; byte 1: 10 and bits 0 to 5.
    const __m128i lead = _mm_srli_epi16(units, 6);
    const __m128i trail = _mm_slli_epi16(_mm_and_si128(units, _mm_set1_epi16(0x3F)), 8);
    const __m128i two = _mm_or_si128(_mm_or_si128(lead, trail), _mm_set1_epi16(static_cast<short>(0x80C0)));
    const auto ones = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(isOne, _mm_setzero_si128())));
    const __m128i bytes = _mm_blendv_epi8(two, units, isOne);
    Store128(to, _mm_shuffle_epi8(bytes, Load128(drops8[ones].data())));
    return to + (16 - std::popcount(ones));
}

WITH_AVX2 inline char* StoreKept(char* to, __m128i bytes, unsigned keeps) noexcept {
    Store128(to, _mm_shuffle_epi8(bytes, Load128(keeps32[keeps].data())));
    return to + (4 + std::popcount(keeps));
}

// Eight units that are no surrogates; writes up to 28 bytes.
WITH_AVX2 inline char* StoreUpToThree(char* to, __m128i units16) noexcept {
    const __m256i units = _mm256_cvtepu16_epi32(units16);
    const __m256i sixBits = _mm256_set1_epi32(0x3F);
    const __m256i isTwo = _mm256_cmpgt_epi32(units, _mm256_set1_epi32(0x7F));
    const __m256i isThree = _mm256_cmpgt_epi32(units, _mm256_set1_epi32(0x7FF));

    const __m256i last = _mm256_and_si256(units, sixBits);
    const __m256i middle = _mm256_and_si256(_mm256_srli_epi32(units, 6), sixBits);
    const __m256i two = _mm256_or_si256(
        _mm256_or_si256(_mm256_srli_epi32(units, 6), _mm256_slli_epi32(last, 8)), _mm256_set1_epi32(0x80C0));
    const __m256i three =
        _mm256_or_si256(_mm256_or_si256(_mm256_srli_epi32(units, 12), _mm256_slli_epi32(middle, 8)),
                        _mm256_or_si256(_mm256_slli_epi32(last, 16), _mm256_set1_epi32(0x8080E0)));
    const __m256i bytes = _mm256_blendv_epi8(_mm256_blendv_epi8(units, two, isTwo), three, isThree);

    const auto twos = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(isTwo)));
    const auto threes = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(isThree)));
    to = StoreKept(to, _mm256_castsi256_si128(bytes), (twos & 0xF) | (threes & 0xF) << 4);
    return StoreKept(to, _mm256_extracti128_si256(bytes, 1), twos >> 4 | (threes & 0xF0));
}

WITH_AVX2 inline bool HasSurrogate(__m256i units) noexcept {
    const __m256i top = _mm256_and_si256(units, _mm256_set1_epi16(static_cast<short>(0xF800)));
    const __m256i surrogate = _mm256_set1_epi16(static_cast<short>(0xD800));
    return _mm256_movemask_epi8(_mm256_cmpeq_epi16(top, surrogate)) != 0;
}

}  // namespace

WITH_AVX2 Progress ToUtf8(std::u16string_view text, std::span<char> destination) noexcept {
    constexpr std::size_t lanes = 32;
    constexpr std::size_t most = lanes * 3 + 16;  // bytes written for so many units, and behind them
    const __m256i beyond1 = _mm256_set1_epi16(static_cast<short>(0xFF80));
    const __m256i beyond2 = _mm256_set1_epi16(static_cast<short>(0xF800));
    std::size_t at = 0;
    char* to = destination.data();
    const char* const end = to + destination.size();
    while (text.size() - at >= lanes && static_cast<std::size_t>(end - to) >= most) {
        const char16_t* const from = text.data() + at;
        const __m256i low = Load256(from);
        const __m256i high = Load256(from + 16);
        const __m256i all = _mm256_or_si256(low, high);
        if (_mm256_testz_si256(all, beyond1) != 0) {
            Store256(to, _mm256_permute4x64_epi64(_mm256_packus_epi16(low, high), 0xD8));
            at += lanes;
            to += lanes;
            continue;
        }
        if (_mm256_testz_si256(all, beyond2) != 0) {
            for (std::size_t lane = 0; lane < lanes; lane += 8) to = StoreUpToTwo(to, Load128(from + lane));
        } else if (!HasSurrogate(low) && !HasSurrogate(high)) {
            for (std::size_t lane = 0; lane < lanes; lane += 8) to = StoreUpToThree(to, Load128(from + lane));
        } else {
            break;
        }
        at += lanes;
    }
    return {at, static_cast<std::size_t>(to - destination.data())};
}

}  // namespace winapi::utf8::avx2

#else

namespace winapi::utf8::avx2 {

Progress CountUtf16(std::string_view) noexcept {
    return {};
}
Progress CountUtf8(std::u16string_view) noexcept {
    return {};
}
Progress ToUtf16(std::string_view, std::span<char16_t>) noexcept {
    return {};
}
Progress ToUtf8(std::u16string_view, std::span<char>) noexcept {
    return {};
}

}  // namespace winapi::utf8::avx2

#endif
