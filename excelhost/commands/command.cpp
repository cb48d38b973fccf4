#include "excelhost/commands/command.h"

namespace excelhost {

std::string HelpOf(const Command& command) {
    std::string page;
    for (const std::string& operands : command.usage) {
        page +=
            (page.empty() ? "Usage: " : "       ") + ("excelhost " + command.name) + " " + operands + "\n";
    }
    page += "\n" + command.description;
    return page + "\nOptions (--option VALUE or --option=VALUE; \"--\" ends them):\n" +
           HelpOf(command.options);
}

std::vector<Command> Commands() {
    return {RunCommand(), EvalCommand(), TestCommand(), InspectCommand()};
}

}  // namespace excelhost
