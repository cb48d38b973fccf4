// A column of a table (Excel VBA reference: ListColumn object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::ListColumn {
  public:
    virtual ~ListColumn() = default;

    virtual CStringW GetName() const = 0;
};
