#include "home.h"

#include "excelhost/lastwords.h"
#include "excelhost/machine/crashstack.h"
#include "excelhost/program.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace excelhost {
namespace {

// Of several threads that end in an add-in the first one speaks.
std::atomic_flag is_ending = ATOMIC_FLAG_INIT;

[[noreturn]] void End(const Message& message, int code) {
    if (is_ending.test_and_set()) {
        for (;;) pause();
    }
    (void)!write(STDERR_FILENO, message.Text().data(), message.Text().size());
    TellLastFile(message.Text());
    _exit(code);
}

// Nothing when it wasn't an add-in's code that ended the program.
void EndInAddIn(std::string_view how) {
    Message message;
    message << "excelhost: " << how << " ";
    if (!AddLastWords(message)) return;
    message << "\n";
    End(message, kAddInDied);
}

// Linux hands an alarm to the main thread, which calls the add-ins.
void OnAlarm(int) {
    Message message;
    message << "excelhost: the time is up ";
    if (!AddLastWords(message)) message << "outside of the add-ins";
    message << "\n";
    End(message, kTimeIsUp);
}

void OnExit() {
    EndInAddIn("exit was called");
}

std::string_view CrashName(int number) noexcept {
    switch (number) {
        case SIGSEGV:
            return "a crash (Segmentation fault)";
        case SIGBUS:
            return "a crash (Bus error)";
        case SIGFPE:
            return "a crash (Floating point exception)";
        case SIGILL:
            return "a crash (Illegal instruction)";
        default:
            return "abort was called";
    }
}

// Once a thread: a second fault, in here, ends the program as if nobody had asked.
void OnSignal(int number) {
    static thread_local bool is_told = false;
    if (!std::exchange(is_told, true)) EndInAddIn(CrashName(number));
    (void)std::signal(number, SIG_DFL);
    (void)raise(number);
}

}  // namespace

std::vector<std::string> ArgumentsFrom(int count, char** arguments) {
    return {arguments + 1, arguments + count};
}

std::filesystem::path OwnFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

void GuardAgainstAddIns() {
    static const CrashStack stack;
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        struct sigaction action {};
        action.sa_handler = OnSignal;
        action.sa_flags = SA_ONSTACK | SA_NODEFER;
        sigaction(number, &action, nullptr);
    }
    (void)std::atexit(OnExit);
}

void EndAfter(std::uint64_t seconds) {
    struct sigaction action {};
    action.sa_handler = OnAlarm;
    action.sa_flags = SA_ONSTACK;
    sigaction(SIGALRM, &action, nullptr);
    constexpr std::uint64_t most = 1000000000;  // for ever
    alarm(static_cast<unsigned>(std::min(seconds, most)));
}

bool ErrorsGoToTerminal() noexcept {
    return isatty(STDERR_FILENO) != 0;
}

void PrepareStreams() {
    (void)std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace excelhost
