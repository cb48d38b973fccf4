// The columns of a table (Excel VBA reference: ListColumns object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::ListColumns {
  public:
    virtual ~ListColumns() = default;

    virtual LONG GetCount() const = 0;
    // By position from 1.
    virtual std::shared_ptr<ListColumn> GetItem(LONG index) const = 0;
};
