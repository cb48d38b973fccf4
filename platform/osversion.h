// Name and version of the operating system. Nothing here raises but what the memory layer raises.
#pragma once

#include "text/text.h"

#include <windows.h>

#include <sysinfoapi.h>

#include <cstdint>

// What the system tells. It tells programs that don't say in their manifest what they are made for that it is
// version 6.2, if it is a later one; then major and minor version are those of its kernel32.dll, and 0xFFFF
// both where that file has no version resource. The other fields stay as the system gave them.
[[nodiscard]] OSVERSIONINFOEXW GetOsVersionInfo();

// As "Windows 7 (Service Pack 1), 64 bit". The word size is the system's, not that of the process.
[[nodiscard]] CStringA OsName();

// 1000 times the major version plus the minor one: 10000 for Windows 10, 6001 for Windows 7.
[[nodiscard]] std::uint32_t OsVersionNumber();

// Product version of kernel32.dll, W for a workstation or S for a server, and x86: "10.0.19041.2075.W.x86".
// Each of the four numbers is 65535 where that file has no version resource.
[[nodiscard]] CStringA OsBuildString();

// Whether the system is that of an x86-64 machine, whatever the process is.
[[nodiscard]] bool Is64BitWindows() noexcept;

namespace kestrolumen::detail {

// OsName of a version. `isServerR2` tells the later Windows Server 2003 from the first one.
[[nodiscard]] CStringA OsNameOf(const OSVERSIONINFOEXW& version, bool is64Bit, bool isServerR2);

}  // namespace kestrolumen::detail
