// Error objects: what a failed call has to tell beside its HRESULT, kept one a thread.
#pragma once

#include "winapi/bstr.h"
#include "winapi/unknwn.h"

inline constexpr IID IID_IErrorInfo{
    0x1CF2B120, 0x547D, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
inline constexpr IID IID_ICreateErrorInfo{
    0x22F03340, 0x547D, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};
inline constexpr IID IID_ISupportErrorInfo{
    0xDF0B3D60, 0x548F, 0x101B, {0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19}};

// The reading side. The caller frees each BSTR; one that was never set comes as null.
struct IErrorInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetGUID(GUID* guid) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSource(BSTR* source) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDescription(BSTR* description) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* helpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* helpContext) = 0;

  protected:
    ~IErrorInfo() = default;
};

// The writing side. Texts are copied.
struct ICreateErrorInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SetGUID(REFGUID guid) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR source) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR description) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR helpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD helpContext) = 0;

  protected:
    ~ICreateErrorInfo() = default;
};

// An object's word on whether its interface `iid` makes error objects: S_OK or S_FALSE.
struct ISupportErrorInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) = 0;

  protected:
    ~ISupportErrorInfo() = default;
};

// A new error object, which answers to IErrorInfo too. E_OUTOFMEMORY when memory runs out, E_INVALIDARG for
// null.
HRESULT WINAPI CreateErrorInfo(ICreateErrorInfo** info) noexcept;

// Makes `info`, which may be null, the calling thread's error object in place of the one that stands there,
// and adds a reference. `reserved` must be 0, else E_INVALIDARG.
HRESULT WINAPI SetErrorInfo(ULONG reserved, IErrorInfo* info) noexcept;

// Takes the calling thread's error object away from it: S_OK, with the reference now the caller's, or S_FALSE
// and null when there is none. `reserved` must be 0 and `info` not null, else E_INVALIDARG.
HRESULT WINAPI GetErrorInfo(ULONG reserved, IErrorInfo** info) noexcept;
