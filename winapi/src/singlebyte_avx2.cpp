#include "singlebyte_avx2.h"

#if defined(__x86_64__) || defined(__i386__)

#include <immintrin.h>

#include <array>

#define WITH_AVX2 [[gnu::target("avx2")]]

namespace winapi::avx2 {
namespace {

// Sixteen bytes in both halves: a table for shuffles.
WITH_AVX2 __m256i Table(const std::array<std::uint8_t, 16>& bytes) noexcept {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes.data())));
}

// Tables of the low or the high bytes of the sixteen units.
WITH_AVX2 __m256i BytesOf(const char16_t* units, unsigned shift) noexcept {
    std::array<std::uint8_t, 16> bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(units[i] >> shift);
    return Table(bytes);
}

}  // namespace

WITH_AVX2 std::size_t WidenLatin1Page(const CodePage::SingleBytes& units, std::string_view text,
                                      char16_t* to) noexcept {
    constexpr std::size_t lanes = 32;
    const __m256i low80 = BytesOf(&units[0x80], 0);
    const __m256i high80 = BytesOf(&units[0x80], 8);
    const __m256i low90 = BytesOf(&units[0x90], 0);
    const __m256i high90 = BytesOf(&units[0x90], 8);
    const __m256i lastOf80 = _mm256_set1_epi8(static_cast<char>(0x8F));
    const __m256i from0xA0 = _mm256_set1_epi8(static_cast<char>(0xA0));
    const __m256i lowNibble = _mm256_set1_epi8(0x0F);

    std::size_t at = 0;
    for (; text.size() - at >= lanes; at += lanes) {
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text.data() + at));
        const __m256i isMapped = _mm256_cmpgt_epi8(from0xA0, bytes);  // signed, so ASCII is above
        const __m256i is90 = _mm256_cmpgt_epi8(bytes, lastOf80);
        const __m256i index = _mm256_and_si256(bytes, lowNibble);
        const __m256i mappedLow =
            _mm256_blendv_epi8(_mm256_shuffle_epi8(low80, index), _mm256_shuffle_epi8(low90, index), is90);
        const __m256i mappedHigh =
            _mm256_blendv_epi8(_mm256_shuffle_epi8(high80, index), _mm256_shuffle_epi8(high90, index), is90);
        const __m256i low = _mm256_blendv_epi8(bytes, mappedLow, isMapped);
        const __m256i high = _mm256_and_si256(mappedHigh, isMapped);
        const __m256i first = _mm256_unpacklo_epi8(low, high);  // bytes 0 to 7 and 16 to 23
        const __m256i second = _mm256_unpackhi_epi8(low, high);
        auto* const place = reinterpret_cast<__m256i*>(to + at);
        _mm256_storeu_si256(place, _mm256_permute2x128_si256(first, second, 0x20));
        _mm256_storeu_si256(place + 1, _mm256_permute2x128_si256(first, second, 0x31));
    }
    return at;
}

}  // namespace winapi::avx2

#else

namespace winapi::avx2 {

std::size_t WidenLatin1Page(const CodePage::SingleBytes&, std::string_view, char16_t*) noexcept {
    return 0;
}

}  // namespace winapi::avx2

#endif
