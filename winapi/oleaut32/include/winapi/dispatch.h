// IDispatch, the interface of late-bound calls, and what travels through it.
#pragma once

#include "winapi/variant.h"

using DISPID = LONG;

struct ITypeInfo;

inline constexpr GUID GUID_NULL{};
inline constexpr IID IID_NULL{};
inline constexpr IID IID_IDispatch{0x00020400, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

#define DISPATCH_METHOD 0x1
#define DISPATCH_PROPERTYGET 0x2
#define DISPATCH_PROPERTYPUT 0x4
#define DISPATCH_PROPERTYPUTREF 0x8

#define DISPID_UNKNOWN (-1)
#define DISPID_VALUE 0
#define DISPID_PROPERTYPUT (-3)

// The arguments of a call, the last one first; the first `cNamedArgs` of them go by the names given.
struct DISPPARAMS {
    VARIANTARG* rgvarg;
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
};

// Why a call failed with DISP_E_EXCEPTION, in `wCode` or else in `scode`. The caller frees the texts, and has
// them filled in late by `pfnDeferredFillIn` where that is set.
struct EXCEPINFO {
    WORD wCode;
    WORD wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    DWORD dwHelpContext;
    PVOID pvReserved;
    HRESULT(STDMETHODCALLTYPE* pfnDeferredFillIn)(EXCEPINFO*);
    SCODE scode;
};

struct IDispatch : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                                                    DISPID* dispids) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID dispid, REFIID reserved, LCID locale, WORD flags,
                                             DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                             UINT* argument) = 0;

  protected:
    ~IDispatch() = default;
};
