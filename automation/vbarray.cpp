#include "automation/vbarray.h"

#include "errors/vex.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

namespace {

constexpr const char* raiser = "ReDimVbArray";

// In descriptor order.
std::span<const SAFEARRAYBOUND> Bounds(const SAFEARRAY* array) noexcept {
    if (array == nullptr) return {};
    return {array->rgsabound, array->cDims};
}

bool IsFixed(const SAFEARRAY* array) noexcept {
    return array != nullptr && (array->fFeatures & (FADF_STATIC | FADF_FIXEDSIZE)) != 0;
}

bool SameCountsButTheFirst(const SAFEARRAY* array, std::span<const std::uint32_t> sizes) noexcept {
    const std::span<const SAFEARRAYBOUND> bounds = Bounds(array);
    return std::ranges::equal(bounds.subspan(1), sizes.subspan(1), {}, &SAFEARRAYBOUND::cElements);
}

void RequireRoom(const SAFEARRAY* array, std::span<const std::uint32_t> sizes, std::uint32_t elementSize) {
    if (sizes.empty()) return;
    if (array->cDims != sizes.size()) throw VexArraySizeError(raiser, VexCode::FixedArrayDimensions);
    if (array->rgsabound[0].cElements < sizes[0]) throw VexArraySizeError(raiser, VexCode::FixedArraySize);
    if (array->cbElements != elementSize) throw VexArraySizeError(raiser, VexCode::FixedArrayElementSize);
    if (!SameCountsButTheFirst(array, sizes)) throw VexArraySizeError(raiser, VexCode::FixedArraySize);
}

void RequireMemory(bool had) {
    if (!had) throw VexOutOfMemory(raiser, VexCode::ArrayAllocation);
}

// Not every system's own calls refuse a block whose size 32 bits can't hold.
bool FitsABlock(std::span<const std::uint32_t> sizes, std::uint32_t elementSize) noexcept {
    if (std::ranges::count(sizes, 0U) != 0) return true;
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    std::uint64_t bytes = elementSize;
    for (const std::uint32_t size : sizes) bytes = std::min(bytes * size, most + 1);
    return bytes <= most;
}

struct DestroyDescriptor {
    void operator()(SAFEARRAY* array) const noexcept { SafeArrayDestroyDescriptor(array); }
};

SAFEARRAY* NewVbArray(std::span<const std::uint32_t> sizes, std::uint32_t elementSize, std::uint16_t features,
                      std::int32_t lowerBound) {
    SAFEARRAY* made = nullptr;
    RequireMemory(SUCCEEDED(SafeArrayAllocDescriptor(static_cast<UINT>(sizes.size()), &made)));
    std::unique_ptr<SAFEARRAY, DestroyDescriptor> array(made);
    std::ranges::transform(sizes, made->rgsabound, [lowerBound](std::uint32_t size) {
        return SAFEARRAYBOUND{size, lowerBound};
    });
    array->cbElements = elementSize;
    array->fFeatures |= features;
    RequireMemory(SUCCEEDED(SafeArrayAllocData(made)));
    return array.release();
}

}  // namespace

void ReDimVbArray(SAFEARRAY*& array, std::span<const std::uint32_t> sizes, std::uint32_t elementSize,
                  std::uint16_t features, std::int32_t lowerBound) {
    if (IsFixed(array)) return RequireRoom(array, sizes, elementSize);
    if (sizes.empty()) return DestroyVbArray(&array);
    if (Bounds(array).size() == sizes.size() && array->cbElements == elementSize &&
        SameCountsButTheFirst(array, sizes)) {
        SAFEARRAYBOUND bound{sizes[0], lowerBound};
        return RequireMemory(FitsABlock(sizes, elementSize) && SUCCEEDED(SafeArrayRedim(array, &bound)));
    }
    DestroyVbArray(&array);
    RequireMemory(FitsABlock(sizes, elementSize));
    array = NewVbArray(sizes, elementSize, features, lowerBound);
}

void ReDimVbArray(SAFEARRAY*& array, std::uint32_t dimensions, const std::uint32_t* sizes,
                  std::uint32_t elementSize, std::uint16_t features, std::int32_t lowerBound) {
    ReDimVbArray(array, std::span(sizes, dimensions), elementSize, features, lowerBound);
}

std::uint32_t kestrolumen::detail::ArraySize(std::size_t count) {
    RequireMemory(std::in_range<std::uint32_t>(count));
    return static_cast<std::uint32_t>(count);
}

void DestroyVbArray(SAFEARRAY** array) {
    if (array == nullptr || *array == nullptr || IsFixed(*array)) return;
    SafeArrayDestroyData(*array);
    SafeArrayDestroyDescriptor(*array);
    *array = nullptr;
}

std::vector<std::uint32_t> VbArrayDimensions(const SAFEARRAY* array) {
    const std::span<const SAFEARRAYBOUND> bounds = Bounds(array);
    std::vector<std::uint32_t> counts(bounds.size());
    std::ranges::transform(bounds, counts.rbegin(), &SAFEARRAYBOUND::cElements);
    return counts;
}

std::size_t VbArrayElementCount(const SAFEARRAY* array) noexcept {
    const std::span<const SAFEARRAYBOUND> bounds = Bounds(array);
    std::size_t count = bounds.empty() ? 0 : 1;
    for (const SAFEARRAYBOUND& bound : bounds) count *= bound.cElements;
    return count;
}

std::uint32_t VbArrayLength(const SAFEARRAY* array) noexcept {
    const std::span<const SAFEARRAYBOUND> bounds = Bounds(array);
    return bounds.size() == 1 ? bounds[0].cElements : 0;
}

bool IsSquareVbArray(const SAFEARRAY* array, std::uint32_t& size) noexcept {
    const std::span<const SAFEARRAYBOUND> bounds = Bounds(array);
    if (bounds.size() != 2) return false;
    size = bounds[1].cElements;
    return size > 0 && bounds[0].cElements == size;
}

bool IsNullVbArray(const SAFEARRAY* array) noexcept {
    return array == nullptr;
}

VbArrayLock::VbArrayLock(SAFEARRAY* locked) noexcept : array(locked), data(nullptr) {
    if (array == nullptr) return;
    SafeArrayLock(array);
    data = array->pvData;
}

VbArrayLock::~VbArrayLock() {
    if (array != nullptr) SafeArrayUnlock(array);
}
