// The add-ins that Excel knows (Excel VBA reference: AddIns object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::AddIns {
  public:
    virtual ~AddIns() = default;

    virtual LONG GetCount() const = 0;
    // By position from 1.
    virtual std::shared_ptr<AddIn> GetItem(LONG index) const = 0;
    // Makes an add-in known. Its file stays where it is: Excel neither copies it nor asks the user.
    virtual std::shared_ptr<AddIn> Add(const CStringW& fileName) = 0;
};
