#pragma once

#include <cstdint>
#include <span>

namespace kestrolumen::detail {

// Sets the bits of values that ascend from 0 on; the same value may come twice. The array is one of
// platform/bits.h with all bytes up to the end of a multiple of 8. It pays where one bit in ten or more is
// set.
void SetAscendingBits(std::uint8_t* bytes, std::span<const std::int32_t> values) noexcept;

}  // namespace kestrolumen::detail
