#include "home.h"

#include "excelhost/failure.h"
#include "excelhost/lastwords.h"
#include "excelhost/machine/crashstack.h"
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
#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>

namespace excelhost {
namespace {

// Of several threads that end in an add-in the first one speaks.
std::atomic_flag is_ending = ATOMIC_FLAG_INIT;

void WaitForTurn() {
    if (is_ending.test_and_set()) Sleep(INFINITE);
}

void End(std::string_view message, int code) {
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), message.data(), static_cast<DWORD>(message.size()), &written,
              nullptr);
    TellLastFile(message);
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(code));
}

// Nothing when it wasn't an add-in's code that ended the program.
void EndInAddIn(std::string_view how) {
    Message message;
    message << "excelhost: " << how << " ";
    if (!AddLastWords(message)) return;
    message << "\n";
    WaitForTurn();
    End(message.Text(), kAddInDied);
}

// As Linux tells a C++ exception that leaves an export.
void EndInFailure(const EXCEPTION_RECORD& record) {
    static_assert(sizeof(ULONG_PTR) == sizeof(std::uintptr_t));
    std::array<std::uintptr_t, EXCEPTION_MAXIMUM_PARAMETERS> parameters{};
    std::copy_n(record.ExceptionInformation, record.NumberParameters, parameters.begin());
    const std::string text = ExportFailureText(std::span(parameters).first(record.NumberParameters));
    if (const std::string told = HandshakeFailure(text); !told.empty()) {
        WaitForTurn();
        End("excelhost: " + told + "\n", kBadInput);
    }
    EndInAddIn("an exception got out: " + text + ",");
}

// What a thread does, and who waits until it runs.
struct Beginning {
    DWORD (*work)();
    HANDLE begun;
};

DWORD WINAPI Begin(void* given) {
    const Beginning own = *static_cast<const Beginning*>(given);
    SetEvent(own.begun);
    return own.work();
}

// False if no thread is to be had. Comes back when it runs: where a process ends while a thread of it begins, Wine may
// crash.
bool Start(DWORD (*work)()) {
    Beginning beginning{work, CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    if (beginning.begun == nullptr) return false;
    const HANDLE thread = CreateThread(nullptr, 0, Begin, &beginning, 0, nullptr);
    if (thread != nullptr) {
        WaitForSingleObject(beginning.begun, INFINITE);
        CloseHandle(thread);
    }
    CloseHandle(beginning.begun);
    return thread != nullptr;
}

// The main thread, which calls the add-ins.
struct Watched {
    HANDLE thread = nullptr;
    const ThreadNotes* notes = nullptr;
    std::uint64_t seconds = 0;
} watched;

// The main thread stands still while its notes are read.
DWORD Watch() {
    for (; watched.seconds > 0; --watched.seconds) Sleep(1000);
    SuspendThread(watched.thread);
    CONTEXT context{};
    context.ContextFlags = CONTEXT_CONTROL;
    GetThreadContext(watched.thread, &context);  // waits until it does
    Message message;
    message << "excelhost: the time is up ";
    if (!AddLastWords(message, *watched.notes)) message << "outside of the add-ins";
    message << "\n";
    End(message.Text(), kTimeIsUp);
    return 0;
}

void OnExit() {
    EndInAddIn("exit was called");
}

void OnAbort(int) {
    EndInAddIn("abort was called");
}

// A crash is told by a thread of its own, which waits for one: where a stack has overflowed there is no room.
struct Crash {
    HANDLE happened = nullptr;  // null when nobody waits
    const ThreadNotes* notes = nullptr;
    DWORD code = 0;
} crash;

DWORD TellCrash() {
    if (crash.happened != nullptr) WaitForSingleObject(crash.happened, INFINITE);
    std::array<char, 9> code{};
    (void)snprintf(code.data(), code.size(), "%08lX", crash.code);
    Message message;
    message << "excelhost: a crash (exception " << code.data() << ") ";
    (void)AddLastWords(message, *crash.notes);
    message << "\n";
    End(message.Text(), kAddInDied);
    return 0;
}

LONG WINAPI OnException(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode == kExportFailureCode) EndInFailure(record);
    const ThreadNotes& notes = ThreadNotes::OfThisThread();
    if (notes.scope == nullptr) return EXCEPTION_CONTINUE_SEARCH;
    WaitForTurn();
    crash.notes = &notes;
    crash.code = record.ExceptionCode;
    if (crash.happened == nullptr) (void)TellCrash();
    SetEvent(crash.happened);
    Sleep(INFINITE);
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
    static const CrashStack stack;
    crash.happened = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (!Start(TellCrash)) crash.happened = nullptr;
    SetUnhandledExceptionFilter(OnException);
    (void)std::signal(SIGABRT, OnAbort);
    (void)std::atexit(OnExit);
}

void EndAfter(std::uint64_t seconds) {
    watched.seconds = seconds;
    watched.notes = &ThreadNotes::OfThisThread();
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &watched.thread, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    (void)Start(Watch);
}

bool ErrorsGoToTerminal() noexcept {
    return _isatty(_fileno(stderr)) != 0;
}

void PrepareStreams() {
    _setmode(_fileno(stdout), _O_BINARY);
}

}  // namespace excelhost
