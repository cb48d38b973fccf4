#include "excelhost/machine/lastfile.h"

#include <windows.h>

namespace excelhost {
namespace {

HANDLE HandleFrom(std::intptr_t handle) noexcept {
    return reinterpret_cast<HANDLE>(handle);
}

}  // namespace

LastFile::LastFile(const std::filesystem::path& path) noexcept
    : handle_(reinterpret_cast<std::intptr_t>(CreateFileW(path.c_str(), FILE_APPEND_DATA,
                                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr))) {}

LastFile::~LastFile() {
    if (HandleFrom(handle_) != INVALID_HANDLE_VALUE) CloseHandle(HandleFrom(handle_));
}

void LastFile::Append(std::string_view text) const noexcept {
    DWORD written = 0;
    WriteFile(HandleFrom(handle_), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

}  // namespace excelhost
