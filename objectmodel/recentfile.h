// A file that was opened lately (Excel VBA reference: RecentFile object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::RecentFile {
  public:
    virtual ~RecentFile() = default;

    virtual CStringW GetName() const = 0;
    // Strikes it off the list; the file stays.
    virtual void Delete() = 0;
};
