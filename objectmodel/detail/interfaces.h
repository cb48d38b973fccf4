// The interfaces that the object model asks for by name, with the numbers that Excel's and Office's type
// libraries publish.
#pragma once

#include <windows.h>
#include <oleauto.h>

inline constexpr IID IidApplication = {0x000208D5, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};  // _Application
inline constexpr IID IidWorksheet = {0x000208D8, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};    // _Worksheet
inline constexpr IID IidWorkbook = {0x000208DA, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};     // _Workbook
inline constexpr IID IidRange = {0x00020846, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};        // Range
inline constexpr IID IidWindow = {0x00020893, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};       // Window
inline constexpr IID IidName = {0x000208B9, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};         // Name

inline constexpr IID IidDocumentProperties = {
    0x2DF8D04D, 0x5BFA, 0x101B, {0xBD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0xDE, 0x52}};
inline constexpr IID IidDocumentProperty = {
    0x2DF8D04E, 0x5BFA, 0x101B, {0xBD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0xDE, 0x52}};

// Office's DocumentProperty and DocumentProperties, in the order of their virtual tables. The object model
// calls Value and Item alone, with locale 0; the others keep the places.
struct IDocumentProperty : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_Parent(IDispatch** parent) = 0;
    virtual HRESULT STDMETHODCALLTYPE Delete() = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Name(LCID locale, BSTR* name) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Name(LCID locale, BSTR name) = 0;
    // The caller owns what it gets, and keeps what it puts.
    virtual HRESULT STDMETHODCALLTYPE get_Value(LCID locale, VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Value(LCID locale, VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Type(LCID locale, INT* type) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Type(LCID locale, INT type) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_LinkToContent(VARIANT_BOOL* linked) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_LinkToContent(VARIANT_BOOL linked) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_LinkSource(BSTR* source) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_LinkSource(BSTR source) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Application(IDispatch** application) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Creator(LONG* creator) = 0;

  protected:
    ~IDocumentProperty() = default;
};

struct IDocumentProperties : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_Parent(IDispatch** parent) = 0;
    // By name (VT_BSTR) or by position from 1; the caller keeps the index and owns the reference it gets.
    virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT index, LCID locale, IDocumentProperty** property) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Count(LONG* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE Add(BSTR name, VARIANT_BOOL linkToContent, VARIANT type, VARIANT value,
                                          VARIANT linkSource, LCID locale, IDocumentProperty** property) = 0;
    virtual HRESULT STDMETHODCALLTYPE get__NewEnum(IUnknown** enumerator) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Application(IDispatch** application) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Creator(LONG* creator) = 0;

  protected:
    ~IDocumentProperties() = default;
};
