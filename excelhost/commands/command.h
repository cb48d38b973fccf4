// A command of the program: what it is called, what its help tells, and what it does.
#pragma once

#include "excelhost/commandline.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <ostream>
#include <span>
#include <string>
#include <vector>

namespace excelhost {

// What a command has around it.
struct Surroundings {
    std::filesystem::path folder;  // the program's own, where our add-in is looked for
    std::ostream& out;             // results
    std::ostream& err;             // messages
    bool errIsTerminal = false;    // a person looks at them as they come
    // Ends the process after so many seconds, with kTimeIsUp. Null where that isn't to be had.
    std::function<void(std::uint64_t seconds)> limitTime = nullptr;
};

struct Command {
    std::string name;
    std::string summary;             // a few words, for the list of commands
    std::vector<std::string> usage;  // the operands, in each way that they can be given
    std::string description;         // lines of the help, ahead of the options
    std::vector<Option> options;
    // Gives the exit code. UsageError for bad operands; other runtime errors are bad input.
    std::function<int(std::span<const std::string> operands, Surroundings& around)> run;
};

// The page that "excelhost NAME --help" prints.
[[nodiscard]] std::string HelpOf(const Command& command);

// The commands of this library; each stands in a file of its name. A program may have more.
[[nodiscard]] std::vector<Command> Commands();

[[nodiscard]] Command RunCommand();
[[nodiscard]] Command EvalCommand();
[[nodiscard]] Command TestCommand();
[[nodiscard]] Command InspectCommand();

}  // namespace excelhost
