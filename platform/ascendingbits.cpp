#include "platform/detail/ascendingbits.h"

#include "platform/bits.h"
#include "text/detail/compiler.h"
#include "text/detail/cpusupport.h"

#include <cstddef>
#include <cstring>

namespace {

void SetOneByOne(std::uint8_t* bytes, std::span<const std::int32_t> values) noexcept {
    for (const std::int32_t value : values) SetBit(bytes, value);
}

}  // namespace

#if KESTROLUMEN_WIDE_REGISTERS

namespace {

constexpr std::size_t lanes = 8;

// 64 bits of the array, gathered in registers. Each lane has a part of the bits; those that belong together
// are put together when the word is stored.
class Word {
  public:
    KESTROLUMEN_FOR("avx2")
    explicit Word(std::uint32_t first) noexcept
        : first_(first), firsts_(_mm256_set1_epi32(static_cast<int>(first))) {}

    // A shift by 32 or more, and so by less than 0, gives 0: what doesn't belong into the word adds nothing.
    KESTROLUMEN_INLINE_FOR("avx2") void Add(__m256i values) noexcept {
        const __m256i highestBit = _mm256_set1_epi32(static_cast<int>(0x80000000));
        const __m256i places = _mm256_sub_epi32(values, firsts_);
        const __m256i placesInLow = _mm256_sub_epi32(places, _mm256_set1_epi32(32));
        high_ = _mm256_or_si256(high_, _mm256_srlv_epi32(highestBit, places));
        low_ = _mm256_or_si256(low_, _mm256_srlv_epi32(highestBit, placesInLow));
    }

    [[nodiscard]] bool Has(std::int32_t value) const noexcept {
        return static_cast<std::uint32_t>(value) - first_ < 64;
    }

    // Whether no value can lie between the two.
    [[nodiscard]] bool Follows(const Word& other) const noexcept { return first_ - other.first_ == 64; }

    KESTROLUMEN_INLINE_FOR("avx2") void Store(std::uint8_t* bytes) const noexcept {
        const __m256i pairs =
            _mm256_or_si256(_mm256_unpacklo_epi32(low_, high_), _mm256_unpackhi_epi32(low_, high_));
        const __m128i two = _mm_or_si128(_mm256_castsi256_si128(pairs), _mm256_extracti128_si256(pairs, 1));
        const __m128i one = _mm_or_si128(two, _mm_unpackhi_epi64(two, two));
        const __m128i highestFirst = _mm_setr_epi8(7, 6, 5, 4, 3, 2, 1, 0, -1, -1, -1, -1, -1, -1, -1, -1);
        std::uint64_t word = 0;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(&word), _mm_shuffle_epi8(one, highestFirst));
        std::uint64_t stored = 0;
        std::memcpy(&stored, bytes + first_ / 8, sizeof stored);
        stored |= word;
        std::memcpy(bytes + first_ / 8, &stored, sizeof stored);
    }

  private:
    std::uint32_t first_;
    __m256i firsts_;
    __m256i high_ = _mm256_setzero_si256();
    __m256i low_ = _mm256_setzero_si256();
};

KESTROLUMEN_FOR("avx2") void SetByWords(std::uint8_t* bytes, std::span<const std::int32_t> values) noexcept {
    Word word(0);
    for (; values.size() >= lanes; values = values.subspan(lanes)) {
        const __m256i next = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(values.data()));
        word.Add(next);
        const std::int32_t last = values[lanes - 1];
        if (word.Has(last)) continue;
        word.Store(bytes);
        const Word after(static_cast<std::uint32_t>(last) / 64 * 64);
        if (!after.Follows(word)) SetOneByOne(bytes, values.first(lanes));
        word = after;
        word.Add(next);
    }
    word.Store(bytes);
    SetOneByOne(bytes, values);
}

}  // namespace

void kestrolumen::detail::SetAscendingBits(std::uint8_t* bytes,
                                           std::span<const std::int32_t> values) noexcept {
    KnownCpuSupport().avx2 ? SetByWords(bytes, values) : SetOneByOne(bytes, values);
}

#else

void kestrolumen::detail::SetAscendingBits(std::uint8_t* bytes,
                                           std::span<const std::int32_t> values) noexcept {
    SetOneByOne(bytes, values);
}

#endif
