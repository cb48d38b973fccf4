#include "sysinfoapi.h"

#include "failure.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
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

// The figures of /proc/meminfo, in bytes; 0 for one that isn't there.
class MemoryFigures {
  public:
    MemoryFigures() {
        std::ifstream file("/proc/meminfo");
        std::string name, rest;
        for (DWORDLONG kibibytes = 0; file >> name >> kibibytes && std::getline(file, rest);) {
            figures_[name] = kibibytes * 1024;
        }
    }
    [[nodiscard]] DWORDLONG operator[](const char* name) const {
        const auto found = figures_.find(name);
        return found != figures_.end() ? found->second : 0;
    }

  private:
    std::map<std::string, DWORDLONG> figures_;
};

DWORDLONG UsedAddressSpace() {
    DWORDLONG pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<DWORDLONG>(sysconf(_SC_PAGESIZE));
}

// ---- Processors ----------------------------------------------------------------------------------------

// The numbers in the system's form of a set of processors, as "0-3,8".
std::vector<unsigned> NumbersOf(std::string_view list) {
    std::vector<unsigned> numbers;
    const char* at = list.data();
    const char* const end = at + list.size();
    const auto take = [&](unsigned& number) {
        const auto [stop, error] = std::from_chars(at, end, number);
        at = stop;
        return error == std::errc();
    };
    for (unsigned first = 0; take(first); ++at) {
        unsigned last = first;
        if (at != end && *at == '-' && (++at, !take(last))) break;
        for (unsigned number = first; number <= last && last < 4096; ++number) numbers.push_back(number);
        if (at == end || *at != ',') break;
    }
    return numbers;
}

ULONG_PTR MaskIn(const std::string& file) {
    std::string list;
    std::getline(std::ifstream(file), list);
    ULONG_PTR mask = 0;
    for (const unsigned number : NumbersOf(list)) {
        if (number < std::numeric_limits<ULONG_PTR>::digits) mask |= ULONG_PTR{1} << number;
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
        const MemoryFigures figures;
        SYSTEM_INFO addresses;
        GetSystemInfo(&addresses);
        MEMORYSTATUSEX facts{};
        facts.dwLength = sizeof facts;
        facts.ullTotalPhys = figures["MemTotal:"];
        facts.ullAvailPhys = figures["MemAvailable:"];
        facts.ullTotalPageFile = facts.ullTotalPhys + figures["SwapTotal:"];
        facts.ullAvailPageFile = facts.ullAvailPhys + figures["SwapFree:"];
        facts.ullTotalVirtual = reinterpret_cast<std::uintptr_t>(addresses.lpMaximumApplicationAddress) -
                                reinterpret_cast<std::uintptr_t>(addresses.lpMinimumApplicationAddress);
        facts.ullAvailVirtual = facts.ullTotalVirtual - std::min(facts.ullTotalVirtual, UsedAddressSpace());
        if (facts.ullTotalPhys != 0) {
            const DWORDLONG used = facts.ullTotalPhys - std::min(facts.ullTotalPhys, facts.ullAvailPhys);
            facts.dwMemoryLoad = static_cast<DWORD>(used * 100 / facts.ullTotalPhys);
        }
        *status = facts;
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
        auto& extended = *reinterpret_cast<OSVERSIONINFOEXW*>(version);
        extended.wServicePackMajor = 0;
        extended.wServicePackMinor = 0;
        extended.wSuiteMask = 0;
        extended.wProductType = VER_NT_WORKSTATION;
        extended.wReserved = 0;
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
