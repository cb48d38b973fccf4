#include "excelhost/automation/variant.h"

#include "excelhost/automation/refusal.h"

#include <memory>
#include <new>

namespace excelhost::automation {
namespace {

BSTR NewBstr(TextView text) {
    BSTR copy = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (copy == nullptr) throw std::bad_alloc();
    return copy;
}

BSTR BstrOrNull(const Text& text) {
    return text.empty() ? nullptr : NewBstr(text);
}

// The texts of a deferred record wait behind pvReserved for the client's call, which takes them over.
HRESULT WINAPI FillDeferred(EXCEPINFO* info) {
    const std::unique_ptr<const Refusal> refusal(static_cast<Refusal*>(info->pvReserved));
    info->pvReserved = nullptr;
    info->pfnDeferredFillIn = nullptr;
    try {
        refusal->FillTexts(*info);
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace

Variant::Variant(bool flag) noexcept : Variant() {
    value_.vt = VT_BOOL;
    value_.boolVal = flag ? VARIANT_TRUE : VARIANT_FALSE;
}

Variant::Variant(double number) noexcept : Variant() {
    value_.vt = VT_R8;
    value_.dblVal = number;
}

Variant::Variant(TextView text) : Variant() {
    value_.bstrVal = NewBstr(text);
    value_.vt = VT_BSTR;
}

Variant::Variant(const VARIANT& value) : Variant() {
    const HRESULT result = VariantCopy(&value_, const_cast<VARIANT*>(&value));
    if (FAILED(result)) throw Refusal::Result(result);
}

Variant Variant::Adopt(IDispatch* object) noexcept {
    Variant variant;
    variant.value_.vt = VT_DISPATCH;
    variant.value_.pdispVal = object;
    return variant;
}

Variant Variant::AdoptArray(SAFEARRAY* array) noexcept {
    Variant variant;
    variant.value_.vt = VT_ARRAY | VT_VARIANT;
    variant.value_.parray = array;
    return variant;
}

Variant Variant::Null() noexcept {
    Variant variant;
    variant.value_.vt = VT_NULL;
    return variant;
}

Variant Variant::Error(SCODE code) noexcept {
    Variant variant;
    variant.value_.vt = VT_ERROR;
    variant.value_.scode = code;
    return variant;
}

VARIANT Variant::Detach() noexcept {
    const VARIANT value = value_;
    VariantInit(&value_);
    return value;
}

Variant Variant::As(VARTYPE type) const {
    Variant changed;
    const HRESULT result = VariantChangeType(&changed.value_, const_cast<VARIANT*>(&value_), 0, type);
    if (FAILED(result)) throw Refusal::Result(result);
    return changed;
}

Text Variant::AsText() const {
    return value_.vt == VT_BSTR ? Text(BstrText(value_)) : Text(BstrText(As(VT_BSTR).value_));
}

TextView BstrText(const VARIANT& value) noexcept {
    return value.bstrVal == nullptr ? TextView() : TextView(value.bstrVal, SysStringLen(value.bstrVal));
}

Refusal Refusal::Result(HRESULT result) {
    Refusal refusal;
    refusal.result = result;
    return refusal;
}

Refusal Refusal::Exception(const WCHAR* description, SCODE scode) {
    Refusal refusal;
    refusal.result = DISP_E_EXCEPTION;
    refusal.scode = scode;
    refusal.source = TEXT("Microsoft Excel");
    refusal.description = description;
    return refusal;
}

void Refusal::Fill(EXCEPINFO& info) const {
    info.wCode = code;
    info.scode = scode;
    if (!deferred) return FillTexts(info);
    info.pvReserved = new Refusal(*this);
    info.pfnDeferredFillIn = &FillDeferred;
}

void Refusal::FillTexts(EXCEPINFO& info) const {
    info.dwHelpContext = helpContext;
    info.bstrSource = BstrOrNull(source);
    info.bstrDescription = BstrOrNull(description);
    info.bstrHelpFile = BstrOrNull(helpFile);
}

}  // namespace excelhost::automation
