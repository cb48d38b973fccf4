// What a host holds, for the rooms that serve it.
#pragma once

#include "excelhost/asynccalls.h"
#include "excelhost/findings.h"
#include "excelhost/ledger.h"
#include "excelhost/refusals.h"
#include "excelhost/registrations.h"
#include "excelhost/sheets.h"
#include "excelhost/trace.h"

#include <functional>
#include <map>
#include <mutex>
#include <vector>

namespace excelhost {

// A procedure that an add-in wants called.
struct EventHandler {
    int event = 0;
    Text module;
    FARPROC entry = nullptr;
};

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
    Findings findings;
    std::map<Text, Value, NameOrder> names;
    std::map<Text, std::vector<BYTE>, NameOrder> binaryNames;
    SheetEvaluator evaluator;
    std::vector<EventHandler> handlers;
    AsyncCalls asyncCalls;  // locks itself
};

// The cells behind an Area or a Reference to one rectangle; any other value as it is. A reference to a sheet that
// isn't there, or to several rectangles, gives #REF! or #VALUE!. Locks the state, not while cells are read.
[[nodiscard]] Value Dereference(const HostState& state, const Value& value);

}  // namespace excelhost
