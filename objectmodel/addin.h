// An add-in that Excel knows (Excel VBA reference: AddIn object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::AddIn {
  public:
    virtual ~AddIn() = default;

    // True when the object holds no interface.
    virtual bool IsNull() const noexcept = 0;
    virtual bool GetInstalled() const = 0;
    virtual void PutInstalled(bool installed) = 0;
    // Without and with the path.
    virtual CStringW GetName() const = 0;
    virtual CStringW GetFullName() const = 0;
};
