// Values of OLE Automation that free themselves, and an object that counts its references.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <string>
#include <type_traits>

using Wide = std::basic_string<WCHAR>;

inline Wide Units(BSTR text) {
    return {text, SysStringLen(text)};
}

struct Variant : VARIANT {
    Variant() : VARIANT{} {}
    explicit Variant(int type) : VARIANT{} { vt = static_cast<VARTYPE>(type); }
    template <typename Member>
    Variant(int type, Member VARIANT::*member, std::type_identity_t<Member> value) : Variant(type) {
        this->*member = value;
        vt = static_cast<VARTYPE>(type);  // which a DECIMAL has overwritten
    }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { VariantClear(this); }
};

inline Variant Text(const WCHAR* text) {
    return {VT_BSTR, &VARIANT::bstrVal, SysAllocString(text)};
}

// An array that is destroyed at the end; the bounds are written leftmost dimension first.
struct Array {
    SAFEARRAY* array = nullptr;

    explicit Array(SAFEARRAY* made) : array(made) {}
    Array(VARTYPE type, std::initializer_list<SAFEARRAYBOUND> bounds)
        : array(SafeArrayCreate(type, static_cast<UINT>(bounds.size()),
                                const_cast<SAFEARRAYBOUND*>(bounds.begin()))) {}
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
    ~Array() { SafeArrayDestroy(array); }

    operator SAFEARRAY*() const { return array; }  // NOLINT(google-explicit-constructor)
    SAFEARRAY* operator->() const { return array; }
    template <typename Element>
    Element* Data() const {
        return static_cast<Element*>(array->pvData);
    }
};

// An object with or without IDispatch, whose default property is 42.
class Counted final : public IDispatch {
  public:
    explicit Counted(bool automatic = true) : automatic_(automatic) {}
    virtual ~Counted() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool known = iid == IID_IUnknown || (automatic_ && iid == IID_IDispatch);
        *object = known ? static_cast<IDispatch*>(this) : nullptr;
        if (known) ++references;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispid, REFIID, LCID, WORD flags, DISPPARAMS*, VARIANT* result,
                                     EXCEPINFO*, UINT*) override {
        if (dispid != DISPID_VALUE || !(flags & DISPATCH_PROPERTYGET)) return DISP_E_MEMBERNOTFOUND;
        result->vt = VT_I4;
        result->lVal = 42;
        return S_OK;
    }

    ULONG references = 1;

  private:
    bool automatic_;
};
