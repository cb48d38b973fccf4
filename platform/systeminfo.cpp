#include "platform/systeminfo.h"

#include "platform/currentusersecurityattributes.h"
#include "platform/registrykey.h"
#include "platform/securityattributes.h"

#include <windows.h>

#include <errhandlingapi.h>
#include <fileapi.h>
#include <winbase.h>
#include <winuser.h>

#include <iterator>

SYSTEM_INFO NativeSystemInfo() noexcept {
    SYSTEM_INFO info;
    GetNativeSystemInfo(&info);
    return info;
}

SYSTEM_INFO SystemInfo() noexcept {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info;
}

MEMORYSTATUSEX MemoryStatus() noexcept {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    GlobalMemoryStatusEx(&status);
    return status;
}

char kestrolumen::detail::SystemDrive(UINT(WINAPI* typeOfDrive)(LPCSTR root)) noexcept {
    for (const UINT kind : {UINT{DRIVE_FIXED}, UINT{DRIVE_REMOTE}}) {
        for (char root[] = "A:\\"; root[0] <= 'Z'; ++root[0]) {
            if (typeOfDrive(root) == kind) return root[0];
        }
    }
    return 0;
}

std::uint32_t SystemVolumeSerial() noexcept {
    const char root[] = {kestrolumen::detail::SystemDrive(&GetDriveTypeA), ':', '\\', 0};
    if (root[0] == 0) return 0;
    DWORD serial = 0;
    const UINT mode = SetErrorMode(SEM_FAILCRITICALERRORS);
    const BOOL told = GetVolumeInformationA(root, nullptr, 0, &serial, nullptr, nullptr, nullptr, 0);
    SetErrorMode(mode);
    return told != FALSE ? serial : 0;
}

CStringW kestrolumen::detail::RegisteredComputerName() {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE,
                      TEXT("SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ComputerName"), 0, KEY_READ,
                      &key) != ERROR_SUCCESS) {
        return {};
    }
    WCHAR name[257] = {};
    DWORD kind = REG_NONE, size = 256;
    const LSTATUS result =
        RegQueryValueExW(key, TEXT("ComputerName"), nullptr, &kind, reinterpret_cast<BYTE*>(name), &size);
    RegCloseKey(key);
    return result == ERROR_SUCCESS && kind == REG_SZ ? CStringW(name) : CStringW();
}

CStringW ComputerName(bool unknownIfMissing, bool appendUserName) {
    WCHAR buffer[257] = {};
    DWORD size = std::size(buffer);
    CStringW name = GetComputerNameW(buffer, &size) != FALSE ? CStringW(buffer)
                                                             : kestrolumen::detail::RegisteredComputerName();
    if (name.IsEmpty() && unknownIfMissing) name = TEXT("Unknown");
    size = std::size(buffer);
    if (appendUserName && GetUserNameW(buffer, &size) != FALSE) name += CStringW(TEXT("-")) + buffer;
    return name;
}

CStringW UserName(bool unknownIfMissing) {
    const StdWString name = GetCurrentUserName();
    return name.empty() && unknownIfMissing ? TEXT("Unknown") : name.c_str();
}

bool IsExcelRunning() noexcept {
    return FindWindowA("XLMAIN", nullptr) != nullptr;
}

bool IsTabletMode() noexcept {
    try {
        const RegistryKey key(1, HKEY_CURRENT_USER,
                              TEXT("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\ImmersiveShell"), KEY_READ,
                              NullSecurityAttributes().get());
        return key.ValueReadInt(TEXT("TabletMode")) != 0;
    } catch (...) {
        return false;
    }
}
