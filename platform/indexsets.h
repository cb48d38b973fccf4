// Sets of whole numbers from 0 on, stored as bytes in the smaller of two forms.
//
// Both start with a header of 4 bytes, and all numbers have 32 bits, their lowest byte first.
//   List form: the header is the count of values, below 0x80000000. The values follow, signed, in the order
//              in which they were given; the same value may stand there twice.
//   Bit form:  the header is the largest value, its highest bit set. A bit array (platform/bits.h) of
//              (largest + 8) / 8 bytes follows, in which the bits of the set's values are set.
#pragma once

#include <cstdint>
#include <vector>

// The list form, unless the bit form is shorter. Values need no order, and it is kept by the list form alone.
// A negative value has no bit, so that a set with one always gets the list form. Raises std::length_error for
// a list of 0x80000000 values or more.
[[nodiscard]] std::vector<std::uint8_t> PackIndexSet(const std::vector<std::int32_t>& values);

// The values of a list in their order, or those of the bit form ascending. Bits above the largest value, and
// bytes behind the set, aren't looked at. Raises std::length_error for fewer bytes than the header asks for,
// and for a bit form whose largest value is above 0x3FFFFFFE.
[[nodiscard]] std::vector<std::int32_t> UnpackIndexSet(const std::vector<std::uint8_t>& packed);
