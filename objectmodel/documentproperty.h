// One property of a document, such as its title (Office VBA reference: DocumentProperty object).
#pragma once

#include "objectmodel/types.h"

// A call that Office refuses raises _com_error with the error object that the property offers.
class MsExcel::DocumentProperty {
  public:
    virtual ~DocumentProperty() = default;

    // The caller owns what it gets and gives away what it puts, which is cleared, also when the call fails.
    [[nodiscard]] virtual VARIANT GetValue() const = 0;
    virtual void PutValue(VARIANT value) = 0;
};
