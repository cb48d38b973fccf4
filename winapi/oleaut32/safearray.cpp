#include "safearraylayout.h"

#include "safearrayelements.h"
#include "valuebytes.h"
#include "winapi/dispatch.h"
#include "winapi/errorcodes.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <span>
#include <utility>

using winapi::Bounds;
using winapi::ClearElements;
using winapi::CopyElement;
using winapi::HiddenIid;
using winapi::HiddenType;
using winapi::interfaces;
using winapi::prefixBytes;
using winapi::ReleaseElements;

namespace {

constexpr UINT maxDimensions = 0xFFFF;
constexpr USHORT foreignBlock = FADF_AUTO | FADF_STATIC | FADF_EMBEDDED;
constexpr std::size_t DescriptorBytes(UINT dimensions) noexcept {
    return offsetof(SAFEARRAY, rgsabound) + dimensions * sizeof(SAFEARRAYBOUND);
}

bool OwnsBlock(SAFEARRAY* array) noexcept {
    return (array->fFeatures & foreignBlock) == 0;
}

// Bytes of the data block; nothing if 32 bits can't count them.
std::optional<std::size_t> BlockBytes(ULONG elementBytes, std::span<const SAFEARRAYBOUND> bounds) noexcept {
    constexpr std::uint64_t most = std::numeric_limits<ULONG>::max();
    std::uint64_t bytes = elementBytes;
    for (const SAFEARRAYBOUND& bound : bounds) {
        if (bound.cElements == 0) return 0;
        bytes = std::min(bytes * bound.cElements, most + 1);
    }
    if (bytes > most) return std::nullopt;
    return static_cast<std::size_t>(bytes);
}

std::size_t BlockBytes(SAFEARRAY* array) noexcept {
    return BlockBytes(array->cbElements, Bounds(array)).value_or(0);
}

void* AllocateZeroed(std::size_t bytes) noexcept {
    return std::calloc(std::max(bytes, std::size_t{1}), 1);
}

USHORT FeaturesOf(VARTYPE type) noexcept {
    switch (type) {
        case VT_BSTR:
            return FADF_HAVEVARTYPE | FADF_BSTR;
        case VT_VARIANT:
            return FADF_HAVEVARTYPE | FADF_VARIANT;
        case VT_UNKNOWN:
            return FADF_HAVEIID | FADF_UNKNOWN;
        case VT_DISPATCH:
            return FADF_HAVEIID | FADF_DISPATCH;
        default:
            return FADF_HAVEVARTYPE;
    }
}

bool IsLocked(SAFEARRAY* array) noexcept {
    return std::atomic_ref(array->cLocks).load() != 0;
}

}  // namespace

HRESULT WINAPI SafeArrayAllocDescriptor(UINT dimensions, SAFEARRAY** array) noexcept {
    if (array == nullptr) return E_POINTER;
    if (dimensions == 0 || dimensions > maxDimensions) return E_INVALIDARG;
    auto* const block = static_cast<char*>(AllocateZeroed(prefixBytes + DescriptorBytes(dimensions)));
    if (block == nullptr) return E_OUTOFMEMORY;
    *array = reinterpret_cast<SAFEARRAY*>(block + prefixBytes);
    (*array)->cDims = static_cast<USHORT>(dimensions);
    return S_OK;
}

HRESULT WINAPI SafeArrayAllocData(SAFEARRAY* array) noexcept {
    if (array == nullptr) return E_INVALIDARG;
    const std::optional<std::size_t> bytes = BlockBytes(array->cbElements, Bounds(array));
    void* const block = bytes ? AllocateZeroed(*bytes) : nullptr;
    if (block == nullptr) return E_OUTOFMEMORY;
    array->pvData = block;
    return S_OK;
}

SAFEARRAY* WINAPI SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) noexcept {
    SAFEARRAY* array = nullptr;
    const ULONG bytes = winapi::ValueBytes(type);
    if (bytes == 0 || FAILED(SafeArrayAllocDescriptor(dimensions, &array))) return nullptr;
    array->cbElements = bytes;
    array->fFeatures = FeaturesOf(type);
    if ((array->fFeatures & FADF_HAVEIID) != 0) {
        std::memcpy(HiddenIid(array), type == VT_DISPATCH ? &IID_IDispatch : &IID_IUnknown, sizeof(IID));
    } else {
        const ULONG wide = type;
        std::memcpy(HiddenType(array), &wide, sizeof wide);
    }
    std::reverse_copy(bounds, bounds + dimensions, array->rgsabound);
    if (FAILED(SafeArrayAllocData(array))) {
        SafeArrayDestroyDescriptor(array);
        return nullptr;
    }
    return array;
}

SAFEARRAY* WINAPI SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count) noexcept {
    SAFEARRAYBOUND bound{count, lowerBound};
    return SafeArrayCreate(type, 1, &bound);
}

HRESULT WINAPI SafeArrayDestroy(SAFEARRAY* array) {
    if (array == nullptr) return S_OK;
    const HRESULT destroyed = SafeArrayDestroyData(array);
    return FAILED(destroyed) ? destroyed : SafeArrayDestroyDescriptor(array);
}

HRESULT WINAPI SafeArrayDestroyData(SAFEARRAY* array) {
    if (array == nullptr) return E_INVALIDARG;
    if (IsLocked(array)) return DISP_E_ARRAYISLOCKED;
    if (array->pvData == nullptr) return S_OK;
    if (!OwnsBlock(array)) {
        ClearElements(*array, array->pvData, BlockBytes(array));
        return S_OK;
    }
    ReleaseElements(*array, array->pvData, BlockBytes(array));
    std::free(array->pvData);
    array->pvData = nullptr;
    return S_OK;
}

HRESULT WINAPI SafeArrayDestroyDescriptor(SAFEARRAY* array) noexcept {
    if (array == nullptr) return S_OK;
    if (IsLocked(array)) return DISP_E_ARRAYISLOCKED;
    std::free(HiddenIid(array));
    return S_OK;
}

HRESULT WINAPI SafeArrayRedim(SAFEARRAY* array, SAFEARRAYBOUND* bound) {
    if (array == nullptr || bound == nullptr || array->cDims == 0) return E_INVALIDARG;
    if (IsLocked(array) || (array->fFeatures & FADF_FIXEDSIZE) != 0) return DISP_E_ARRAYISLOCKED;

    // Elements of the rightmost dimension lie one behind the other, so the block grows or shrinks at its end.
    const std::size_t oldBytes = BlockBytes(array);
    const ULONG oldCount = std::exchange(array->rgsabound[0].cElements, bound->cElements);
    const std::optional<std::size_t> newBytes = BlockBytes(array->cbElements, Bounds(array));
    const auto refused = [&](HRESULT why) {
        array->rgsabound[0].cElements = oldCount;
        return why;
    };
    if (!newBytes) return refused(E_OUTOFMEMORY);
    if (*newBytes > oldBytes && (array->fFeatures & foreignBlock) != 0) return refused(DISP_E_ARRAYISLOCKED);

    auto* const oldBlock = static_cast<char*>(array->pvData);
    if (oldBlock == nullptr || *newBytes > oldBytes) {
        void* const block = AllocateZeroed(*newBytes);
        if (block == nullptr) return refused(E_OUTOFMEMORY);
        if (oldBlock != nullptr) {
            std::memcpy(block, oldBlock, oldBytes);
            if (OwnsBlock(array)) std::free(oldBlock);
        }
        array->pvData = block;
    } else {
        ClearElements(*array, oldBlock + *newBytes, oldBytes - *newBytes);
    }
    array->rgsabound[0].lLbound = bound->lLbound;
    return S_OK;
}

HRESULT WINAPI SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy) {
    if (copy == nullptr) return E_INVALIDARG;
    *copy = nullptr;
    if (array == nullptr) return S_OK;
    SAFEARRAY* fresh = nullptr;
    HRESULT made = SafeArrayAllocDescriptor(array->cDims, &fresh);
    if (FAILED(made)) return made;
    std::memcpy(HiddenIid(fresh), HiddenIid(array), prefixBytes);
    std::ranges::copy(Bounds(array), fresh->rgsabound);
    fresh->cbElements = array->cbElements;
    fresh->fFeatures = array->fFeatures & ~(foreignBlock | FADF_FIXEDSIZE);
    made = SafeArrayAllocData(fresh);

    const std::size_t bytes = array->pvData == nullptr ? 0 : BlockBytes(array);
    if (SUCCEEDED(made) && (array->fFeatures & (FADF_BSTR | FADF_VARIANT | interfaces)) == 0) {
        if (bytes > 0) std::memcpy(fresh->pvData, array->pvData, bytes);
    } else {
        for (std::size_t done = 0; SUCCEEDED(made) && done < bytes; done += array->cbElements) {
            void* const target = static_cast<char*>(fresh->pvData) + done;
            made = CopyElement(*array, target, static_cast<const char*>(array->pvData) + done);
            if (FAILED(made)) std::memset(target, 0, array->cbElements);
        }
    }
    if (FAILED(made)) {
        SafeArrayDestroy(fresh);
        return made;
    }
    *copy = fresh;
    return S_OK;
}
