#include "platform/processorcounts.h"

#include "platform/bits.h"
#include "platform/registrykey.h"
#include "platform/securityattributes.h"

#include <windows.h>

#include <sysinfoapi.h>

#include <vector>

namespace {

std::uint32_t SettingOf(HKEY root, const WCHAR* value) noexcept {
    try {
        const RegistryKey key(1, root, TEXT("Software\\Quillmar"), KEY_READ, NullSecurityAttributes().get());
        std::uint32_t count = 0;
        key.ValueRead(value, count);
        return count;
    } catch (...) {
        return 0;
    }
}

std::uint32_t Override() noexcept {
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        for (const WCHAR* value : {TEXT("NumCores"), TEXT("NumCpus")}) {
            if (const std::uint32_t count = SettingOf(root, value); count != 0) return count;
        }
    }
    return 0;
}

// Nothing where the system doesn't tell.
std::vector<SYSTEM_LOGICAL_PROCESSOR_INFORMATION> LogicalProcessorInformation() {
    std::vector<SYSTEM_LOGICAL_PROCESSOR_INFORMATION> entries(1);
    DWORD size = 0;
    if (GetLogicalProcessorInformation(entries.data(), &size) != FALSE ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return {};
    }
    entries.resize(size / sizeof entries[0]);
    if (GetLogicalProcessorInformation(entries.data(), &size) == FALSE) return {};
    return entries;
}

}  // namespace

ProcessorCount ProcessorCounts(bool allowOverride) {
    const std::uint32_t setting = allowOverride ? Override() : 0;
    if (setting != 0) return {setting, setting};
    ProcessorCount counts{0, 0};
    for (const auto& entry : LogicalProcessorInformation()) {
        if (entry.Relationship != RelationProcessorCore) continue;
        ++counts.cores;
        counts.logicalProcessors += static_cast<std::uint32_t>(BitCount64(entry.ProcessorMask));
    }
    return counts;
}
