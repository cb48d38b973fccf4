// The program excelhost: a simulated Excel on the command line.
#include "excelhost/commandline.h"
#include "excelhost/describe/describe.h"
#include "excelhost/describe/exceptions.h"
#include "excelhost/failure.h"
#include "excelhost/program.h"

#include "home.h"

#include <exception>
#include <iostream>
#include <span>
#include <string>
#include <vector>

int main(int count, char** arguments) try {
    excelhost::PrepareStreams();
    excelhost::SetExceptionTeller(excelhost::TellOwnException);
    excelhost::GuardAgainstAddIns();
    const std::vector<std::string> words = excelhost::ArgumentsFrom(count, arguments);
    const bool describes = !words.empty() && words.front() == "describe" && !excelhost::AsksForHelp(words);
    const std::span<const std::string> rest = std::span(words).subspan(describes ? 1 : 0);
    return (describes ? excelhost::RunDescribe : excelhost::RunProgram)(rest, excelhost::OwnFolder(),
                                                                        std::cout, std::cerr);
} catch (const std::exception& error) {
    std::cerr << "excelhost: " << error.what() << '\n';
    return excelhost::kBadInput;
}
