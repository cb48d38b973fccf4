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

#include "automation/bstr.h"
