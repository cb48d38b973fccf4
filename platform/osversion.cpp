#include "platform/osversion.h"

#include "platform/fileversioninfo.h"
#include "platform/folders.h"

#include <windows.h>

#include <winuser.h>

namespace {

constexpr WORD unknown = 0xFFFF;

FileVersionInfo KernelVersion() {
    return FileVersionInfo(SystemDirectory() + TEXT("kernel32.dll"));
}

CStringA NameOf(const OSVERSIONINFOEXW& version, bool is64Bit, bool isServerR2) {
    const DWORD major = version.dwMajorVersion, minor = version.dwMinorVersion;
    const bool isWorkstation = version.wProductType == VER_NT_WORKSTATION;
    if (major == 10) return "10";
    if (major == 6 && isWorkstation) {
        switch (minor) {
            case 4:
                return "10";
            case 3:
                return "8.1";
            case 2:
                return "8";
            case 1:
                return "7";
            default:
                return "Vista";
        }
    }
    if (major == 6) {
        constexpr const char* servers[] = {"Server 2008", "Server 2008 R2", "Server 2012", "Server 2012 R2"};
        return servers[minor < 3 ? minor : 3];
    }
    if (major == 5 && minor == 2) {
        if (isServerR2) return "Server 2003 R2";
        if ((version.wSuiteMask & VER_SUITE_WH_SERVER) != 0) return "Home Server";
        return isWorkstation && is64Bit ? "XP Profession x64 Edition" : "Server 2003";
    }
    if (major == 5 && minor == 1) return "XP";
    if (major == 5 && minor == 0) return "2000";
    return CStringAFormat("%d.%d", major, minor);
}

}  // namespace

OSVERSIONINFOEXW GetOsVersionInfo() {
    OSVERSIONINFOEXW version{};
    version.dwOSVersionInfoSize = sizeof version;
    GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version));
    if (version.dwMajorVersion == 6 && version.dwMinorVersion == 2) {
        const FileVersionInfo kernel = KernelVersion();
        const bool loaded = kernel.data != nullptr;
        version.dwMajorVersion = loaded ? HIWORD(kernel.fixedInfo.dwProductVersionMS) : unknown;
        version.dwMinorVersion = loaded ? LOWORD(kernel.fixedInfo.dwProductVersionMS) : unknown;
    }
    return version;
}

CStringA kestrolumen::detail::OsNameOf(const OSVERSIONINFOEXW& version, bool is64Bit, bool isServerR2) {
    CStringA name = "Windows " + NameOf(version, is64Bit, isServerR2);
    if (version.szCSDVersion[0] != 0) name += CStringAFormat(" (%S)", version.szCSDVersion);
    return name + CStringAFormat(", %d bit", is64Bit ? 64 : 32);
}

CStringA OsName() {
    return kestrolumen::detail::OsNameOf(GetOsVersionInfo(), Is64BitWindows(),
                                         GetSystemMetrics(SM_SERVERR2) != 0);
}

std::uint32_t OsVersionNumber() {
    const OSVERSIONINFOEXW version = GetOsVersionInfo();
    return version.dwMajorVersion * 1000 + version.dwMinorVersion;
}

CStringA OsBuildString() {
    const FileVersionInfo kernel = KernelVersion();
    const DWORD high = kernel.data != nullptr ? kernel.fixedInfo.dwProductVersionMS : 0xFFFFFFFF;
    const DWORD low = kernel.data != nullptr ? kernel.fixedInfo.dwProductVersionLS : 0xFFFFFFFF;
    const char kind = GetOsVersionInfo().wProductType == VER_NT_WORKSTATION ? 'W' : 'S';
    return CStringAFormat("%u.%u.%u.%u.%c.x%d", HIWORD(high), LOWORD(high), HIWORD(low), LOWORD(low), kind,
                          86);
}

bool Is64BitWindows() noexcept {
    SYSTEM_INFO info;
    GetNativeSystemInfo(&info);
    return info.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64;
}
