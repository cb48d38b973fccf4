#include "home.h"

#include "excelhost/lastwords.h"
#include "excelhost/program.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

namespace excelhost {
namespace {

// Nothing when it wasn't an add-in's code that ended the program.
void EndInAddIn(const std::string& how) {
    const std::string words = LastWords();
    if (words.empty()) return;
    const std::string message = "excelhost: " + how + " " + words + "\n";
    (void)!write(STDERR_FILENO, message.data(), message.size());
    _exit(kAddInDied);
}

void OnExit() {
    EndInAddIn("exit was called");
}

// Telling takes memory, and an add-in that crashed inside the allocator may have left it locked.
void OnAlarm(int) {
    constexpr char message[] =
        "excelhost: an add-in ended the program, in a state that hides its last calls\n";
    (void)!write(STDERR_FILENO, message, sizeof message - 1);
    _exit(kAddInDied);
}

// Once: a second fault, in here, ends the program as if nobody had asked.
void OnSignal(int number) {
    std::signal(number, SIG_DFL);
    std::signal(SIGALRM, OnAlarm);
    alarm(5);
    EndInAddIn(number == SIGABRT ? std::string("abort was called")
                                 : "a crash (" + std::string(strsignal(number)) + ")");
    raise(number);
}

}  // namespace

std::vector<std::string> ArgumentsFrom(int count, char** arguments) {
    return {arguments + 1, arguments + count};
}

std::filesystem::path OwnFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

void GuardAgainstAddIns() {
    // A stack of its own, for when the add-in's has overflowed; a sanitizer's report takes much of it.
    static std::array<std::byte, std::size_t{1} << 20> stack;
    const stack_t own{stack.data(), 0, stack.size()};
    sigaltstack(&own, nullptr);
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        struct sigaction action {};
        action.sa_handler = OnSignal;
        action.sa_flags = SA_ONSTACK | SA_NODEFER;
        sigaction(number, &action, nullptr);
    }
    std::atexit(OnExit);
}

void PrepareStreams() {
    std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace excelhost
