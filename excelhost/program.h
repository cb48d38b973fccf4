// The command-line program, apart from where its arguments and streams come from.
#pragma once

#include "excelhost/commands/command.h"

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
    kTimeIsUp = 5,    // --timeout
};

// Runs the program: `arguments` in UTF-8, without the program's own name. Whatever can't be written to either stream
// makes 1 of the exit code 0.
[[nodiscard]] int RunProgram(std::span<const std::string> arguments, std::span<const Command> commands,
                             Surroundings& around);

}  // namespace excelhost
