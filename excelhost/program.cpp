#include "excelhost/program.h"

#include "excelhost/session.h"

#include <algorithm>
#include <stdexcept>

namespace excelhost {
namespace {

constexpr std::string_view kExitCodes = R"(
'excelhost COMMAND --help' tells a command's operands and options.

Exit code: 0 done; 1 something is wrong with the input or the add-in; 2 something is wrong with the command line;
3 an add-in leaked a value, freed one twice, freed or changed one that it was only lent, or did what else is named;
4 an add-in ended the program: it crashed, aborted, exited or let an exception out; 5 the time of --timeout is up.
)";

std::string HelpOf(std::span<const Command> commands) {
    std::string page =
        "excelhost - a simulated Excel that loads, calls and checks add-ins (XLL)\n\n"
        "Usage: excelhost COMMAND ... [options]\n\n";
    for (const Command& command : commands) {
        std::string name = "  " + command.name;
        name.resize(12, ' ');
        page += name + command.summary + "\n";
    }
    return page + std::string(kExitCodes);
}

// The exit code of a command that ends with `code`, when its streams are flushed.
int Finish(int code, Surroundings& around) {
    const bool written = static_cast<bool>(around.out.flush());
    if (!written) around.err << "excelhost: the output can't be written\n";
    const bool told = static_cast<bool>(around.err.flush());
    return code == kDone && !(written && told) ? kBadInput : code;
}

int Run(const Command& command, std::span<const std::string> words, Surroundings& around) try {
    if (AsksForHelp(words)) {
        around.out << HelpOf(command);
        return kDone;
    }
    return command.run(ParseOptions(words, command.options), around);
} catch (const UsageError& error) {
    around.err << "excelhost: " << error.what() << "; 'excelhost " << command.name << " --help' tells more\n";
    return kBadUsage;
} catch (const AddInDied& error) {
    around.err << "excelhost: " << error.what() << '\n';
    return kAddInDied;
} catch (const std::runtime_error& error) {
    around.err << "excelhost: " << error.what() << '\n';
    return kBadInput;
}

}  // namespace

int RunProgram(std::span<const std::string> arguments, std::span<const Command> commands,
               Surroundings& around) {
    const auto command = std::find_if(commands.begin(), commands.end(), [&](const Command& candidate) {
        return !arguments.empty() && candidate.name == arguments.front();
    });
    if (command != commands.end()) return Finish(Run(*command, arguments.subspan(1), around), around);
    if (AsksForHelp(arguments)) {
        around.out << HelpOf(commands);
        return Finish(kDone, around);
    }
    around.err << "excelhost: "
               << (arguments.empty() ? "a command is missing" : "unknown command '" + arguments.front() + "'")
               << "; 'excelhost --help' tells more\n";
    return Finish(kBadUsage, around);
}

}  // namespace excelhost
