// The windows of Excel or of one workbook (Excel VBA reference: Windows object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::Windows {
  public:
    virtual ~Windows() = default;

    virtual LONG GetCount() const = 0;
    // By caption or by position from 1, the active window first.
    virtual std::shared_ptr<Window> GetItem(const CStringW& name) const = 0;
    virtual std::shared_ptr<Window> GetItem(LONG index) const = 0;
};
