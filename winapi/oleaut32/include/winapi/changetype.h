// The conversion of one VARIANT type into another.
#pragma once

#include "winapi/dispatch.h"

#define VARIANT_NOVALUEPROP 0x01  // don't ask an object for its default property
#define VARIANT_ALPHABOOL 0x02    // a VT_BOOL becomes "True" or "False", not "-1" or "0"

// Makes `*target` a `*source` of the type `type`; both may be the same VARIANT. What `target` held is
// cleared. It stays as it is when the conversion fails.
//
// - Numbers (whole and floating, VT_CY, VT_DECIMAL, VT_DATE as its days, VT_BOOL as -1 or 0) become each
//   other. Fractions are rounded half to even. DISP_E_OVERFLOW for what the type can't hold; whole numbers
//   of the same width take over each other's bits.
// - VT_EMPTY becomes 0, false or an empty text. VT_NULL and VT_ERROR become nothing else. Numbers and texts
//   may be made VT_EMPTY or VT_NULL.
// - A number becomes text as in "-12.5" or "1E+15": 15 significant digits of a VT_R8, 7 of a VT_R4, all of
//   the others.
// - A text becomes a number if it is one: blanks around, a sign, digits with a decimal point, an exponent.
//   A VT_BOOL also reads "True", "False", "#TRUE#" and "#FALSE#", in any case of letters.
// - A VT_DATE becomes "3/15/2023 6:00:00 PM", without the time at midnight, without the date on day 0. Back
//   goes that form and "2023-03-15 18:00[:00]", each in its parts too. Both are the conventions of English
//   (United States), whatever the locale: no locale is known here, nor group separators, currency and other
//   dates.
// - An object becomes VT_DISPATCH or VT_UNKNOWN by QueryInterface, whose failure goes out; anything else by
//   its default property, unless VARIANT_NOVALUEPROP. A null one becomes nothing but a null one of the other
//   type: DISP_E_BADVARTYPE.
// - A VT_BYREF source counts as what it points to. Arrays become nothing but themselves.
//
// Anything else: DISP_E_TYPEMISMATCH. A type that no VARIANT can have: DISP_E_BADVARTYPE. E_OUTOFMEMORY.
HRESULT WINAPI VariantChangeType(VARIANTARG* target, const VARIANTARG* source, USHORT flags, VARTYPE type);
