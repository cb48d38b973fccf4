// Texts to Visual Basic arrays of strings and back. `ansiBytes` says what is behind each BSTR, as for the
// single strings of automation/bstr.h.
//
// Writers raise VexOutOfMemory: with VexCode::BstrAllocation in the name of AssignBstrW for a string, with
// VexCode::ArrayAllocation in the name of ReDimVbArray for the array. A raise leaves no array locked. An
// array that was to be returned is destroyed; a slot keeps its array, with the elements filled so far.
#pragma once

#include "automation/vbarray.h"
#include "text/text.h"

#include <utility>

// A new array of strings, which the caller destroys with DestroyVbArray.
[[nodiscard]] SAFEARRAY* VbArrayFromVectorCStringW(const std::vector<CStringW>& strings, bool ansiBytes,
                                                   std::int32_t lowerBound);

// Into the slot `array`, whose array is kept where it fits (see ReDimVbArray): the strings that the new ones
// replace are freed, those behind them in a fixed array stay. An array of anything but strings is replaced,
// or, if it is fixed, refused by VexArraySizeError with VexCode::FixedArrayElementSize. No strings: the first
// form destroys the array in the slot, the second makes an array of no elements.
void AssignVbArrayFromVectorCStringW(const std::vector<CStringW>& strings, bool ansiBytes,
                                     std::int32_t lowerBound, SAFEARRAY*& array);
void AssignVbArrayFromVectorWString(bool ansiBytes, SAFEARRAY*& array, const std::vector<StdWString>& strings,
                                    std::int32_t lowerBound);

// Into the slot `array`, of so many rows by 2 columns: a(r, c) is the first or the second of a pair, each
// index counted from `lowerBound`. The array doesn't own the strings: it holds their pointers as plain
// values, its destruction doesn't free them, and what the slot's array held is overwritten. An array in the
// slot that owns its strings gets copies. A fixed array that lacks one of the indices is refused by
// VexArraySizeError with VexCode::FixedArraySize, in the name of ReDimVbArray, before anything is stored.
// After a raise midway the slot's array holds the strings made so far, which are the caller's to free.
void VbArrayFromPairs(bool ansiBytes, SAFEARRAY*& array,
                      const std::vector<std::pair<StdWString, StdWString>>& pairs, std::int32_t lowerBound);

// A VT_ARRAY | VT_BSTR with lower bound 1, its array null for no strings. The second form clears `variant`
// first; it raises VexOutOfMemory with VexCode::ArrayAllocation, in the name of ReDimVbArray, where that is
// refused because the VARIANT's array is locked.
[[nodiscard]] VARIANT VariantFromVectorCStringW(const std::vector<CStringW>& strings);
void AssignVariantFromVectorCStringW(const std::vector<CStringW>& strings, VARIANT& variant);

// The text of one element of an array of one dimension that holds BSTRs, or Variants that hold BSTRs. `index`
// counts from 0 whatever the lower bound. A null BSTR is empty text. Raises, in the name of
// CStringWFromBstrArray, VexOutOfMemory with VexCode::ArrayElementFetch for an element that isn't there,
// which includes a null array and one of another kind; and VexExpectedString with
// VexCode::ArrayElementNotString for a Variant that isn't a VT_BSTR.
[[nodiscard]] CStringW CStringWFromBstrArray(SAFEARRAY* array, bool ansiBytes, std::int32_t index);
[[nodiscard]] CStringA CStringAFromBstrArray(SAFEARRAY* array, bool ansiBytes, std::int32_t index);

// All elements. Empty for an array that is null or has other than one dimension; raises as above.
[[nodiscard]] std::vector<CStringW> VectorCStringWFromBstrArray(SAFEARRAY* array, bool ansiBytes);
[[nodiscard]] std::vector<StdWString> VectorWStringFromBstrArray(SAFEARRAY* array, bool ansiBytes);

// From a VT_ARRAY | VT_BSTR. Empty for a null VARIANT and a null array. Raises VexParameterError with
// VexCode::Sentence, an empty argument and the operation's own name for another type, and for an array of
// other than one dimension.
[[nodiscard]] std::vector<CStringW> VectorCStringWFromVariantContainingArrayOfBSTR(const VARIANT* variant);

// The same from a VT_ARRAY | VT_VARIANT, all of whose elements are VT_BSTR or VT_EMPTY, the empty text;
// anything else is refused as above. The array may also have two dimensions of which one has one element: a
// single row or column of a worksheet.
[[nodiscard]] std::vector<CStringW> VectorCStringWFromVariantContainingArrayOfVariantContainingBSTR(
    const VARIANT* variant);
