// The program in this process, with what it prints.
#pragma once

#include "excelhost/program.h"

#include "support/folder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace excelhost {

class ProgramTest : public ::testing::Test {
  protected:
    // A sheet in a file; gives the name.
    std::string File(const std::string& text, const char8_t* name = u8"sheet.csv") {
        const std::filesystem::path path = folder_.Path() / name;
        std::ofstream(path, std::ios::binary) << text;
        const auto utf8 = path.u8string();
        return {utf8.begin(), utf8.end()};
    }
    int Run(std::vector<std::string> arguments, const std::filesystem::path& own = ADDIN_FOLDER) {
        std::ostringstream outStream;
        std::ostringstream errStream;
        Surroundings around{own, outStream, errStream};
        around.errIsTerminal = errIsTerminal;
        const int code = RunProgram(arguments, Commands(), around);
        out = outStream.str();
        err = errStream.str();
        return code;
    }
    int RunSheet(const std::string& text, std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"run", File(text)});
        return Run(options);
    }

    const support::Folder folder_;
    bool errIsTerminal = false;
    std::string out;
    std::string err;
};

}  // namespace excelhost
