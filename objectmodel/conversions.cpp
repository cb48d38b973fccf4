// What becomes of a VARIANT that Excel answers with.
#include "objectmodel/detail/forms.h"

OwnedVariant OwnedVariant::CopyOf(const VARIANT& original) {
    OwnedVariant result;
    if (const HRESULT hresult = VariantCopy(result.receive(), const_cast<VARIANT*>(&original));
        FAILED(hresult))
        IssueError(hresult);
    return result;
}

OwnedVariant kestrolumen::detail::Changed(const VARIANT& value, VARTYPE type) {
    VARIANT source = value;
    OwnedVariant result;
    const HRESULT hresult = VariantChangeType(result.receive(), &source, 0, type);
    if (FAILED(hresult)) IssueError(hresult);
    return result;
}

bool kestrolumen::detail::BoolOf(const OwnedVariant& value) {
    if (value->vt == VT_BOOL) return value->boolVal != VARIANT_FALSE;
    return Changed(value.borrow(), VT_BOOL)->boolVal == VARIANT_TRUE;
}

LONG kestrolumen::detail::LongOf(const OwnedVariant& value) {
    return value->vt == VT_I4 ? value->lVal : Changed(value.borrow(), VT_I4)->lVal;
}

CStringW kestrolumen::detail::TextOf(const OwnedVariant& value) {
    return TextOf(value->vt == VT_BSTR ? value->bstrVal : Changed(value.borrow(), VT_BSTR)->bstrVal);
}

kestrolumen::ComPtr<IDispatch> kestrolumen::detail::InterfaceFromVariant(const OwnedVariant& value,
                                                                         REFIID iid) {
    if (value->vt == VT_DISPATCH) return QueryFor(value->pdispVal, iid);
    if (value->vt == VT_UNKNOWN) return QueryFor(value->punkVal, iid);

    VARIANT source = value.borrow();
    for (const VARTYPE type : {VARTYPE{VT_DISPATCH}, VARTYPE{VT_UNKNOWN}}) {
        OwnedVariant object;
        const HRESULT hresult = VariantChangeType(object.receive(), &source, 0, type);
        if (SUCCEEDED(hresult)) {
            if (ComPtr<IDispatch> found = InterfaceFromVariant(object, iid)) return found;
        } else if (hresult != E_NOINTERFACE && hresult != DISP_E_TYPEMISMATCH) {
            IssueError(hresult);
        }
    }
    return nullptr;
}
