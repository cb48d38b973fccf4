#include "objectmodel/detail/formula.h"

#include "errors/vex.h"
#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace kestrolumen::detail {

namespace {

[[noreturn]] void RaiseRefusedRead(const MsExcel::Range& range, const char* function) {
    const CStringW address = AddressForMessage(range);
    if (IsProtected(range)) {
        // A mix of cells gives VT_NULL: one of them at least is hidden.
        const OwnedVariant hidden = range.GetFormulaHidden();
        if (hidden->vt != VT_BOOL || hidden->boolVal != VARIANT_FALSE) {
            throw VexExcelWorksheetProtectedCellHidden(function, VexCode::CellHiddenOnRead, address);
        }
    }
    throw VexExcelCellFormulaReadError(function, VexCode::FormulaRead, address);
}

[[noreturn]] void RaiseRefusedWrite(const MsExcel::Range& range, const FormulaProperty& property,
                                    const OwnedVariant& formula, HRESULT hresult) {
    const char* const function = property.writer;
    const bool isArray = property.isArray;
    const CStringW known = isArray ? CStringW() : AddressForMessage(range);
    const auto address = [&] { return isArray ? AddressForMessage(range) : known; };
    const CStringW text = TextOf(formula);

    if (!isArray && BoolOf(range.GetHasArray())) {
        throw VexCellPartOfArrayFormula(function, VexCode::CellPartOfArray, address());
    }
    if (IsProtectedAndLocked(range)) {
        throw VexExcelWorksheetProtectedCellLocked(function, VexCode::CellLockedOnWrite, address());
    }
    const bool outOfMemory = !isArray && hresult == E_OUTOFMEMORY;
    throw VexExcelCellFormulaWriteError(
        function, outOfMemory ? VexCode::FormulaWriteOutOfMemory : VexCode::FormulaWrite, address(), text);
}

}  // namespace

bool IsProtected(const MsExcel::Range& range) {
    return getB(getI(range.GetDispatch(), Dispid::Range::Worksheet).get(),
                Dispid::Worksheet::ProtectContents);
}

bool IsProtectedAndLocked(const MsExcel::Range& range) {
    return IsProtected(range) && range.GetLocked();
}

CStringW AddressForMessage(const MsExcel::Range& range) {
    return range.GetAddressLocal(true, true, true);
}

VARIANT ReadFormula(const MsExcel::Range& range, const FormulaProperty& property) {
    if (range.IsNull()) IssueError(E_POINTER);
    try {
        return getV(range.GetDispatch(), property.dispid);
    } catch (const _com_error&) {
        RaiseRefusedRead(range, property.reader);
    }
}

void WriteFormula(MsExcel::Range& range, const FormulaProperty& property, OwnedVariant formula) {
    if (range.IsNull()) IssueError(E_POINTER);
    try {
        putV(range.GetDispatch(), property.dispid, Variant(formula.borrow()));
    } catch (const _com_error& error) {
        RaiseRefusedWrite(range, property, formula, error.Error());
    }
}

}  // namespace kestrolumen::detail
