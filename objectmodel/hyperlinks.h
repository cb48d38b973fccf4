// The links of a range (Excel VBA reference: Hyperlinks object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::Hyperlinks {
  public:
    virtual ~Hyperlinks() = default;

    virtual LONG GetCount() const = 0;
    // By position from 1.
    virtual std::shared_ptr<Hyperlink> GetItem(LONG index) const = 0;
};
