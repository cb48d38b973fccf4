// The quoting rules of Excel's formulas and sheet references, and a small record format. All lengths are
// counted, so that zero units inside a CStringW are text like any other.
#pragma once

#include "text/strings.h"

// Inside a quoted string of a formula a double quote stands doubled.
[[nodiscard]] CStringW DoubleQuotesDoubled(const CStringW& text);
// Each pair, from the start, becomes one.
[[nodiscard]] CStringW DoubleQuotesUndoubled(const CStringW& text);

// The apostrophes in the sheet part of a reference, which is all in front of the last "!", or the whole text
// if there is none: It's!A1 and It''s!A1. Apostrophes that enclose the part, 'It''s'!A1, stay as they are;
// but a part that is just two apostrophes becomes one undoubled. Zero-terminated, not null.
[[nodiscard]] CStringW SheetQuotesDoubled(const WCHAR* reference);
[[nodiscard]] CStringW SheetQuotesUndoubled(const WCHAR* reference);

// Empty text gives "=".
[[nodiscard]] CStringW WithLeadingEquals(const CStringW& formula);
// One at most.
[[nodiscard]] CStringW WithoutLeadingEquals(const CStringW& formula);
[[nodiscard]] CStringW WithoutLeadingAt(const CStringW& text);
// All of them.
[[nodiscard]] CStringW WithoutLeadingAts(const CStringW& text);
[[nodiscard]] CStringW WithoutTrailingAts(const CStringW& text);

// Without what encloses the text, one pair at most, if it stands at both ends.
[[nodiscard]] CStringW WithoutDoubleQuotes(const CStringW& text);
[[nodiscard]] CStringW WithoutParentheses(const CStringW& text);
[[nodiscard]] CStringW WithoutSingleQuotes(const CStringW& text);

// Of a record whose fields U+0001 separates, the first and the fourth, with " / " between them if neither is
// empty. A field that isn't there is empty; what stands behind the fourth is not read.
[[nodiscard]] CStringW FirstAndFourthField(const CStringW& record);
