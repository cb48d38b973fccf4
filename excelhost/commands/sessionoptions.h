// The options of every command that opens add-ins: declared here once, and obeyed by Play.
#pragma once

#include "excelhost/commandline.h"
#include "excelhost/commands/faults.h"

#include <cstdint>
#include <string>
#include <vector>

namespace excelhost {

struct SessionOptions {
    std::vector<std::string> addIns;  // ours, beside the program, when empty
    std::string companion = "iris";
    std::string workbookName = "XLA";
    std::string report;  // a file; none when empty
    bool trace = false;
    bool isManaged = false;
    bool cancelsClose = false;
    bool progress = false;
    std::vector<ScriptedRefusal> refusals;
    std::uint64_t failAllocation = 0;  // 0 for none
    std::uint64_t timeout = 0;         // seconds, 0 for none
};

// They set what they are read into, which must live as long as they do.
[[nodiscard]] std::vector<Option> OptionsOf(SessionOptions& session);
// A command's own, and these behind them.
[[nodiscard]] std::vector<Option> WithSessionOptions(std::vector<Option> own, SessionOptions& session);

}  // namespace excelhost
