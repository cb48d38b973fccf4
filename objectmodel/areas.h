// The blocks that a range is made of (Excel VBA reference: Areas object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::Areas {
  public:
    virtual ~Areas() = default;

    virtual LONG GetCount() const = 0;
    // By position from 1.
    virtual std::shared_ptr<Range> GetItem(LONG index) const = 0;
};
