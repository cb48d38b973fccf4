#include "home.h"

#include "excelhost/value.h"

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#include <stdio.h>
#include <windows.h>

namespace excelhost {

// main's own arguments are in the ANSI code page, which can't hold every file name.
std::vector<std::string> ArgumentsFrom(int, char**) {
    int count = 0;
    LPWSTR* wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(Utf8(wide[i]));
    LocalFree(wide);
    return arguments;
}

std::filesystem::path OwnFolder() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
}

void PrepareStreams() {
    _setmode(_fileno(stdout), _O_BINARY);
}

}  // namespace excelhost
