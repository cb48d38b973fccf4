// What Excel corrects by itself (Excel VBA reference: AutoCorrect object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::AutoCorrect {
  public:
    virtual ~AutoCorrect() = default;

    // Whether a table grows when something is typed beside it.
    virtual bool GetAutoExpandListRange() const = 0;
    virtual void PutAutoExpandListRange(bool expand) = 0;
    // Whether a formula typed into a table fills its whole column.
    virtual bool GetAutoFillFormulasInLists() const = 0;
    virtual void PutAutoFillFormulasInLists(bool fill) = 0;
};
