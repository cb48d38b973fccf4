#include "automation/vbvectors.h"

#include <cstring>

namespace {

// Makes the array in the slot fit, and copies the values to its start.
void AssignBytes(SAFEARRAY*& array, const void* values, std::size_t count, std::uint32_t elementSize,
                 std::int32_t lowerBound) {
    const std::uint32_t size = kestrolumen::detail::ArraySize(count);
    ReDimVbArray(array, {&size, 1}, elementSize, 0, lowerBound);
    const VbArrayLock lock(array);
    if (count > 0 && lock.data != nullptr) std::memcpy(lock.data, values, count * elementSize);
}

template <typename Value>
std::vector<Value> VectorFromVbArray(SAFEARRAY* array) {
    const std::uint32_t count = VbArrayLength(array);
    if (count == 0 || array->cbElements != sizeof(Value)) return {};
    const VbArrayLock lock(array);
    const auto* const first = static_cast<const Value*>(lock.data);
    return first == nullptr ? std::vector<Value>(count) : std::vector<Value>(first, first + count);
}

}  // namespace

SAFEARRAY* kestrolumen::detail::VbArrayFromBytes(const void* values, std::size_t count,
                                                 std::uint32_t elementSize, std::int32_t lowerBound) {
    SAFEARRAY* array = nullptr;
    AssignBytes(array, values, count, elementSize, lowerBound);
    return array;
}

SAFEARRAY* VbArrayFromVectorDouble(const std::vector<double>& values, std::int32_t lowerBound) {
    return kestrolumen::detail::VbArrayFromBytes(values.data(), values.size(), sizeof(double), lowerBound);
}

SAFEARRAY* VbArrayFromVectorInt16(const std::vector<std::int16_t>& values, std::int32_t lowerBound) {
    return kestrolumen::detail::VbArrayFromBytes(values.data(), values.size(), sizeof(std::int16_t),
                                                 lowerBound);
}

void VbArrayFromVectorByte(SAFEARRAY** array, const std::vector<std::uint8_t>& bytes,
                           std::int32_t lowerBound) {
    if (array == nullptr) return;
    DestroyVbArray(array);
    if (!bytes.empty()) AssignBytes(*array, bytes.data(), bytes.size(), 1, lowerBound);
}

std::vector<double> VectorDoubleFromVbArray(SAFEARRAY* array) {
    return VectorFromVbArray<double>(array);
}

std::vector<std::int64_t> VectorInt64FromVbArray(SAFEARRAY* array) {
    return VectorFromVbArray<std::int64_t>(array);
}

std::vector<std::int32_t> VectorInt32FromVbArray(SAFEARRAY* array) {
    return VectorFromVbArray<std::int32_t>(array);
}

std::vector<std::uint32_t> VectorUInt32FromVbArray(SAFEARRAY* array) {
    return VectorFromVbArray<std::uint32_t>(array);
}

std::vector<std::int16_t> VectorInt16FromVbArray(SAFEARRAY* array) {
    return VectorFromVbArray<std::int16_t>(array);
}

std::vector<VARIANT> VectorVariantFromVbArray(SAFEARRAY* array) {
    return VectorFromVbArray<VARIANT>(array);
}
