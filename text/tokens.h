// Texts split into tokens, and shortened in their middle. Delimiters are sets of single units, which end at
// their first zero unit.
#pragma once

#include "text/strings.h"

#include <cstdint>
#include <vector>

// The runs of units between delimiters, never an empty one. With `trim` each goes through Trim, and what is
// empty then is left out. Without delimiters the text is one token.
[[nodiscard]] std::vector<CStringW> SplitCStringW(const CStringW& text, const CStringW& delimiters,
                                                  bool trim);

// One token a call: start with a `position` of 0, and stop when it comes back as -1. A token that begins with
// a double quote goes on to the first delimiter outside quotes and keeps its quotes; an open quote at the end
// of the text ends there. Inside other tokens double quotes have no meaning. Empty when nothing is left, as
// for a `position` outside the text.
[[nodiscard]] CStringW TokenizeQuotedW(const CStringW& text, const CStringW& delimiters, int& position);

// The same by way of wide text: `position` counts units of that, and the text ends at its first zero byte.
// Only the token is converted. With a single-byte code page the calls for all tokens read the text once; with a
// double-byte one each steps over what lies before its place, and with UTF-8 it converts the whole text.
[[nodiscard]] CStringA TokenizeQuotedA(const CStringA& text, const CStringA& delimiters, int& position);

// The first `head` units, "..." and the last `tail` units, if the text is longer than that; else the text. A
// double-byte character may be cut in two.
[[nodiscard]] CStringA AbbreviatedA(const CStringA& text, std::uint32_t head, std::uint32_t tail);
[[nodiscard]] CStringW AbbreviatedW(const CStringW& text, std::uint32_t head, std::uint32_t tail);
