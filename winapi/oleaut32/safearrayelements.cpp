#include "safearrayelements.h"

#include "safearraylayout.h"
#include "winapi/dispatch.h"
#include "winapi/errorcodes.h"

#include <cstring>
#include <span>

namespace winapi {

HRESULT CopyElement(const SAFEARRAY& array, void* target, const void* source) {
    if ((array.fFeatures & FADF_VARIANT) != 0) {
        auto* const variant = static_cast<VARIANT*>(target);
        VariantInit(variant);
        return VariantCopy(variant, static_cast<const VARIANT*>(source));
    }
    std::memcpy(target, source, array.cbElements);
    if ((array.fFeatures & FADF_BSTR) != 0) {
        const BSTR text = *static_cast<const BSTR*>(source);
        if (text == nullptr) return S_OK;
        const BSTR copy = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(text), SysStringByteLen(text));
        if (copy == nullptr) return E_OUTOFMEMORY;
        *static_cast<BSTR*>(target) = copy;
    } else if ((array.fFeatures & interfaces) != 0) {
        IUnknown* const object = *static_cast<IUnknown* const*>(source);
        if (object != nullptr) object->AddRef();
    }
    return S_OK;
}

void ReleaseElements(const SAFEARRAY& array, void* first, std::size_t bytes) {
    if ((array.fFeatures & FADF_VARIANT) != 0) {
        for (VARIANT& variant : std::span(static_cast<VARIANT*>(first), bytes / sizeof(VARIANT))) {
            VariantClear(&variant);
        }
    } else if ((array.fFeatures & FADF_BSTR) != 0) {
        for (const BSTR text : std::span(static_cast<BSTR*>(first), bytes / sizeof(BSTR)))
            SysFreeString(text);
    } else if ((array.fFeatures & interfaces) != 0) {
        for (IUnknown* const object : std::span(static_cast<IUnknown**>(first), bytes / sizeof(void*))) {
            if (object != nullptr) object->Release();
        }
    }
}

void ClearElements(const SAFEARRAY& array, void* first, std::size_t bytes) {
    ReleaseElements(array, first, bytes);
    if (bytes > 0) std::memset(first, 0, bytes);
}

}  // namespace winapi
