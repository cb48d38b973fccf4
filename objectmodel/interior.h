// A cell's background (Excel VBA reference: Interior object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::Interior {
  public:
    virtual ~Interior() = default;

    // A number of the workbook's palette, or one of XlColorIndex. The VARIANT is taken and cleared, also when
    // the call fails.
    virtual void PutColorIndex(VARIANT colorIndex) = 0;
};
