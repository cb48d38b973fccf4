// The program excelhost: a simulated Excel on the command line.
#include "excelhost/describe/describe.h"
#include "excelhost/describe/exceptions.h"
#include "excelhost/failure.h"
#include "excelhost/program.h"

#include "home.h"

#include <exception>
#include <iostream>
#include <string>
#include <vector>

int main(int count, char** arguments) try {
    excelhost::PrepareStreams();
    excelhost::SetExceptionTeller(excelhost::TellOwnException);
    excelhost::GuardAgainstAddIns();
    const std::vector<std::string> words = excelhost::ArgumentsFrom(count, arguments);
    std::vector<excelhost::Command> commands = excelhost::Commands();
    commands.push_back(excelhost::DescribeCommand());
    excelhost::Surroundings around{excelhost::OwnFolder(), std::cout, std::cerr,
                                   excelhost::ErrorsGoToTerminal(), excelhost::EndAfter};
    return excelhost::RunProgram(words, commands, around);
} catch (const std::exception& error) {
    std::cerr << "excelhost: " << error.what() << '\n';
    return excelhost::kBadInput;
}
