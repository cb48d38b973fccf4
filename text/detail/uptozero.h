// Where text ends that counts its units and that others read as zero-terminated.
#pragma once

#include "text/detail/unitset.h"

namespace kestrolumen::detail {

// The text in front of its first zero unit. Zeros are rare: whether the text has one is asked in whole blocks, the last
// of which overlaps the one before it, and only then where it is.
template <typename Unit>
[[nodiscard]] std::basic_string_view<Unit> UpToZero(std::basic_string_view<Unit> text) noexcept {
    using Block = BlockOfUnits<Unit>;
    if (text.size() >= std::size_t{Block::size}) {
        constexpr Block zeros{};
        const Unit* const last = text.data() + text.size() - Block::size;
        unsigned places = zeros.PlacesIn(last);
        for (const Unit* block = text.data(); block < last; block += Block::size) {
            places |= zeros.PlacesIn(block);
        }
        if (places == 0) return text;
    }
    return text.substr(0, text.find(Unit{0}));
}

}  // namespace kestrolumen::detail
