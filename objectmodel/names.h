// Defined names (Excel VBA reference: Names object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::Names {
  public:
    virtual ~Names() = default;

    virtual LONG GetCount() const = 0;
    // By name or by position from 1.
    virtual std::shared_ptr<Name> GetItem(const CStringW& name) = 0;
    virtual std::shared_ptr<Name> GetItem(LONG index) = 0;
    // Defines a name for a formula that begins with "=". The caller gives `name` away; it is cleared, also
    // when the call fails.
    virtual std::shared_ptr<Name> Add(VARIANT name, const CStringW& refersTo) = 0;
};
