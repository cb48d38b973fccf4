#include "sysinfoapi.h"

#include "failure.h"

#include <fstream>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <sys/utsname.h>
#include <unistd.h>

using winapi::AtBorder;
using winapi::Failure;

namespace {

// The figures of /proc/meminfo, in bytes, by their names.
std::map<std::string, DWORDLONG> MemoryFigures() {
    std::map<std::string, DWORDLONG> figures;
    std::ifstream file("/proc/meminfo");
    std::string name, rest;
    for (DWORDLONG kibibytes = 0; file >> name >> kibibytes && std::getline(file, rest);)
        figures[name] = kibibytes * 1024;
    return figures;
}

// ---- Processors ----------------------------------------------------------------------------------------

// The mask of a set of processors, which the system writes as "0-3,8".
ULONG_PTR MaskIn(const std::string& path) {
    std::ifstream file(path);
    ULONG_PTR mask = 0;
    char sign = ',';
    for (unsigned first = 0, next = 0; file >> next; file >> sign) {
        if (sign == ',') first = next;
        for (; first <= next && first < std::numeric_limits<ULONG_PTR>::digits; ++first) {
            mask |= ULONG_PTR{1} << first;
        }
    }
    return mask;
}

// The mask of each core, in the order of the lowest processor. A machine that doesn't tell has cores of one
// processor each.
std::vector<ULONG_PTR> CoreMasks() {
    const std::string folder = "/sys/devices/system/cpu/";
    ULONG_PTR rest = MaskIn(folder + "online");
    if (rest == 0) rest = 1;
    std::vector<ULONG_PTR> cores;
    for (unsigned number = 0; rest != 0; ++number) {
        const ULONG_PTR own = ULONG_PTR{1} << number;
        if ((rest & own) == 0) continue;
        const ULONG_PTR siblings =
            MaskIn(folder + "cpu" + std::to_string(number) + "/topology/thread_siblings_list");
        cores.push_back((siblings & rest) | own);
        rest &= ~cores.back();
    }
    return cores;
}

}  // namespace

void WINAPI GetNativeSystemInfo(LPSYSTEM_INFO info) noexcept {
    GetSystemInfo(info);
    utsname system{};
    if (uname(&system) == 0 && std::string_view(system.machine) == "x86_64") {
        info->wProcessorArchitecture = PROCESSOR_ARCHITECTURE_AMD64;
    }
}

BOOL WINAPI GlobalMemoryStatusEx(LPMEMORYSTATUSEX status) noexcept {
    return AtBorder(FALSE, [&] {
        if (status->dwLength != sizeof *status) throw Failure{ERROR_INVALID_PARAMETER};
        auto figures = MemoryFigures();
        const DWORDLONG total = figures["MemTotal:"], available = figures["MemAvailable:"];
        *status = {};
        status->dwLength = sizeof *status;
        status->ullTotalPhys = total;
        status->ullAvailPhys = available;
        status->dwMemoryLoad = static_cast<DWORD>(total != 0 ? 100 - available * 100 / total : 0);
        status->ullTotalPageFile = total + figures["SwapTotal:"];
        status->ullAvailPageFile = available + figures["SwapFree:"];
        return TRUE;
    });
}

BOOL WINAPI GetVersionExW(LPOSVERSIONINFOW version) noexcept {
    const DWORD size = version->dwOSVersionInfoSize;
    if (size != sizeof(OSVERSIONINFOW) && size != sizeof(OSVERSIONINFOEXW)) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    *version = {size, 10, 0, 19045, VER_PLATFORM_WIN32_NT, {}};
    if (size == sizeof(OSVERSIONINFOEXW)) {
        *reinterpret_cast<OSVERSIONINFOEXW*>(version) = {*version, 0, 0, 0, VER_NT_WORKSTATION, 0};
    }
    return TRUE;
}

UINT WINAPI GetSystemDirectoryW(LPWSTR path, UINT size) noexcept {
    constexpr std::u16string_view folder = u"Z:\\usr\\lib";
    if (size <= folder.size()) return static_cast<UINT>(folder.size() + 1);
    path[folder.copy(path, folder.size())] = u'\0';
    return static_cast<UINT>(folder.size());
}

BOOL WINAPI GetLogicalProcessorInformation(PSYSTEM_LOGICAL_PROCESSOR_INFORMATION buffer,
                                           LPDWORD size) noexcept {
    return AtBorder(FALSE, [&] {
        if (size == nullptr) throw Failure{ERROR_INVALID_PARAMETER};
        const std::vector<ULONG_PTR> cores = CoreMasks();
        const auto needed = static_cast<DWORD>(cores.size() * sizeof *buffer);
        const bool fits = *size >= needed;
        *size = needed;
        if (!fits) throw Failure{ERROR_INSUFFICIENT_BUFFER};
        for (const ULONG_PTR mask : cores) {
            SYSTEM_LOGICAL_PROCESSOR_INFORMATION& entry = *buffer++;
            entry = {};
            entry.ProcessorMask = mask;
            entry.Relationship = RelationProcessorCore;
            entry.ProcessorCore.Flags = (mask & (mask - 1)) != 0 ? 1 : 0;
        }
        return TRUE;
    });
}
