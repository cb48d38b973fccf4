#include "platform/moduleusage.h"

#include "platform/modulepaths.h"

#include <windows.h>

#include <tlhelp32.h>

#include <memory>

namespace {

struct CloseSnapshot {
    void operator()(void* snapshot) const noexcept { CloseHandle(snapshot); }
};

}  // namespace

std::int32_t ModuleUsageCount(const CStringW& fileName) {
    const HANDLE handle = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, 0);
    if (handle == INVALID_HANDLE_VALUE) return -1;
    const std::unique_ptr<void, CloseSnapshot> snapshot(handle);
    MODULEENTRY32W module{};
    module.dwSize = sizeof module;
    for (BOOL found = Module32FirstW(handle, &module); found != FALSE;
         found = Module32NextW(handle, &module)) {
        CStringW drive, dir, fname, ext;
        SplitPath(module.szExePath, drive, dir, fname, ext);
        if ((fname + ext).CompareNoCase(fileName.GetString()) == 0) {
            return static_cast<std::int32_t>(module.ProccntUsage);
        }
    }
    return -1;
}
