// The lengths that a CStringA or CStringW can have.
#pragma once

#include <cstdint>
#include <limits>
#include <stdexcept>

namespace kestrolumen::detail {

// `length` as those classes count. Raises std::length_error with the complaint for more than 2^31 - 2 units.
[[nodiscard]] inline int CStringLength(std::uint64_t length, const char* complaint) {
    if (length >= static_cast<std::uint64_t>(std::numeric_limits<int>::max())) {
        throw std::length_error(complaint);
    }
    return static_cast<int>(length);
}

}  // namespace kestrolumen::detail
