#include "support/home.h"
#include "support/system.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <windows.h>

namespace support {
namespace {

// Has another file stand as a standard one until the end of the object, for a child to inherit.
class Redirection {
  public:
    Redirection(int standard, int file) : standard_(standard), saved_(_dup(standard)) {
        _dup2(file, standard);
        _close(file);
    }
    ~Redirection() {
        _dup2(saved_, standard_);
        _close(saved_);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

  private:
    int standard_;
    int saved_;
};

std::wstring ProgramPath() {
    std::wstring program(32768, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), 32768));
    return program;
}

DWORD WINAPI RunBody(void* body) {
    (*static_cast<const std::function<void()>*>(body))();
    return 0;
}

}  // namespace

Process StartSelf(const Arguments& arguments) {
    int toChild[2], fromChild[2];
    if (_pipe(toChild, 4096, _O_BINARY | _O_NOINHERIT) != 0 ||
        _pipe(fromChild, 4096, _O_BINARY | _O_NOINHERIT) != 0) {
        throw std::runtime_error("_pipe");
    }
    std::vector<std::wstring> quoted;
    for (const std::string& argument : arguments) {
        quoted.push_back(L"\"" + std::wstring(argument.begin(), argument.end()) + L"\"");
    }
    std::vector<const wchar_t*> pointers;
    for (const std::wstring& argument : quoted) pointers.push_back(argument.c_str());
    pointers.push_back(nullptr);

    std::fflush(stdout);
    const Redirection input(0, toChild[0]), output(1, fromChild[1]);
    const std::intptr_t id = _wspawnv(_P_NOWAIT, ProgramPath().c_str(), pointers.data());
    if (id == -1) throw std::runtime_error("_wspawnv");
    return {id, toChild[1], fromChild[0]};
}

int WaitFor(std::intptr_t id) {
    int code = 0;
    _cwait(&code, id, 0);  // closes the handle, too
    return code;
}

void KillProcess(std::intptr_t id) {
    TerminateProcess(reinterpret_cast<HANDLE>(id), static_cast<UINT>(-1));
}

void RunWithLittle(const std::function<void()>& body) {
    const HANDLE thread =
        CreateThread(nullptr, 160 * 1024, RunBody, const_cast<std::function<void()>*>(&body),
                     STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (thread == nullptr) throw std::runtime_error("CreateThread");
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}

void SetVariable(const std::string& name, const char* value) {
    _putenv_s(name.c_str(), value == nullptr ? "" : value);
}

WithoutElevation::WithoutElevation() = default;
WithoutElevation::~WithoutElevation() = default;

std::filesystem::path ProgramFolder() {
    return std::filesystem::path(ProgramPath()).parent_path();
}

std::size_t OpenHandles() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
}

}  // namespace support
