// Quotes, enclosures, records and escapes in any text.
#include "fuzz.h"

#include "text/escapes.h"
#include "text/quoting.h"

#include <algorithm>

using fuzz::Check;

namespace {

// The field of this number, counted from 0.
CStringW Field(const CStringW& record, int number) {
    int begin = 0;
    for (; number > 0; --number) {
        const int separator = record.Find(WCHAR{1}, begin);
        if (separator < 0) return CStringW();
        begin = separator + 1;
    }
    const int end = record.Find(WCHAR{1}, begin);
    return end < 0 ? record.Mid(begin) : record.Mid(begin, end - begin);
}

CStringW Inserted(const CStringW& text, int index, WCHAR unit) {
    return text.Left(index) + unit + text.Mid(index);
}

// As one works by hand: find, insert or remove, go on behind.
CStringW DoubledByHand(CStringW text) {
    for (int at = text.Find(TEXT('"')); at >= 0; at = text.Find(TEXT('"'), at + 2))
        text = Inserted(text, at, TEXT('"'));
    return text;
}

CStringW UndoubledByHand(CStringW text) {
    for (int at = text.Find(TEXT("\"\"")); at >= 0; at = text.Find(TEXT("\"\""), at + 1)) {
        text = text.Left(at) + text.Mid(at + 1);
    }
    return text;
}

CStringW SheetDoubledByHand(const CStringW& reference) {
    const int mark = reference.ReverseFind(TEXT('!'));
    const int end = mark < 0 ? reference.GetLength() : mark;
    CStringW part = reference.Left(end);
    const int margin = end >= 2 && part[0] == TEXT('\'') && part[end - 1] == TEXT('\'') ? 1 : 0;
    for (int at = margin; at < part.GetLength() - margin; ++at) {
        if (part[at] == TEXT('\'')) part = Inserted(part, at++, TEXT('\''));
    }
    return part + reference.Mid(end);
}

bool IsPrintable(const CStringA& text) {
    return std::all_of(text.GetString(), text.GetString() + text.GetLength(),
                       [](char character) { return character >= 0x20 && character <= 0x7E; });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const CStringW text = fuzz::Wide({data, size});
    Check(DoubleQuotesDoubled(text) == DoubledByHand(text), "quotes are doubled");
    Check(DoubleQuotesUndoubled(text) == UndoubledByHand(text), "quotes are undoubled");

    const CStringW reference(text.GetString());
    const CStringW doubled = SheetQuotesDoubled(reference);
    const CStringW undoubled = SheetQuotesUndoubled(doubled);
    Check(doubled == SheetDoubledByHand(reference), "apostrophes are doubled");
    if (reference.IsEmpty() || reference[0] != TEXT('\'')) {
        Check(undoubled == reference, "a part that isn't enclosed comes back");
    }

    Check(WithLeadingEquals(text)[0] == TEXT('='), "a formula begins with its sign");
    Check(WithoutLeadingEquals(TEXT("=") + text) == text, "one sign goes");
    Check(WithoutLeadingAt(TEXT("@") + text) == text, "one sign goes");
    Check(WithoutLeadingAts(text)[0] != TEXT('@'), "all signs go");
    const CStringW trailing = WithoutTrailingAts(text);
    Check(trailing.IsEmpty() || trailing[trailing.GetLength() - 1] != TEXT('@'), "all signs go");
    Check(WithoutParentheses(TEXT("(") + text + TEXT(")")) == text, "one pair goes");
    Check(WithoutSingleQuotes(TEXT("'") + text + TEXT("'")) == text, "one pair goes");
    Check(WithoutDoubleQuotes(TEXT("\"") + text + TEXT("\"")) == text, "one pair goes");

    const CStringW first = Field(text, 0);
    const CStringW fourth = Field(text, 3);
    const CStringW between = first.IsEmpty() || fourth.IsEmpty() ? CStringW() : CStringW(TEXT(" / "));
    Check(FirstAndFourthField(text) == first + between + fourth, "the first and the fourth field");

    Check(IsPrintable(EscapedTextA(fuzz::Narrow({data, size}))), "escaped text is printable");
    Check(IsPrintable(EscapedTextW(text)), "escaped text is printable");
    return 0;
}
