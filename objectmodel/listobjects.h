// A worksheet's tables (Excel VBA reference: ListObjects object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::ListObjects {
  public:
    virtual ~ListObjects() = default;

    virtual LONG GetCount() const = 0;
    // By position from 1.
    virtual std::shared_ptr<ListObject> GetItem(LONG index) const = 0;
};
