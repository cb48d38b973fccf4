#include "home.h"

#include "excelhost/lastwords.h"
#include "excelhost/program.h"
#include "excelhost/value.h"

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#include <stdio.h>
#include <windows.h>

#include <csignal>
#include <cstdlib>

namespace excelhost {
namespace {

// Nothing when it wasn't an add-in's code that ended the program.
void EndInAddIn(const std::string& how) {
    const std::string words = LastWords();
    if (words.empty()) return;
    const std::string message = "excelhost: " + how + " " + words + "\n";
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), message.data(), static_cast<DWORD>(message.size()), &written,
              nullptr);
    TerminateProcess(GetCurrentProcess(), kAddInDied);
}

void OnExit() {
    EndInAddIn("exit was called");
}

void OnAbort(int) {
    EndInAddIn("abort was called");
}

LONG WINAPI OnException(EXCEPTION_POINTERS* exception) {
    std::string code(9, '\0');
    code.resize(static_cast<std::size_t>(
        snprintf(code.data(), code.size(), "%08lX", exception->ExceptionRecord->ExceptionCode)));
    EndInAddIn("a crash (exception " + code + ")");
    return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

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

void GuardAgainstAddIns() {
    SetUnhandledExceptionFilter(OnException);
    std::signal(SIGABRT, OnAbort);
    std::atexit(OnExit);
}

void PrepareStreams() {
    _setmode(_fileno(stdout), _O_BINARY);
}

}  // namespace excelhost
