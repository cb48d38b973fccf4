// The properties of a document (Office VBA reference: DocumentProperties object).
#pragma once

#include "objectmodel/types.h"

// A call that Office refuses raises _com_error with the error object that the collection offers.
class MsExcel::DocumentPropertiesClass {
  public:
    virtual ~DocumentPropertiesClass() = default;

    // By name, as in "Title".
    virtual std::shared_ptr<DocumentProperty> GetItem(const CStringW& name) const = 0;
};
