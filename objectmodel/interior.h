// A cell's background (Excel VBA reference: Interior object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::Interior {
  public:
    virtual ~Interior() = default;

    // A number of the workbook's palette, or one of XlColorIndex. The caller gives the VARIANT away; it is
    // cleared, also when the call fails.
    virtual void PutColorIndex(VARIANT colorIndex) = 0;
};
