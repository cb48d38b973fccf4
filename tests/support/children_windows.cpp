#include "support/children.h"

#include <stdexcept>

#include <windows.h>

namespace support {
namespace {

struct Pipe {
    HANDLE read = nullptr;
    HANDLE write = nullptr;

    Pipe() {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        if (CreatePipe(&read, &write, &inherited, 0) == FALSE) throw std::runtime_error("CreatePipe");
    }
};

// The arguments hold no quotes and no backslash ahead of one.
std::wstring CommandLine(const Arguments& arguments) {
    std::wstring line;
    for (const std::string& argument : arguments) {
        line += L" \"" + std::wstring(argument.begin(), argument.end()) + L"\"";
    }
    return line.substr(1);
}

}  // namespace

class Child::Process {
  public:
    explicit Process(const Arguments& arguments) {
        Pipe toChild;
        Pipe fromChild;
        input_ = toChild.write;
        output_ = fromChild.read;
        SetHandleInformation(input_, HANDLE_FLAG_INHERIT, 0);
        SetHandleInformation(output_, HANDLE_FLAG_INHERIT, 0);

        std::wstring program(32768, L'\0');
        program.resize(GetModuleFileNameW(nullptr, program.data(), 32768));
        std::wstring line = CommandLine(arguments);
        STARTUPINFOW start{};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdInput = toChild.read;
        start.hStdOutput = fromChild.write;
        start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
        PROCESS_INFORMATION started{};
        const BOOL result = CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                           nullptr, &start, &started);
        CloseHandle(toChild.read);
        CloseHandle(fromChild.write);
        if (result == FALSE) throw std::runtime_error("CreateProcessW");
        CloseHandle(started.hThread);
        process_ = started.hProcess;
    }
    ~Process() {
        Kill();
        CloseHandle(output_);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    bool ReadByte(char& byte) const {
        DWORD count = 0;
        return ReadFile(output_, &byte, 1, &count, nullptr) != FALSE && count == 1;
    }

    void Write(const std::string& text) const {
        DWORD count = 0;
        const auto size = static_cast<DWORD>(text.size());
        if (WriteFile(input_, text.data(), size, &count, nullptr) == FALSE || count != size) {
            throw std::runtime_error("write to a child");
        }
    }

    int Finish() {
        CloseInput();
        if (process_ == nullptr) return killed_;
        WaitForSingleObject(process_, INFINITE);
        DWORD code = 0;
        GetExitCodeProcess(process_, &code);
        CloseHandle(process_);
        process_ = nullptr;
        return static_cast<int>(code);
    }

    void Kill() {
        if (process_ != nullptr) TerminateProcess(process_, static_cast<UINT>(killed_));
        Finish();
    }

  private:
    static constexpr int killed_ = -1;

    void CloseInput() {
        if (input_ != nullptr) CloseHandle(input_);
        input_ = nullptr;
    }

    HANDLE process_ = nullptr;
    HANDLE input_ = nullptr;
    HANDLE output_ = nullptr;
};

Child::Child(const std::string& role, const Arguments& arguments) {
    Arguments all = {"test", "--role", role};
    all.insert(all.end(), arguments.begin(), arguments.end());
    process_ = std::make_unique<Process>(all);
}
Child::~Child() = default;
Child::Child(Child&&) noexcept = default;

std::string Child::ReadLine() {
    std::string line;
    for (char byte = 0; process_->ReadByte(byte) && byte != '\n';) line += byte;
    if (line.ends_with('\r')) line.pop_back();
    return line;
}

void Child::WriteLine(const std::string& line) {
    process_->Write(line + "\n");
}
int Child::Finish() {
    return process_->Finish();
}
void Child::Kill() {
    process_->Kill();
}

}  // namespace support
