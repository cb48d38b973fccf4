#include "winapi/variant.h"

#include "winapi/errorcodes.h"
#include "winapi/safearray.h"

namespace {

// The types that a VARIANT can have: a base type, with VT_ARRAY or VT_BYREF or both, which need a base type
// that holds something.
bool IsVariantType(VARTYPE type) noexcept {
    constexpr VARTYPE modifiers = VT_ARRAY | VT_BYREF;
    const int base = type & ~modifiers;
    if (base <= VT_NULL) return (type & modifiers) == 0;
    return (base <= VT_UINT && base != 15) || base == VT_RECORD;
}

// Microsoft's VariantClear takes a CLSID too, VariantCopy doesn't.
bool IsClearableType(VARTYPE type) noexcept {
    return IsVariantType(type) || (type & ~(VT_ARRAY | VT_BYREF)) == VT_CLSID;
}

BSTR CopyOf(BSTR text) noexcept {
    return SysAllocStringByteLen(reinterpret_cast<LPCSTR>(text), SysStringByteLen(text));
}

}  // namespace

void WINAPI VariantInit(VARIANTARG* variant) noexcept {
    *variant = VARIANT{};
}

HRESULT WINAPI VariantClear(VARIANTARG* variant) {
    if (!IsClearableType(variant->vt)) return DISP_E_BADVARTYPE;
    if ((variant->vt & VT_BYREF) == 0) {
        if ((variant->vt & VT_ARRAY) != 0) {
            const HRESULT destroyed = SafeArrayDestroy(variant->parray);
            if (FAILED(destroyed)) return destroyed;
        } else if (variant->vt == VT_BSTR) {
            SysFreeString(variant->bstrVal);
        } else if ((variant->vt == VT_UNKNOWN || variant->vt == VT_DISPATCH) && variant->punkVal != nullptr) {
            variant->punkVal->Release();
        }
    }
    variant->vt = VT_EMPTY;
    return S_OK;
}

HRESULT WINAPI VariantCopy(VARIANTARG* target, const VARIANTARG* source) {
    if (target == source) return S_OK;
    if (!IsVariantType(source->vt)) return DISP_E_BADVARTYPE;
    const HRESULT cleared = VariantClear(target);
    if (FAILED(cleared)) return cleared;

    VARIANT copy = *source;
    if ((source->vt & VT_BYREF) == 0) {
        if ((source->vt & VT_ARRAY) != 0) {
            const HRESULT copied = SafeArrayCopy(source->parray, &copy.parray);
            if (FAILED(copied)) return copied;
        } else if (source->vt == VT_BSTR) {
            copy.bstrVal = CopyOf(source->bstrVal);
            if (copy.bstrVal == nullptr) return E_OUTOFMEMORY;
        } else if ((source->vt == VT_UNKNOWN || source->vt == VT_DISPATCH) && source->punkVal != nullptr) {
            source->punkVal->AddRef();
        }
    }
    *target = copy;
    return S_OK;
}
