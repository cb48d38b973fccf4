// Reading and writing formulas, and why Excel refuses it.
#pragma once

#include "objectmodel/range.h"

namespace kestrolumen::detail {

// Whether the contents of the range's worksheet are protected.
[[nodiscard]] bool IsProtected(const MsExcel::Range& range);

// Whether they are and the range is locked.
[[nodiscard]] bool IsProtectedAndLocked(const MsExcel::Range& range);

// The address by which messages name the range: absolute, with workbook and sheet.
[[nodiscard]] CStringW AddressForMessage(const MsExcel::Range& range);

// One of the properties that hold a range's formula, and its operations as exceptions name them.
struct FormulaProperty {
    DISPID dispid;
    const char* reader;
    const char* writer;
    bool isArray =
        false;  // an array formula: its refused write is no part of an array, and never out of memory
};

// Range's comment in range.h tells what these raise. The caller owns what the first gives; the second takes
// the formula and clears it, whatever happens.
[[nodiscard]] VARIANT ReadFormula(const MsExcel::Range& range, const FormulaProperty& property);
void WriteFormula(MsExcel::Range& range, const FormulaProperty& property, OwnedVariant formula);

}  // namespace kestrolumen::detail
