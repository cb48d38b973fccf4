// The program excelhost: a simulated Excel on the command line.
#include "excelhost/program.h"

#include "home.h"

#include <exception>
#include <iostream>

int main(int count, char** arguments) try {
    excelhost::MakeStandardOutputBinary();
    return excelhost::RunProgram(excelhost::ArgumentsFrom(count, arguments), excelhost::OwnFolder(),
                                 std::cout, std::cerr);
} catch (const std::exception& error) {
    std::cerr << "excelhost: " << error.what() << '\n';
    return excelhost::kBadInput;
}
