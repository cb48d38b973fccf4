#include "objectmodel/detail/externalreference.h"

kestrolumen::detail::ParsedExternalReference::ParsedExternalReference(const CStringW& text) {
    const int mark = text.ReverseFind(TEXT('!'));
    if (mark <= 0) return;
    const bool quoted = text.GetAt(0) == TEXT('\'');
    const bool closed = quoted && text.GetAt(mark - 1) == TEXT('\'');
    const CStringW container = text.Left(closed ? mark - 1 : mark);
    const int bracket = container.Find(TEXT(']'));
    if (bracket < 0) return;

    cell = text.Mid(mark + 1);
    sheet = container.Mid(bracket + 1);
    const int begin = quoted ? 2 : 1;
    workbook = container.Mid(begin, bracket - begin);
    valid = true;
}
