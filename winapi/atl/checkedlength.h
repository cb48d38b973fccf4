// How long the strings may be.
#pragma once

#include <cstdint>
#include <limits>
#include <stdexcept>

namespace atlstr {

constexpr int longestText = std::numeric_limits<int>::max() - 1;  // units

inline int CheckedLength(std::int64_t length) {
    if (length > longestText) throw std::length_error("CStringT: the text is longer than 2^31 - 2 units");
    return static_cast<int>(length);
}

}  // namespace atlstr
