// The record of one call that reached the simulated application.
#pragma once

#include "excelhost/automation/variant.h"

#include <string>
#include <string_view>
#include <vector>

namespace excelhost::automation {

// One argument as it came: its type, and "TYPE value" as text, such as "I4 3", "BSTR Sheet1", "BOOL true",
// "DISPATCH Range $A$1" or "missing" for the mark of an omitted argument.
struct SentArgument {
    VARTYPE type = VT_EMPTY;
    std::string text;
};

struct Invocation {
    std::string_view object;  // the class of the object, such as "Range"
    std::string_view member;  // the member's published name; empty for a DISPID that the class hasn't
    DISPID dispid = 0;
    WORD flags = 0;
    LCID lcid = 0;
    bool direct = false;      // came through the object's own interface, not through IDispatch::Invoke
    bool namedValue = false;  // exactly one named argument, DISPID_PROPERTYPUT, which is the last one here
    bool resultWanted = false;
    std::vector<SentArgument> arguments;  // in the order of the published parameter list
    HRESULT result = S_OK;
};

// One line, such as "Range 437 get (BOOL true, I4 1)" or "Range 6 put (INT 10) = R8 0.5", with the named
// value behind "=". A method is a "call" where its result was asked for, else a "do".
[[nodiscard]] std::string Describe(const Invocation& invocation);

}  // namespace excelhost::automation
