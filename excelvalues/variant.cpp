#include "excelvalues/variant.h"

#include "excelvalues/makers.h"
#include "excelvalues/numbers.h"

XXloperPtr XXloperFromVariant(const VARIANT& v) {
    constexpr std::int32_t visualBasicValueError = 2015;
    switch (v.vt) {
        case VT_EMPTY:
        case VT_NULL:
            return XXloperNil();
        case VT_I1:
            return XXloperFromInt(static_cast<signed char>(v.cVal));
        case VT_I2:
            return XXloperFromInt(v.iVal);
        case VT_UI1:
            return XXloperFromInt(v.bVal);
        case VT_UI2:
            return XXloperFromInt(v.uiVal);
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
            return XXloperFromInt(v.lVal);
        case VT_R4:
            return XXloperFromNumber(v.fltVal);
        case VT_R8:
        case VT_DATE:
            return XXloperFromNumber(v.dblVal);
        case VT_BOOL:
            return XXloperFromBool(v.boolVal != 0 ? 1 : 0);
        case VT_ERROR:
            return XXloperFromError(LOWORD(v.scode));
        case VT_BSTR:
            return XXloperFromString(static_cast<const WCHAR*>(v.bstrVal));
        // A VARIANT proper has no member for these two; they stand where every pointer stands.
        case VT_LPSTR:
            return XXloperFromString(static_cast<const char*>(v.byref));
        case VT_LPWSTR:
            return XXloperFromString(static_cast<const WCHAR*>(v.byref));
        default:
            return XXloperFromError(visualBasicValueError);
    }
}
