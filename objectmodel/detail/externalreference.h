// Addresses of cells in another workbook.
#pragma once

#include <atlstr.h>

namespace kestrolumen::detail {

// The parts of "[Book.xlsx]Sheet!A1" or "'[My Book.xlsx]My Sheet'!A1". The text counts as valid when it has a
// last "!" with something in front of it and a "]" ahead of that; the bracket that should begin it isn't
// looked for, but skipped by its place. Text with a path ahead of the bracket is thus valid too, with a
// workbook that no lookup will find.
struct ParsedExternalReference {
    explicit ParsedExternalReference(const CStringW& text);

    bool valid = false;
    CStringW workbook;  // without brackets and apostrophes
    CStringW sheet;
    CStringW cell;  // all behind the "!"
};

}  // namespace kestrolumen::detail
