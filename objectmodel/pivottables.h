// A worksheet's pivot tables (Excel VBA reference: PivotTables object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::PivotTables {
  public:
    virtual ~PivotTables() = default;

    virtual LONG GetCount() const = 0;
    // By position from 1.
    virtual std::shared_ptr<PivotTable> GetItem(LONG index) = 0;
};
