#include "text/detail/bytecoding_ssse3.h"

#include "text/detail/compiler.h"
#include "text/detail/cpusupport.h"

#if KESTROLUMEN_X86

#define WITH_SSSE3 KESTROLUMEN_FOR("ssse3")

namespace {

WITH_SSSE3 inline __m128i Load(const void* from) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

WITH_SSSE3 inline void Store(void* to, __m128i value) noexcept {
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

WITH_SSSE3 inline __m128i All(int byte) noexcept {
    return _mm_set1_epi8(static_cast<char>(byte));
}

WITH_SSSE3 inline bool IsAllOnes(__m128i mask) noexcept {
    return _mm_movemask_epi8(mask) == 0xFFFF;
}

// Unsigned.
WITH_SSSE3 inline __m128i AtMost(__m128i values, int limit) noexcept {
    return _mm_cmpeq_epi8(_mm_min_epu8(values, All(limit)), values);
}

// The values of hexadecimal digits, and 16 or more for what is none. Sums and differences saturate or wrap so
// that the digits, and apart from them the letters, come down to their values, and all else above them.
WITH_SSSE3 inline __m128i HexValues(__m128i characters) noexcept {
    const __m128i fromTop = _mm_add_epi8(characters, All(0xFF - '9'));
    const __m128i number = _mm_sub_epi8(_mm_subs_epu8(fromTop, All(6)), All(0xF0));
    const __m128i upper = _mm_and_si128(characters, All(0xDF));
    const __m128i letter = _mm_adds_epu8(_mm_sub_epi8(upper, All('A')), All(10));
    return _mm_min_epu8(number, letter);
}

// Each 16 bits of the pairs: the first digit times 16 plus the second.
WITH_SSSE3 inline __m128i JoinedPairs(__m128i values) noexcept {
    return _mm_maddubs_epi16(values, _mm_set1_epi16(0x0110));
}

// The alphabet has five runs of characters. The value tells the run, and the run what is to be added.
WITH_SSSE3 inline __m128i SixBitCharacters(__m128i values) noexcept {
    const __m128i offsets =
        _mm_setr_epi8('0', 'a' - 10, 'A' - 36, '_' - 62, '$' - 63, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    // A comparison gives -1 where it holds.
    __m128i run = _mm_subs_epu8(values, All(61));
    run = _mm_sub_epi8(run, _mm_cmpgt_epi8(values, All(9)));
    run = _mm_sub_epi8(run, _mm_cmpgt_epi8(values, All(35)));
    return _mm_add_epi8(values, _mm_shuffle_epi8(offsets, run));
}

// The values of characters by their high half; what they become again tells whether they are of the alphabet.
WITH_SSSE3 inline __m128i SixBitValues(__m128i characters, bool& valid) noexcept {
    const __m128i offsets =
        _mm_setr_epi8(0, 0, 63 - '$', -'0', 36 - 'A', 36 - 'A', 10 - 'a', 10 - 'a', 0, 0, 0, 0, 0, 0, 0, 0);
    const __m128i half = _mm_and_si128(_mm_srli_epi16(characters, 4), All(15));
    const __m128i isUnderscore = _mm_cmpeq_epi8(characters, All('_'));
    __m128i values = _mm_add_epi8(characters, _mm_shuffle_epi8(offsets, half));
    values = _mm_or_si128(_mm_andnot_si128(isUnderscore, values), _mm_and_si128(isUnderscore, All(62)));
    valid =
        IsAllOnes(_mm_and_si128(AtMost(values, 63), _mm_cmpeq_epi8(SixBitCharacters(values), characters)));
    return values;
}

bool HasSsse3() noexcept {
    return kestrolumen::detail::KnownCpuSupport().ssse3;
}

WITH_SSSE3 std::size_t EncodeHexWide(const std::uint8_t* bytes, std::size_t size, char* digits) noexcept {
    const __m128i alphabet =
        _mm_setr_epi8('0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'A', 'B', 'C', 'D', 'E', 'F');
    std::size_t i = 0;
    for (; size - i >= 16; i += 16) {
        const __m128i block = Load(bytes + i);
        const __m128i high = _mm_shuffle_epi8(alphabet, _mm_and_si128(_mm_srli_epi16(block, 4), All(15)));
        const __m128i low = _mm_shuffle_epi8(alphabet, _mm_and_si128(block, All(15)));
        Store(digits + 2 * i, _mm_unpacklo_epi8(high, low));
        Store(digits + 2 * i + 16, _mm_unpackhi_epi8(high, low));
    }
    return i;
}

WITH_SSSE3 std::size_t DecodeHexWide(const char* digits, std::size_t pairs, std::uint8_t* bytes) noexcept {
    std::size_t i = 0;
    for (; pairs - i >= 16; i += 16) {
        const __m128i first = HexValues(Load(digits + 2 * i));
        const __m128i second = HexValues(Load(digits + 2 * i + 16));
        if (!IsAllOnes(AtMost(_mm_max_epu8(first, second), 15))) return i;
        Store(bytes + i, _mm_packus_epi16(JoinedPairs(first), JoinedPairs(second)));
    }
    return i;
}

// Twelve bytes become 16 characters. The bytes are put in place so that each 32 bits hold three of them, and
// two multiplications shift the four groups of six bits, each by its own distance.
WITH_SSSE3 std::size_t EncodeSixBitWide(const std::uint8_t* bytes, std::size_t size, char* text) noexcept {
    const __m128i places = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    std::size_t i = 0;
    for (; size - i >= 16; i += 12, text += 16) {
        const __m128i block = _mm_shuffle_epi8(Load(bytes + i), places);
        const __m128i firstAndThird =
            _mm_mulhi_epu16(_mm_and_si128(block, _mm_set1_epi32(0x0FC0FC00)), _mm_set1_epi32(0x04000040));
        const __m128i secondAndFourth =
            _mm_mullo_epi16(_mm_and_si128(block, _mm_set1_epi32(0x003F03F0)), _mm_set1_epi32(0x01000010));
        Store(text, SixBitCharacters(_mm_or_si128(firstAndThird, secondAndFourth)));
    }
    return i;
}

WITH_SSSE3 std::size_t DecodeSixBitWide(const char* text, std::size_t length, std::uint8_t* bytes) noexcept {
    const __m128i places = _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    std::size_t i = 0;
    // Sixteen bytes are stored and twelve of them count: the text goes on for long enough.
    for (; length - i >= 24; i += 16, bytes += 12) {
        bool valid = true;
        const __m128i values = SixBitValues(Load(text + i), valid);
        if (!valid) return i;
        const __m128i pairs = _mm_maddubs_epi16(values, _mm_set1_epi32(0x01400140));
        const __m128i triples = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
        Store(bytes, _mm_shuffle_epi8(triples, places));
    }
    return i;
}

}  // namespace

namespace kestrolumen::detail {

std::size_t EncodeHexBlocks(const std::uint8_t* bytes, std::size_t size, char* digits) noexcept {
    return HasSsse3() ? EncodeHexWide(bytes, size, digits) : 0;
}

std::size_t DecodeHexBlocks(const char* digits, std::size_t pairs, std::uint8_t* bytes) noexcept {
    return HasSsse3() ? DecodeHexWide(digits, pairs, bytes) : 0;
}

std::size_t EncodeSixBitBlocks(const std::uint8_t* bytes, std::size_t size, char* text) noexcept {
    return HasSsse3() ? EncodeSixBitWide(bytes, size, text) : 0;
}

std::size_t DecodeSixBitBlocks(const char* text, std::size_t length, std::uint8_t* bytes) noexcept {
    return HasSsse3() ? DecodeSixBitWide(text, length, bytes) : 0;
}

}  // namespace kestrolumen::detail

#else

namespace kestrolumen::detail {

std::size_t EncodeHexBlocks(const std::uint8_t*, std::size_t, char*) noexcept {
    return 0;
}

std::size_t DecodeHexBlocks(const char*, std::size_t, std::uint8_t*) noexcept {
    return 0;
}

std::size_t EncodeSixBitBlocks(const std::uint8_t*, std::size_t, char*) noexcept {
    return 0;
}

std::size_t DecodeSixBitBlocks(const char*, std::size_t, std::uint8_t*) noexcept {
    return 0;
}

}  // namespace kestrolumen::detail

#endif
