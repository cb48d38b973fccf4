#include "tlhelp32.h"

#include "failure.h"
#include "kernelobject.h"
#include "loadedmodules.h"
#include "paths.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <string_view>

#include <unistd.h>

using winapi::AtBorder;
using winapi::Failure;

namespace {

template <std::size_t size>
void SetText(WCHAR (&target)[size], std::u16string_view text) noexcept {
    target[text.copy(target, size - 1)] = u'\0';
}

MODULEENTRY32W EntryOf(const winapi::LoadedModule& module) {
    constexpr DWORD cameWithTheProcess = 0xFFFF;
    MODULEENTRY32W entry{};
    entry.dwSize = sizeof entry;
    entry.hModule = reinterpret_cast<HMODULE>(module.base);
    const DWORD count = winapi::LoadCount(entry.hModule);
    entry.ProccntUsage = count != 0 ? count : cameWithTheProcess;
    const std::u16string path = winapi::WindowsPath(module.path);
    SetText(entry.szModule, std::u16string_view(path).substr(path.rfind(u'\\') + 1));
    SetText(entry.szExePath, path);
    return entry;
}

struct Snapshot : winapi::KernelObject {
    const std::vector<winapi::LoadedModule> modules = winapi::LoadedModules();
    std::atomic<std::size_t> next = 0;

    BOOL TellNext(MODULEENTRY32W& entry) {
        if (entry.dwSize < sizeof entry) throw Failure{ERROR_INSUFFICIENT_BUFFER};
        const std::size_t index = next++;
        if (index >= modules.size()) throw Failure{ERROR_NO_MORE_FILES};
        entry = EntryOf(modules[index]);
        return TRUE;
    }
};

}  // namespace

HANDLE WINAPI CreateToolhelp32Snapshot(DWORD flags, DWORD process) noexcept {
    return AtBorder(INVALID_HANDLE_VALUE, [&]() -> HANDLE {
        if (flags != TH32CS_SNAPMODULE || (process != 0 && process != static_cast<DWORD>(getpid()))) {
            throw Failure{ERROR_INVALID_PARAMETER};
        }
        return winapi::NewHandle(std::make_shared<Snapshot>());
    });
}

BOOL WINAPI Module32FirstW(HANDLE snapshot, LPMODULEENTRY32W entry) noexcept {
    return AtBorder(FALSE, [&] {
        const auto modules = winapi::ObjectOf<Snapshot>(snapshot);
        modules->next = 0;
        return modules->TellNext(*entry);
    });
}

BOOL WINAPI Module32NextW(HANDLE snapshot, LPMODULEENTRY32W entry) noexcept {
    return AtBorder(FALSE, [&] { return winapi::ObjectOf<Snapshot>(snapshot)->TellNext(*entry); });
}
