// The files that were opened lately (Excel VBA reference: RecentFiles object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::RecentFiles {
  public:
    virtual ~RecentFiles() = default;

    virtual LONG GetCount() const = 0;
    // By position from 1, the latest first.
    virtual std::shared_ptr<RecentFile> GetItem(LONG index) const = 0;
    virtual std::shared_ptr<RecentFile> Add(const CStringW& fileName) = 0;
};
