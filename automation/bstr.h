// Strings across the border of OLE Automation: BSTR and VARIANT, to and from the library's strings.
//
// Two layouts of text can stand behind a BSTR, and nothing in the BSTR tells which; the caller says it by
// `ansiBytes`:
//   false  UTF-16 units, as in all calls of automation; the byte count is twice the count of units
//   true   bytes of ANSI text, as Visual Basic hands over a string that it converted for a narrow call; the
//          byte count is the count of bytes
//
// A null BSTR is the empty text. The ANSI conversions are those of text/conversions.h: characters that the
// code page lacks are replaced, and nothing reports it.
#pragma once

#include "text/text.h"

#include <oleauto.h>

#include <string>

// Replaces the BSTR in `target`, a slot that holds a BSTR or null. The old BSTR is freed first, so that
// `text` must not be a part of it. Raises VexOutOfMemory with VexCode::BstrAllocation and `target` null when
// no BSTR can be had; a null `text` is answered the same way.
void AssignBstrA(BSTR& target, bool ansiBytes, const char* text);
void AssignBstrW(BSTR& target, bool ansiBytes, const WCHAR* text);
void AssignBstrW(BSTR& target, bool ansiBytes, const StdWString& text);

// A new BSTR of UTF-16 units, which the caller frees with SysFreeString. Raises as above, in the name of
// MakeBstr.
[[nodiscard]] BSTR MakeBstr(const char* text);
[[nodiscard]] BSTR MakeBstr(const WCHAR* text);

// A VT_BSTR that the caller clears. Raises like MakeBstr and in its name.
[[nodiscard]] VARIANT VariantFromCStringW(const CStringW& text);

// The text of a BSTR, which stays the caller's. It ends at the first zero unit (for `ansiBytes`, zero byte),
// or where the byte count ends; an odd last byte of wide text is dropped. The narrow results have passed
// through wide text, also where the BSTR holds ANSI bytes.
[[nodiscard]] CStringW CStringWFromBstr(BSTR bstr, bool ansiBytes);
[[nodiscard]] CStringA CStringAFromBstr(BSTR bstr, bool ansiBytes);
[[nodiscard]] std::string StdStringFromBstr(BSTR bstr, bool ansiBytes);
[[nodiscard]] StdWString StdWStringFromBstr(BSTR bstr, bool ansiBytes);

// Whether an automation caller left an optional argument out: a null pointer, or a VT_ERROR that holds
// DISP_E_PARAMNOTFOUND. Every other error counts as an argument.
[[nodiscard]] bool IsMissingVariant(const VARIANT* variant) noexcept;
