// A cell, a row, a column or any block of cells, also of several areas (Excel VBA reference: Range object).
#pragma once

#include "objectmodel/types.h"

// Rows and columns count from 1. All operations raise what msexcel.h tells; those that raise more say so.
//
// The formula operations don't just report that Excel refused: they look at the cell and its sheet and raise
// the member of the VexExcelError family that says why. `address` there is the cell's local address with
// workbook and sheet, as GetAddressLocal(true, true, true) gives it.
//
//   when Excel refuses a formula read
//     sheet protected, formula hidden       VexExcelWorksheetProtectedCellHidden   2843
//     any other cause                       VexExcelCellFormulaReadError           2698
//
//   when Excel refuses a formula write, the first that holds
//     cell inside an array formula          VexCellPartOfArrayFormula              2714
//     sheet protected, cell locked          VexExcelWorksheetProtectedCellLocked   2639
//     E_OUTOFMEMORY                         VexExcelCellFormulaWriteError          2696
//     any other cause                       VexExcelCellFormulaWriteError          2697
//
// `args` of a write error are the address and the formula's text, those of all others the address alone. A
// failure that comes up while the cell is looked at goes up as _com_error in place of the first. Nothing is
// retried.
class MsExcel::Range {
  public:
    virtual ~Range() = default;

    // True when the object holds no interface: Excel answered with no cell.
    virtual bool IsNull() const noexcept = 0;

    // The number of cells. A whole sheet of a modern workbook has more than 32 bits can count: Excel
    // refuses there.
    virtual LONG GetCount() const = 0;
    virtual std::shared_ptr<Range> GetRows() const = 0;
    virtual std::shared_ptr<Range> GetColumns() const = 0;

    // The name of the workbook that holds the range, without its path, and of the worksheet.
    virtual CStringW GetWorkbookName() const = 0;
    virtual CStringW GetWorksheetName() const = 0;

    // The first row and the first column of the first area, from 1.
    virtual LONG GetRow() const = 0;
    virtual LONG GetColumn() const = 0;

    // The address in style A1, in the user's language and in English. `external` adds workbook and sheet.
    //
    // When Excel refuses GetAddress: a locked cell of a protected sheet raises
    // VexExcelWorksheetProtectedCellLocked 2851 with one empty argument, anything else gives an empty text.
    // GetAddressLocal raises _com_error.
    virtual CStringW GetAddressLocal(bool rowAbsolute, bool columnAbsolute, bool external) const = 0;
    virtual CStringW GetAddress(bool rowAbsolute, bool columnAbsolute, bool external) const = 0;

    // The formula as a dynamic array formula, in English and in the user's language: a text for one cell, an
    // array of VARIANT for a block. A host that lacks the property (found out once a process, by
    // ProbeFormula2) is asked for Formula and FormulaLocal instead, and a failure then names
    // "XRange14::GetFormula", "XRange14::PutFormula" and so on. The caller owns what it gets and gives away
    // what it puts: a formula is cleared, also when the call fails.
    virtual void PutFormula2(VARIANT formula) = 0;
    [[nodiscard]] virtual VARIANT GetFormula2() const = 0;
    virtual void PutFormula2Local(VARIANT formula) = 0;
    [[nodiscard]] virtual VARIANT GetFormula2Local() const = 0;

    virtual std::shared_ptr<Areas> GetAreas() const = 0;

    // The value: of one cell as it is, of a block a two-dimensional array of VARIANT that counts from 1.
    // Value knows dates (VT_DATE) and currency (VT_CY), Value2 gives plain numbers. The caller owns what it
    // gets and lends what it puts; a temporary is cleared after the call.
    [[nodiscard]] virtual VARIANT GetValue() const = 0;
    virtual void PutValue(const VARIANT& value) = 0;
    [[nodiscard]] virtual VARIANT GetValue2() const = 0;
    virtual void PutValue2(const VARIANT& value) = 0;
    template <class Value>
    requires kestrolumen::detail::HandsOver<Value>
    void PutValue(Value&& value) { PutValue(OwnedVariant(std::forward<Value>(value))); }
    template <class Value>
    requires kestrolumen::detail::HandsOver<Value>
    void PutValue2(Value&& value) { PutValue2(OwnedVariant(std::forward<Value>(value))); }

    // A range of so many rows and columns from the same first cell, and a range of the same size so many
    // rows down and columns to the right (negative: up, to the left).
    [[nodiscard]] virtual std::shared_ptr<Range> Resize(LONG rows, LONG columns) const = 0;
    [[nodiscard]] virtual std::shared_ptr<Range> Offset(LONG rows, LONG columns) const = 0;

    // The first cell that matches, or an object whose IsNull is true. MissingArgument may stand for any
    // VARIANT but `what`; the numbers are those of XlFindLookIn, XlLookAt, XlSearchOrder and
    // XlSearchDirection. The caller lends all VARIANTs; temporaries are cleared after the call.
    virtual std::shared_ptr<Range> Find(const VARIANT& what, const VARIANT& after, const VARIANT& lookIn,
                                        const VARIANT& lookAt, const VARIANT& searchOrder,
                                        LONG searchDirection, const VARIANT& matchCase,
                                        const VARIANT& matchByte) = 0;
    virtual std::shared_ptr<Range> FindNext(const VARIANT& after) = 0;
    template <class... Arguments>
    requires kestrolumen::detail::HandsOver<Arguments...> std::shared_ptr<Range> Find(
        Arguments&&... arguments) {
        return Find(kestrolumen::detail::ForTheCall(std::forward<Arguments>(arguments))...);
    }
    template <class After>
    requires kestrolumen::detail::HandsOver<After> std::shared_ptr<Range> FindNext(After&& after) {
        return FindNext(OwnedVariant(std::forward<After>(after)));
    }

    // The interface that the object holds, no reference added; null when it holds none.
    virtual IDispatch* GetDispatch() const noexcept = 0;

    // VT_BOOL, or VT_NULL for a block where some cells have a formula and some have none.
    [[nodiscard]] virtual VARIANT GetHasFormula() const = 0;
    [[nodiscard]] virtual VARIANT Select() = 0;

    // The cell at a row and column of the range, counted from 1 and allowed outside it, and the cell at a
    // position counted row by row. An object whose IsNull is true when Excel gives no cell.
    virtual std::shared_ptr<Range> GetItem(LONG row, LONG column) const = 0;
    virtual std::shared_ptr<Range> GetItem(LONG index) const = 0;

    // Deletes the cells; Excel chooses how the others move up. The number is Excel's answer.
    virtual LONG Delete() = 0;
    virtual std::shared_ptr<Interior> GetInterior() const = 0;

    // The formula as an array formula in English style; the caller owns what it gets and gives away what it
    // puts, as above. A refused write is never told apart as out of memory
    // or as part of an array: it is the locked cell or VexExcelCellFormulaWriteError 2697.
    [[nodiscard]] virtual VARIANT GetFormulaArray() const = 0;
    virtual void PutFormulaArray(VARIANT formula) = 0;

    virtual std::shared_ptr<Worksheet> GetWorksheet() const = 0;
    virtual bool GetMergeCells() const = 0;
    virtual std::shared_ptr<Range> GetMergeArea() const = 0;

    // The text as the cell shows it.
    virtual CStringW GetText() const = 0;
    // The name that stands for exactly this range, or a Name that holds no interface.
    virtual std::shared_ptr<Name> GetName() const = 0;
    virtual std::shared_ptr<Range> GetCells() const = 0;
    // VT_BOOL, or VT_NULL for a mixed block.
    [[nodiscard]] virtual VARIANT GetHasArray() const = 0;

    // The array formula's whole block that the cell is part of. When Excel refuses: a locked cell of a
    // protected sheet raises VexExcelWorksheetProtectedCellLocked 2851, another cell of a protected sheet
    // VexExcelWorksheetProtected 2851, each with the address; on an unprotected sheet, as for a cell outside
    // any array, the result is an empty pointer.
    virtual std::shared_ptr<Range> GetCurrentArray() const = 0;
    virtual std::shared_ptr<Worksheet> GetParent() const = 0;

    // The number format's code in English, such as "0.00".
    virtual CStringW GetNumberFormat() const = 0;
    virtual void PutNumberFormat(const CStringW& format) = 0;

    // Clear empties the cells and their formats, ClearContents the cells alone.
    virtual void Clear() = 0;
    virtual void ClearContents() = 0;
    [[nodiscard]] virtual VARIANT Activate() = 0;
    // Copies to the clipboard.
    virtual void Copy() = 0;
    // The cells of a kind, a number of XlCellType.
    virtual std::shared_ptr<Range> SpecialCells(LONG type) = 0;
    // VT_BOOL, or VT_NULL for a mixed block.
    [[nodiscard]] virtual VARIANT GetFormulaHidden() const = 0;

    // The cell's comment; its IsNull is true when there is none.
    virtual std::shared_ptr<Comment> GetComment() const = 0;
    virtual void AddComment(const CStringW& text) = 0;
    // The table that the range lies in; its IsNull is true when there is none.
    virtual std::shared_ptr<ListObject> GetListObject() const = 0;
    virtual bool GetLocked() const = 0;
    virtual std::shared_ptr<Hyperlinks> GetHyperlinks() const = 0;

    // Replaces in all cells: parts of a cell's text, row by row, with upper and lower case told apart.
    virtual bool Replace(const CStringW& what, const CStringW& replacement) = 0;
    // Changes `changingCell` until this cell's formula gives `goal`; true when Excel found a solution.
    virtual bool GoalSeek(double goal, std::shared_ptr<Range> changingCell) = 0;

    // Whether the cells spill: VT_BOOL, or VT_NULL for a mixed block. VT_BOOL false, without a call, on a
    // host that knows no spilling (found out once a process, by ProbeHasSpill).
    [[nodiscard]] virtual VARIANT GetHasSpill() const = 0;
    // The cell that spills into this one, and the block that this cell spills into. A host that knows no
    // spilling raises _com_error.
    virtual std::shared_ptr<Range> GetSpillParent() const = 0;
    virtual std::shared_ptr<Range> GetSpillingToRange() const = 0;

    // The identifier that saving as a web page gives to the cell.
    virtual CStringW GetID() const = 0;
    virtual void PutID(const CStringW& id) = 0;
};
