#include "utf8_baseline.h"

#include "ascii_run.h"
#include "utf8_block.h"

namespace winapi::utf8::baseline {

#if defined(__SSE2__)

namespace {

struct Bytes64 {
    __m128i part[4];
};

std::uint64_t Bits(const Bytes64& bytes) noexcept {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        bits |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(bytes.part[i])))
                << (16 * i);
    }
    return bits;
}

template <class Test>
std::uint64_t BitsWhere(const Bytes64& bytes, Test test) noexcept {
    return Bits({{test(bytes.part[0]), test(bytes.part[1]), test(bytes.part[2]), test(bytes.part[3])}});
}

__m128i Constant(int byte) noexcept {
    return _mm_set1_epi8(static_cast<char>(byte));
}

Block Classify(const Bytes64& bytes, std::uint64_t nonAscii) noexcept {
    const auto isContinuation = [](__m128i v) { return _mm_cmpgt_epi8(Constant(0xC0), v); };
    const auto isLead3 = [](__m128i v) { return _mm_cmpeq_epi8(_mm_max_epu8(v, Constant(0xE0)), v); };
    const auto isLead4 = [](__m128i v) { return _mm_cmpeq_epi8(_mm_max_epu8(v, Constant(0xF0)), v); };
    const auto isGuarded = [](__m128i v) {
        return _mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi8(v, Constant(0xE0)), _mm_cmpeq_epi8(v, Constant(0xED))),
            _mm_cmpeq_epi8(_mm_and_si128(v, Constant(0xFE)), Constant(0xC0)));
    };
    Block block;
    block.continuations = BitsWhere(bytes, isContinuation);
    block.leads = nonAscii & ~block.continuations;
    block.leads3 = BitsWhere(bytes, isLead3);
    block.leads4 = BitsWhere(bytes, isLead4);
    block.guarded = BitsWhere(bytes, isGuarded) | block.leads4;
    return block;
}

}  // namespace

Progress CountUtf16(std::string_view text) noexcept {
    std::size_t at = 0;
    std::size_t units = 0;
    while (text.size() - at >= blockSize) {
        const char* const from = text.data() + at;
        const Bytes64 bytes{
            {detail::Load(from), detail::Load(from + 16), detail::Load(from + 32), detail::Load(from + 48)}};
        const std::uint64_t nonAscii = Bits(bytes);
        if (nonAscii == 0) {
            at += blockSize;
            units += blockSize;
            continue;
        }
        const Block block = Classify(bytes, nonAscii);
        const unsigned whole = WholeCharacters(block);
        const std::uint64_t within = FirstBits(whole);
        if (!IsWellFormed(block, from, whole)) break;
        at += whole;
        units += CountUnits(block, within);
    }
    return {at, units};
}

#else

Progress CountUtf16(std::string_view) noexcept {
    return {};
}

#endif

}  // namespace winapi::utf8::baseline
