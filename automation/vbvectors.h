// Vectors of plain values to Visual Basic arrays of one dimension and back, in one block move.
//
// A writer makes a new array, which the caller destroys with DestroyVbArray; no values make an array of no
// elements. It raises VexOutOfMemory with VexCode::ArrayAllocation in the name of ReDimVbArray.
//
// A reader gives an empty vector for an array that is null, that has other than one dimension, or whose
// elements have another size. It looks at neither the elements' type nor the lower bound.
#pragma once

#include "automation/vbarray.h"

#include <type_traits>

template <typename Value>
concept FourByteNumber = std::is_arithmetic_v<Value> && sizeof(Value) == 4;

namespace kestrolumen::detail {
[[nodiscard]] SAFEARRAY* VbArrayFromBytes(const void* values, std::size_t count, std::uint32_t elementSize,
                                          std::int32_t lowerBound);
}

[[nodiscard]] SAFEARRAY* VbArrayFromVectorDouble(const std::vector<double>& values, std::int32_t lowerBound);
[[nodiscard]] SAFEARRAY* VbArrayFromVectorInt16(const std::vector<std::int16_t>& values,
                                                std::int32_t lowerBound);
template <FourByteNumber Value>
[[nodiscard]] SAFEARRAY* VbArrayFromVectorInt32(const std::vector<Value>& values, std::int32_t lowerBound) {
    return kestrolumen::detail::VbArrayFromBytes(values.data(), values.size(), sizeof(Value), lowerBound);
}

// Into the slot `array`. What is there is destroyed, unless it is fixed; then, if there are any bytes, they
// go into a new array, or into the first elements of the fixed one, which must have room (see ReDimVbArray).
// A null slot is left alone.
void VbArrayFromVectorByte(SAFEARRAY** array, const std::vector<std::uint8_t>& bytes,
                           std::int32_t lowerBound);

[[nodiscard]] std::vector<double> VectorDoubleFromVbArray(SAFEARRAY* array);
[[nodiscard]] std::vector<std::int64_t> VectorInt64FromVbArray(SAFEARRAY* array);
[[nodiscard]] std::vector<std::int32_t> VectorInt32FromVbArray(SAFEARRAY* array);
[[nodiscard]] std::vector<std::uint32_t> VectorUInt32FromVbArray(SAFEARRAY* array);
[[nodiscard]] std::vector<std::int16_t> VectorInt16FromVbArray(SAFEARRAY* array);

// The VARIANTs are copied as bytes: they share what the array's VARIANTs own, must not outlive them and must
// not be cleared.
[[nodiscard]] std::vector<VARIANT> VectorVariantFromVbArray(SAFEARRAY* array);
