// Numbers in text, as the conversions of VARIANTs read and write them.
#pragma once

#include "winapi/bstr.h"

#include <concepts>
#include <string>

namespace winapi {

// A conversion that can't be made leaves by this.
struct Refusal {
    HRESULT hresult;
};
[[noreturn]] inline void Refuse(HRESULT hresult) {
    throw Refusal{hresult};
}

// Text in ASCII without the blanks around it; a unit that no number, date or Boolean has becomes '?'.
[[nodiscard]] std::string Ascii(BSTR bstr);

// Of "[sign][blanks]digits[.digits][E[sign]digits]". Refuses other text with DISP_E_TYPEMISMATCH, and what is
// too far from 0 with DISP_E_OVERFLOW.
template <std::floating_point Number>
[[nodiscard]] Number NumberFromText(BSTR bstr);  // a double or a long double

// As printf's %.*G writes it in the C locale, with the names of Microsoft's runtime for what is no number.
[[nodiscard]] std::string FloatingText(double value, int digits);

}  // namespace winapi
