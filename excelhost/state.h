// What a host holds, for the rooms that serve it.
#pragma once

#include "excelhost/ledger.h"
#include "excelhost/refusals.h"
#include "excelhost/registrations.h"
#include "excelhost/sheets.h"
#include "excelhost/trace.h"

#include <mutex>

namespace excelhost {

// Everything under one lock. A workbook's or a module's code never runs while it is held.
struct HostState {
    mutable std::mutex mutex;
    Workbooks workbooks;
    Sheets sheets;
    Registrations registrations;
    Refusals refusals;
    Trace trace;
    Ledger ledger;
    bool alerts = true;
    bool messages = false;
    std::size_t alertsShown = 0;
};

}  // namespace excelhost
