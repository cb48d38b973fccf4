// The open workbooks (Excel VBA reference: Workbooks object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::Workbooks {
  public:
    virtual ~Workbooks() = default;

    // A new workbook after Excel's own template.
    virtual std::shared_ptr<Workbook> Add() = 0;
    virtual LONG GetCount() const = 0;
    // By name, as in "Book1.xlsx", or by position from 1.
    virtual std::shared_ptr<Workbook> GetItem(const CStringW& name) const = 0;
    virtual std::shared_ptr<Workbook> GetItem(LONG index) const = 0;
    // MissingArgument may stand for each VARIANT; the caller gives them away, and they are cleared, also when
    // the call fails.
    virtual std::shared_ptr<Workbook> Open(const CStringW& fileName, VARIANT updateLinks, VARIANT readOnly,
                                           VARIANT format, VARIANT password) = 0;
};
