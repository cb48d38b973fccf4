// One worksheet (Excel VBA reference: Worksheet object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::Worksheet {
  public:
    virtual ~Worksheet() = default;

    virtual std::shared_ptr<Application> GetApplication() const = 0;
    virtual void Calculate() = 0;
    // The cells at an address of this sheet, such as "B2:C5".
    virtual std::shared_ptr<Range> GetRange(const CStringW& address) const = 0;
    virtual void PutName(const CStringW& name) = 0;
    virtual CStringW GetName() const = 0;
    // The cell at a row and column, from 1; an object whose IsNull is true when Excel gives no cell.
    virtual std::shared_ptr<Range> GetCell(LONG row, SHORT column) const = 0;
    virtual std::shared_ptr<Range> GetCells() const = 0;
    virtual void Activate() = 0;
    virtual std::shared_ptr<Range> GetUsedRange() const = 0;
    // Deletes the sheet; Excel asks the user first unless Application::PutDisplayAlerts has turned that off.
    virtual void Delete() = 0;
    // A number of XlSheetVisibility: -1 visible, 0 hidden, 2 hidden from the user's menus too.
    virtual LONG GetVisible() const = 0;
    virtual void PutVisible(LONG visibility) = 0;
    // What a name, an address or a formula stands for on this sheet; the caller owns it.
    [[nodiscard]] virtual VARIANT Evaluate(const CStringW& expression) = 0;
    // The workbook; both give the same. Holds no interface when the parent is no workbook.
    virtual std::shared_ptr<Workbook> GetParent() const = 0;
    virtual std::shared_ptr<Names> GetNames() const = 0;
    virtual std::shared_ptr<Workbook> GetWorkbook() const = 0;
    // The interface that the object holds, no reference added; null when it holds none.
    virtual IDispatch* GetDispatch() const noexcept = 0;
    virtual bool GetProtectContents() const = 0;
    // The position among the workbook's sheets, from 1.
    virtual LONG GetIndex() const = 0;
    virtual std::shared_ptr<ListObjects> GetListObjects() const = 0;
    virtual std::shared_ptr<PivotTables> GetPivotTables() = 0;
};
