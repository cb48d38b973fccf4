// VARIANT, the tagged value of automation, in its published layout: 16 bytes where pointers have 4, 24 where
// they have 8.
#pragma once

#include "winapi/bstr.h"
#include "winapi/types.h"
#include "winapi/unknwn.h"

struct IDispatch;
struct IRecordInfo;
struct SAFEARRAY;
struct VARIANT;

using VARTYPE = USHORT;
using VARIANT_BOOL = SHORT;
using DATE = double;  // days since 30 December 1899

#define VARIANT_TRUE (static_cast<VARIANT_BOOL>(-1))
#define VARIANT_FALSE (static_cast<VARIANT_BOOL>(0))

enum VARENUM : VARTYPE {
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_DECIMAL = 14,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_LPSTR = 30,
    VT_LPWSTR = 31,
    VT_RECORD = 36,
    VT_CLSID = 72,
    VT_VECTOR = 0x1000,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_TYPEMASK = 0x0FFF,
};

// __extension__: nameless structures are Microsoft's and GCC's extension to C++.

union CY {  // ten-thousandths
    __extension__ struct {
        ULONG Lo;
        LONG Hi;
    };
    alignas(8) LONGLONG int64;
};

struct DECIMAL {
    USHORT wReserved;
    BYTE scale;
    BYTE sign;
    ULONG Hi32;
    alignas(8) ULONGLONG Lo64;
};

struct VARIANT {
    __extension__ union {
        __extension__ struct {
            VARTYPE vt;
            WORD wReserved1;
            WORD wReserved2;
            WORD wReserved3;
            __extension__ union {
                alignas(8) LONGLONG llVal;
                LONG lVal;
                BYTE bVal;
                SHORT iVal;
                FLOAT fltVal;
                DOUBLE dblVal;
                VARIANT_BOOL boolVal;
                SCODE scode;
                CY cyVal;
                DATE date;
                BSTR bstrVal;
                IUnknown* punkVal;
                IDispatch* pdispVal;
                SAFEARRAY* parray;
                BYTE* pbVal;
                SHORT* piVal;
                LONG* plVal;
                LONGLONG* pllVal;
                FLOAT* pfltVal;
                DOUBLE* pdblVal;
                VARIANT_BOOL* pboolVal;
                SCODE* pscode;
                CY* pcyVal;
                DATE* pdate;
                BSTR* pbstrVal;
                IUnknown** ppunkVal;
                IDispatch** ppdispVal;
                SAFEARRAY** pparray;
                VARIANT* pvarVal;
                PVOID byref;
                CHAR cVal;
                USHORT uiVal;
                ULONG ulVal;
                ULONGLONG ullVal;
                INT intVal;
                UINT uintVal;
                DECIMAL* pdecVal;
                CHAR* pcVal;
                USHORT* puiVal;
                ULONG* pulVal;
                ULONGLONG* pullVal;
                INT* pintVal;
                UINT* puintVal;
                __extension__ struct {
                    PVOID pvRecord;
                    IRecordInfo* pRecInfo;
                };
            };
        };
        DECIMAL decVal;  // its wReserved is the vt
    };
};
using VARIANTARG = VARIANT;

static_assert(sizeof(CY) == 8 && sizeof(DECIMAL) == 16);
static_assert(sizeof(VARIANT) == 8 + 2 * sizeof(void*));

#define V_VT(variant) ((variant)->vt)
#define V_I4(variant) ((variant)->lVal)
#define V_R8(variant) ((variant)->dblVal)
#define V_BSTR(variant) ((variant)->bstrVal)
#define V_DISPATCH(variant) ((variant)->pdispVal)
#define V_ERROR(variant) ((variant)->scode)
#define V_BOOL(variant) ((variant)->boolVal)
#define V_ARRAY(variant) ((variant)->parray)

// Makes a VT_EMPTY of what was nothing before.
void WINAPI VariantInit(VARIANTARG* variant) noexcept;

// Gives up what the VARIANT owns (a BSTR, an array, a reference to an object; not what a VT_BYREF points to)
// and makes it VT_EMPTY. It stays as it is, with DISP_E_BADVARTYPE for a type that no VARIANT can have, and
// with DISP_E_ARRAYISLOCKED for an array that is locked. Records (VT_RECORD) are not known here: the pointers
// are dropped.
HRESULT WINAPI VariantClear(VARIANTARG* variant);

// Clears `target` and makes it a copy: of a BSTR with its own text (a null BSTR becomes one of length 0), of
// an array with all that its elements own, of an object with a reference more, of a VT_BYREF as it stands.
// DISP_E_BADVARTYPE as above, of either side, with nothing done; E_OUTOFMEMORY with `target` VT_EMPTY. A copy
// onto itself does nothing.
HRESULT WINAPI VariantCopy(VARIANTARG* target, const VARIANTARG* source);
