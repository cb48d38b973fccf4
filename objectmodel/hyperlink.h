// A link in a cell (Excel VBA reference: Hyperlink object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::Hyperlink {
  public:
    virtual ~Hyperlink() = default;

    // Where the link leads: a URL or a path.
    virtual CStringW GetAddress() const = 0;
};
