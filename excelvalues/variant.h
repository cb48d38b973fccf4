// Automation's VARIANT as a value.
#pragma once

#include "excelvalues/value.h"

#include <oleauto.h>

#include <concepts>

// The value of `v`, by its type:
//   VT_EMPTY, VT_NULL                   xltypeNil
//   VT_I1, VT_I2, VT_UI1, VT_UI2        xltypeInt, extended by the type's sign
//   VT_I4, VT_UI4, VT_INT, VT_UINT      xltypeInt of the 32 bits as they stand
//   VT_R4, VT_R8, VT_DATE               XXloperFromNumber
//   VT_BOOL                             xltypeBool, 1 for anything but 0
//   VT_ERROR                            xltypeErr, the low 16 bits of the code with no mapping
//   VT_BSTR, VT_LPSTR, VT_LPWSTR        XXloperFromString of the text up to its first zero unit; a null
//                                       pointer is an empty text
//   any other, VT_BYREF, VT_ARRAY       xltypeErr 2015, Visual Basic's number for #VALUE!
// `v` stays the caller's. Raises std::bad_alloc.
[[nodiscard]] XXloperPtr XXloperFromVariant(const VARIANT& v);

// Nobody can clear a temporary afterwards, such as what an operation of the object model gives:
//     XXloperFromVariant(OwnedVariant(range->GetValue2()))
template <std::same_as<VARIANT> Temporary>
[[deprecated("a temporary VARIANT is never cleared: make it an OwnedVariant")]] [[nodiscard]] XXloperPtr
XXloperFromVariant(Temporary&& v) {
    return XXloperFromVariant(static_cast<const VARIANT&>(v));
}
