// A table on a worksheet (Excel VBA reference: ListObject object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::ListObject {
  public:
    virtual ~ListObject() = default;

    // True when the object holds no interface.
    virtual bool IsNull() const noexcept = 0;
    virtual CStringW GetName() const = 0;
    virtual CStringW GetDisplayName() const = 0;
    // The rows below the header, and the header; the IsNull of each is true when the table has none.
    virtual std::shared_ptr<Range> GetDataBodyRange() const = 0;
    virtual std::shared_ptr<Range> GetHeaderRowRange() const = 0;
    virtual std::shared_ptr<ListColumns> GetListColumns() const = 0;
};
