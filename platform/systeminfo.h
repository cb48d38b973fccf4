// What the library runs on. Nothing here raises but what the memory layer raises: a query that fails gives
// the fallback that is told with it.
#pragma once

#include "platform/cpufeatures.h"
#include "platform/osversion.h"
#include "platform/processorcounts.h"
#include "text/text.h"

#include <windows.h>

#include <sysinfoapi.h>

#include <cstdint>

// The machine as it is, and as the process sees it: they differ for a 32-bit process on a 64-bit system.
[[nodiscard]] SYSTEM_INFO NativeSystemInfo() noexcept;
[[nodiscard]] SYSTEM_INFO SystemInfo() noexcept;

// Bytes of memory there are and are free now. All but `dwLength` is 0 if the system doesn't tell.
[[nodiscard]] MEMORYSTATUSEX MemoryStatus() noexcept;

// The serial number of the first drive, from A to Z, that is a fixed one, or else a network's; 0 without such
// a drive and for one that doesn't answer. No dialog comes up for that one.
[[nodiscard]] std::uint32_t SystemVolumeSerial() noexcept;

// The machine's name: the system's answer, or else what the registry holds for it. Where both are empty,
// "Unknown" if `unknownIfMissing` says so. With `appendUserName` "-" and the user's name follow, if the
// system tells that.
[[nodiscard]] CStringW ComputerName(bool unknownIfMissing, bool appendUserName);

// The name of the calling thread's user; where the system doesn't tell, empty or "Unknown".
[[nodiscard]] CStringW UserName(bool unknownIfMissing);

// Whether a main window of Excel is open on the desktop.
[[nodiscard]] bool IsExcelRunning() noexcept;

// Whether the system is in tablet mode: REG_DWORD "TabletMode" is other than 0, in the key
// SOFTWARE\Microsoft\Windows\CurrentVersion\ImmersiveShell below HKEY_CURRENT_USER (32-bit view).
[[nodiscard]] bool IsTabletMode() noexcept;

namespace kestrolumen::detail {

// What the registry holds for the machine's name: REG_SZ "ComputerName" of at most 256 bytes, in the key
// SYSTEM\CurrentControlSet\Control\ComputerName\ComputerName below HKEY_LOCAL_MACHINE; else empty.
[[nodiscard]] CStringW RegisteredComputerName();

// The letter of the drive whose serial number counts, by what GetDriveTypeA says of "A:\" to "Z:\": the first
// fixed drive, or else the first of a network; 0 when there is neither.
[[nodiscard]] char SystemDrive(UINT(WINAPI* typeOfDrive)(LPCSTR root)) noexcept;

}  // namespace kestrolumen::detail
