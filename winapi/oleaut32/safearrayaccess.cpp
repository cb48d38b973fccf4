// What a SAFEARRAY tells of itself, its locks, and its elements one by one.
#include "safearrayelements.h"
#include "safearraylayout.h"
#include "winapi/errorcodes.h"

#include <atomic>
#include <cstring>
#include <span>

using winapi::Bounds;
using winapi::ClearElements;
using winapi::CopyElement;
using winapi::HiddenType;
using winapi::interfaces;

namespace {

constexpr ULONG maxLocks = 0xFFFF;

// Null for an index that is out of bounds, or an array without data.
void* ElementAt(SAFEARRAY* array, const LONG* indices) noexcept {
    std::size_t offset = 0;
    std::size_t stride = array->cbElements;
    const std::span<SAFEARRAYBOUND> bounds = Bounds(array);
    for (std::size_t dimension = 0; dimension < bounds.size(); ++dimension) {
        const SAFEARRAYBOUND& bound = bounds[bounds.size() - 1 - dimension];
        const std::int64_t index = std::int64_t{indices[dimension]} - bound.lLbound;
        if (index < 0 || index >= bound.cElements) return nullptr;
        offset += static_cast<std::size_t>(index) * stride;
        stride *= bound.cElements;
    }
    return array->pvData == nullptr ? nullptr : static_cast<char*>(array->pvData) + offset;
}

}  // namespace

UINT WINAPI SafeArrayGetDim(SAFEARRAY* array) noexcept {
    return array == nullptr ? 0 : array->cDims;
}

HRESULT WINAPI SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) noexcept {
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    const std::span<SAFEARRAYBOUND> bounds = Bounds(array);
    if (dimension < 1 || dimension > bounds.size()) return DISP_E_BADINDEX;
    *bound = bounds[bounds.size() - dimension].lLbound;
    return S_OK;
}

HRESULT WINAPI SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) noexcept {
    if (const HRESULT result = SafeArrayGetLBound(array, dimension, bound); FAILED(result)) return result;
    const ULONG count = Bounds(array)[array->cDims - dimension].cElements;
    *bound = static_cast<LONG>(static_cast<ULONG>(*bound) + count - 1);
    return S_OK;
}

HRESULT WINAPI SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) noexcept {
    if (array == nullptr || type == nullptr) return E_INVALIDARG;
    if ((array->fFeatures & FADF_HAVEVARTYPE) != 0) {
        ULONG hidden = 0;
        std::memcpy(&hidden, HiddenType(array), sizeof hidden);
        *type = static_cast<VARTYPE>(hidden);
    } else if ((array->fFeatures & FADF_DISPATCH) != 0) {
        *type = VT_DISPATCH;
    } else if ((array->fFeatures & FADF_UNKNOWN) != 0) {
        *type = VT_UNKNOWN;
    } else {
        return E_INVALIDARG;
    }
    return S_OK;
}

HRESULT WINAPI SafeArrayLock(SAFEARRAY* array) noexcept {
    if (array == nullptr) return E_INVALIDARG;
    const std::atomic_ref locks(array->cLocks);
    for (ULONG held = locks.load(); held < maxLocks;) {
        if (locks.compare_exchange_weak(held, held + 1)) return S_OK;
    }
    return E_UNEXPECTED;
}

HRESULT WINAPI SafeArrayUnlock(SAFEARRAY* array) noexcept {
    if (array == nullptr) return E_INVALIDARG;
    const std::atomic_ref locks(array->cLocks);
    for (ULONG held = locks.load(); held > 0;) {
        if (locks.compare_exchange_weak(held, held - 1)) return S_OK;
    }
    return E_UNEXPECTED;
}

HRESULT WINAPI SafeArrayAccessData(SAFEARRAY* array, void** data) noexcept {
    if (array == nullptr || data == nullptr) return E_INVALIDARG;
    const HRESULT locked = SafeArrayLock(array);
    if (SUCCEEDED(locked)) *data = array->pvData;
    return locked;
}

HRESULT WINAPI SafeArrayUnaccessData(SAFEARRAY* array) noexcept {
    return SafeArrayUnlock(array);
}

HRESULT WINAPI SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* value) {
    if (array == nullptr || indices == nullptr || value == nullptr) return E_INVALIDARG;
    const void* const element = ElementAt(array, indices);
    return element == nullptr ? DISP_E_BADINDEX : CopyElement(*array, value, element);
}

HRESULT WINAPI SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* value) {
    if (array == nullptr || indices == nullptr) return E_INVALIDARG;
    void* const element = ElementAt(array, indices);
    if (element == nullptr) return DISP_E_BADINDEX;
    const bool itself = (array->fFeatures & (FADF_BSTR | interfaces)) != 0;
    if (!itself && value == nullptr) return E_INVALIDARG;
    if (!itself && (array->fFeatures & FADF_VARIANT) == 0) {
        std::memmove(element, value, array->cbElements);
        return S_OK;
    }

    // The new one is whole before the old one goes, which it may be a part of.
    VARIANT copy;
    HRESULT copied = S_OK;
    if ((array->fFeatures & FADF_BSTR) != 0 && value == nullptr) {
        void* const empty = SysAllocStringLen(nullptr, 0);
        if (empty == nullptr) copied = E_OUTOFMEMORY;
        std::memcpy(&copy, &empty, sizeof empty);
    } else {
        copied = CopyElement(*array, &copy, itself ? &value : value);
    }
    if (FAILED(copied)) return copied;
    ClearElements(*array, element, array->cbElements);
    std::memcpy(element, &copy, array->cbElements);
    return S_OK;
}
