// Version resources, of Windows' own modules (RT_VERSION) and of native ones, which hold the same block in
// the ELF section ".version_resource" (see cmake/VersionResource.cmake).
#pragma once

#include "winapi/types.h"

#define VS_FFI_SIGNATURE 0xFEEF04BDU
#define VS_FFI_STRUCVERSION 0x00010000U

struct VS_FIXEDFILEINFO {
    DWORD dwSignature;
    DWORD dwStrucVersion;
    DWORD dwFileVersionMS;
    DWORD dwFileVersionLS;
    DWORD dwProductVersionMS;
    DWORD dwProductVersionLS;
    DWORD dwFileFlagsMask;
    DWORD dwFileFlags;
    DWORD dwFileOS;
    DWORD dwFileType;
    DWORD dwFileSubtype;
    DWORD dwFileDateMS;
    DWORD dwFileDateLS;
};
static_assert(sizeof(VS_FIXEDFILEINFO) == 52);

// The size in bytes of the file's version resource, or 0. `handle`, if given, is set to 0.
DWORD WINAPI GetFileVersionInfoSizeW(LPCWSTR path, LPDWORD handle) noexcept;

// Copies the file's version resource, or as much as fits into `size` bytes.
BOOL WINAPI GetFileVersionInfoW(LPCWSTR path, DWORD handle, DWORD size, LPVOID block) noexcept;

// Looks up a value in a block that GetFileVersionInfoW filled: "\" (VS_FIXEDFILEINFO),
// "\VarFileInfo\Translation" or "\StringFileInfo\xxxxyyyy\Name", names without regard to case.
// `value` points into the block; `length` counts bytes, or for a text its units with the terminator.
// FALSE and ERROR_RESOURCE_TYPE_NOT_FOUND when there is no such value. Nothing beyond the block's own
// length is read, whatever its bytes say.
BOOL WINAPI VerQueryValueW(LPCVOID block, LPCWSTR path, LPVOID* value, PUINT length) noexcept;
