// The program excelhost: a simulated Excel on the command line.
#include "excelhost/program.h"

#include "excelhost/value.h"
#include "home.h"

#include <windows.h>

#include <exception>
#include <iostream>

namespace {

std::filesystem::path OwnFolder() {
    excelhost::Text path(32768, WCHAR{});
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    const std::string utf8 = excelhost::Utf8(path);
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end())).parent_path();
}

}  // namespace

int main(int count, char** arguments) try {
    excelhost::MakeStandardOutputBinary();
    return excelhost::RunProgram(excelhost::ArgumentsFrom(count, arguments), OwnFolder(), std::cout,
                                 std::cerr);
} catch (const std::exception& error) {
    std::cerr << "excelhost: " << error.what() << '\n';
    return excelhost::kBadInput;
}
