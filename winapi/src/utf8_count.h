// The length of UTF-16 text in UTF-8, by vectors of any width that the compiler knows how to make.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "utf8_rules.h"
#include "vectors.h"

namespace winapi::utf8 {

// What the first unit of `text` adds to the length in UTF-8: a lone surrogate becomes the three bytes of
// U+FFFD, and the two units of a pair add 1 and 3.
inline std::size_t Utf8LengthOfFirst(std::u16string_view text) noexcept {
    const char16_t unit = text[0];
    const bool opensPair = IsHighSurrogate(unit) && text.size() > 1 && IsLowSurrogate(text[1]);
    return opensPair ? 1 : unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
}

template <std::size_t vectorSize>
struct LanesOf {
    using Type [[gnu::vector_size(vectorSize)]] = std::uint16_t;
};

// Counts all but at most the last vector of units. Inlined, so that it takes the instructions of its caller.
template <std::size_t vectorSize>
[[gnu::always_inline]] inline Progress CountUtf8Vectors(std::u16string_view text) noexcept {
    using Lanes = typename LanesOf<vectorSize>::Type;
    constexpr std::size_t lanes = vectorSize / 2;
    constexpr std::size_t most = lanes * 8192;  // no lane counts beyond 3 for each of its units

    const char16_t* from = text.data();
    const char16_t* const end = from + text.size();
    std::size_t bytes = 0;
    while (static_cast<std::size_t>(end - from) > lanes) {
        const auto stretch = std::min(static_cast<std::size_t>(end - from) - 1, most) / lanes * lanes;
        Lanes less{};  // three bytes a unit, less these
        for (const char16_t* const stop = from + stretch; from != stop; from += lanes) {
            Lanes units;
            Lanes next;
            std::memcpy(&units, from, sizeof units);
            std::memcpy(&next, from + 1, sizeof next);
            const Lanes one = static_cast<Lanes>((units & 0xFF80) == 0);  // all bits set where true: -1
            const Lanes upToTwo = static_cast<Lanes>((units & 0xF800) == 0);
            const Lanes opensPair = static_cast<Lanes>((units & 0xFC00) == 0xD800) &
                                    static_cast<Lanes>((next & 0xFC00) == 0xDC00);
            less -= one + upToTwo + opensPair + opensPair;
        }
        bytes += 3 * stretch;
        for (std::size_t lane = 0; lane < lanes; ++lane) bytes -= less[lane];
    }
    return {static_cast<std::size_t>(from - text.data()), bytes};
}

}  // namespace winapi::utf8
