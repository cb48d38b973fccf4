// Text made printable. Units from 0x20 to 0x7E stay as they are, "<" among them, so there is no way back; a
// narrow byte else becomes <XX>, a wide unit <XXXX>, in upper-case hexadecimal digits. In counted texts zero
// units are escaped as well.
#pragma once

#include "text/textview.h"

// CStringA or std::string.
template <typename Result = CStringA>
[[nodiscard]] Result EscapedTextA(kestrolumen::TextViewA text);

// CStringA, std::string or CStringW; all of the result is ASCII.
template <typename Result = CStringA>
[[nodiscard]] Result EscapedTextW(kestrolumen::TextViewW text);

extern template CStringA EscapedTextA<CStringA>(kestrolumen::TextViewA);
extern template std::string EscapedTextA<std::string>(kestrolumen::TextViewA);
extern template CStringA EscapedTextW<CStringA>(kestrolumen::TextViewW);
extern template std::string EscapedTextW<std::string>(kestrolumen::TextViewW);
extern template CStringW EscapedTextW<CStringW>(kestrolumen::TextViewW);
