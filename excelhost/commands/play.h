// A session from the loading of the add-ins to their account, with what a command does in between.
#pragma once

#include "excelhost/commands/command.h"
#include "excelhost/commands/sessionoptions.h"
#include "excelhost/host.h"
#include "excelhost/report/report.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace excelhost {

struct Act {
    std::string milestone;               // for the trace: "the sheet is calculated"
    std::function<void(Host&)> perform;  // while the add-ins are open
    // When all are closed, ahead of the account: prints what came of it and gives the exit code.
    std::function<int(Host&)> tell;
    // What a report shows as sheets; their values are asked for behind `tell`.
    std::function<std::vector<ReportedSheet>()> sheets = nullptr;
    // Called with each call into Excel when it is complete, one at a time; null for none.
    std::function<void(const Entry&)> watch = {};
};

// The add-ins that the options name, or ours.
[[nodiscard]] std::vector<std::filesystem::path> AddInsOf(const SessionOptions& options,
                                                          const std::filesystem::path& ownFolder);

// Plays the session; gives the exit code, which the account's comes ahead of. AddInError.
[[nodiscard]] int Play(const SessionOptions& options, const Act& act, Surroundings& around);

}  // namespace excelhost
