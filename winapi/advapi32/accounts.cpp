#include "accounts.h"

#include "kernel32/failure.h"
#include "kernel32/paths.h"
#include "winapi/accounts.h"
#include "winapi/strings.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace winapi {
namespace {

// `look` is getpwuid_r or getpwnam_r.
template <class Look, class Key>
Account Find(Look look, Key key) {
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> texts(1024);
    int error = look(key, &entry, texts.data(), texts.size(), &found);
    while (error == ERANGE) {
        texts.resize(2 * texts.size());
        error = look(key, &entry, texts.data(), texts.size(), &found);
    }
    if (found == nullptr) throw Failure{ERROR_NONE_MAPPED};
    return {entry.pw_uid, entry.pw_name, entry.pw_dir};
}

std::string Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

Account AccountOf(uid_t id) {
    return Find(getpwuid_r, id);
}

Account AccountNamed(const std::string& name) {
    return Find(getpwnam_r, name.c_str());
}

std::string UserFolder(const char* variable, const char* fallback) {
    if (std::string folder = Variable(variable); folder.starts_with('/')) return folder;
    std::string home = Variable("HOME");
    if (home.empty()) home = AccountOf(getuid()).home;
    return home + '/' + fallback;
}

}  // namespace winapi

using winapi::AtBorder;
using winapi::Failure;

namespace {

// Copies a text with its terminator and tells the units told by `counted`: with the terminator or without.
void Tell(std::u16string_view text, LPWSTR buffer, LPDWORD size, bool counted, DWORD tooSmall) {
    if (size == nullptr) throw Failure{ERROR_INVALID_PARAMETER};
    const auto needed = static_cast<DWORD>(text.size() + 1);
    const bool fits = buffer != nullptr && *size >= needed;
    *size = fits && !counted ? needed - 1 : needed;
    if (!fits) throw Failure{tooSmall};
    buffer[text.copy(buffer, text.size())] = u'\0';
}

}  // namespace

BOOL WINAPI GetUserNameW(LPWSTR buffer, LPDWORD size) noexcept {
    return AtBorder(FALSE, [&] {
        const std::u16string name = winapi::Utf16FromUtf8(winapi::AccountOf(geteuid()).name);
        Tell(name, buffer, size, true, ERROR_INSUFFICIENT_BUFFER);
        return TRUE;
    });
}

BOOL WINAPI GetComputerNameW(LPWSTR buffer, LPDWORD size) noexcept {
    return AtBorder(FALSE, [&] {
        std::array<char, 256> host{};
        if (gethostname(host.data(), host.size() - 1) != 0) winapi::FailErrno();
        std::string_view label(host.data());
        label = label.substr(0, std::min<std::size_t>(label.find('.'), MAX_COMPUTERNAME_LENGTH));
        std::u16string name = winapi::Utf16FromUtf8(label);
        CharUpperBuffW(name.data(), static_cast<DWORD>(name.size()));
        Tell(name, buffer, size, false, ERROR_BUFFER_OVERFLOW);
        return TRUE;
    });
}
