#include "home.h"

#include "excelhost/failure.h"
#include "excelhost/lastwords.h"
#include "excelhost/program.h"
#include "excelhost/session.h"
#include "excelhost/value.h"

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#include <stdio.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace excelhost {
namespace {

void End(const std::string& why, int code) {
    const std::string message = "excelhost: " + why + "\n";
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), message.data(), static_cast<DWORD>(message.size()), &written,
              nullptr);
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(code));
}

// Nothing when it wasn't an add-in's code that ended the program.
void EndInAddIn(const std::string& how) {
    const std::string words = LastWords();
    if (!words.empty()) End(how + " " + words, kAddInDied);
}

// As Linux tells a C++ exception that leaves an export.
void EndInFailure(const EXCEPTION_RECORD& record) {
    static_assert(sizeof(ULONG_PTR) == sizeof(std::uintptr_t));
    std::array<std::uintptr_t, EXCEPTION_MAXIMUM_PARAMETERS> parameters{};
    std::copy_n(record.ExceptionInformation, record.NumberParameters, parameters.begin());
    const std::string text = ExportFailureText(std::span(parameters).first(record.NumberParameters));
    if (const std::string told = HandshakeFailure(text); !told.empty()) End(told, kBadInput);
    EndInAddIn("an exception got out: " + text + ",");
}

void OnExit() {
    EndInAddIn("exit was called");
}

void OnAbort(int) {
    EndInAddIn("abort was called");
}

LONG WINAPI OnException(EXCEPTION_POINTERS* exception) {
    if (exception->ExceptionRecord->ExceptionCode == kExportFailureCode) {
        EndInFailure(*exception->ExceptionRecord);
    }
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
