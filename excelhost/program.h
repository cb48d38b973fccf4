// The command-line program, apart from where its arguments and streams come from.
#pragma once

#include <filesystem>
#include <ostream>
#include <span>
#include <string>

namespace excelhost {

enum ExitCode : int {
    kDone = 0,
    kBadInput = 1,    // the sheet, the add-in, a function in the sheet, or a stream that takes no more
    kBadUsage = 2,    // the command line
    kBadAccount = 3,  // the add-in leaked, freed twice, freed what it was lent, or changed it
    kAddInDied = 4,   // the add-in crashed, aborted, exited, or let an exception out of xlAutoOpen
};

// Runs the program: `arguments` in UTF-8, without the program's own name; `folder` is the program's own,
// where the add-in is looked for. Results go to `out`, messages to `err`.
// Whatever can't be written to either stream makes 1 of the exit code 0.
[[nodiscard]] int RunProgram(std::span<const std::string> arguments, const std::filesystem::path& folder,
                             std::ostream& out, std::ostream& err);

// The exit code of a command that ends with `code`, when its streams are flushed.
[[nodiscard]] int Finish(int code, std::ostream& out, std::ostream& err);

}  // namespace excelhost
