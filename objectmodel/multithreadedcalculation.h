// Excel's calculation threads (Excel VBA reference: MultiThreadedCalculation object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::MultiThreadedCalculationClass {
  public:
    virtual ~MultiThreadedCalculationClass() = default;

    virtual bool GetEnabled() const = 0;
    virtual void PutEnabled(bool enabled) = 0;
    // 1 to 1024 in the Excel of today.
    virtual LONG GetThreadCount() const = 0;
    virtual void PutThreadCount(LONG count) = 0;
    // A number of XlThreadMode: as many threads as processors, or as many as GetThreadCount tells.
    virtual LONG GetThreadMode() const = 0;
    virtual void PutThreadMode(LONG mode) = 0;
};
