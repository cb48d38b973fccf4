// What the program takes from the system that it runs on.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace excelhost {

// The arguments behind the program's name, in UTF-8.
[[nodiscard]] std::vector<std::string> ArgumentsFrom(int count, char** arguments);

// The folder of the program's own file.
[[nodiscard]] std::filesystem::path OwnFolder();

// Keeps the standard output stream from changing line ends, and a closed pipe from ending the program
// unheard.
void PrepareStreams();

// Ends the program after so many seconds, with its own exit code and word of what the add-in was doing. Once, from the
// main thread.
void EndAfter(std::uint64_t seconds);

// Whether the standard error stream is a terminal.
[[nodiscard]] bool ErrorsGoToTerminal() noexcept;

// From here on, a program that ends in an add-in's code, by a crash, abort or exit, says so and has its own exit
// code. Called once, in the beginning.
void GuardAgainstAddIns();

}  // namespace excelhost
