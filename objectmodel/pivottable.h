// A pivot table (Excel VBA reference: PivotTable object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::PivotTable {
  public:
    virtual ~PivotTable() = default;

    // Reads the source again; true when that worked.
    virtual bool RefreshTable() = 0;
};
