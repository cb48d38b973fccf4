#include "support/home.h"

#include <windows.h>

namespace support {
namespace {

void Set(const std::string& name, const std::optional<std::string>& value) {
    SetEnvironmentVariableA(name.c_str(), value ? value->c_str() : nullptr);
}

}  // namespace

EnvironmentVariable::EnvironmentVariable(const char* name, const std::optional<std::string>& value)
    : name_(name) {
    std::string previous(32768, '\0');
    previous.resize(GetEnvironmentVariableA(name, previous.data(), 32768));
    if (!previous.empty()) previous_ = previous;
    Set(name_, value);
}
EnvironmentVariable::~EnvironmentVariable() {
    Set(name_, previous_);
}

std::filesystem::path ProgramFolder() {
    std::wstring program(32768, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), 32768));
    return std::filesystem::path(program).parent_path();
}

std::size_t OpenHandles() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
}

RuntimeFolder::RuntimeFolder() = default;
RuntimeFolder::~RuntimeFolder() = default;
std::vector<std::string> RuntimeFolder::Files() const {
    return {};
}

}  // namespace support
