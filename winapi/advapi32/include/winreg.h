// The registry, as Microsoft's winreg.h describes it, kept in one file.
//
// The file is the one that the environment variable KESTROLUMEN_REGISTRY names, else kestrolumen/registry in
// the user's folder for state (XDG_STATE_HOME, else ~/.local/state). The first write makes it; without it the
// registry is empty. It lies on a local file system, and may be a link.
//
// Each write is whole or not there at all, whoever is killed or loses power when; writers, in any number of
// processes of 32 and 64 bits, come one after the other, and none loses what another has written. Readers
// never wait for other processes. A file that can't be understood gives ERROR_BADDB and is left as it is.
//
// Names of keys and values keep their case and are found without regard to it. Subkeys are enumerated in the
// order of their upper-case names, values in the order of their making. There is one view: the two requests
// for one change nothing, and together are refused. HKEY_CLASSES_ROOT and HKEY_USERS are trees of their own,
// not joined with others. Access rights of handles are kept; security attributes, classes and options of a
// new key aren't looked at.
//
// All calls give ERROR_SUCCESS or their error, and leave the last error alone. What they have in common:
// ERROR_INVALID_HANDLE for what is no open key, ERROR_KEY_DELETED for one whose key has been deleted (and not
// been made again), ERROR_ACCESS_DENIED for a handle without the right or a file that can't be written.
#pragma once

#include "winapi/errorcodes.h"
#include "winapi/handles.h"
#include "winapi/security.h"
#include "winapi/types.h"

using HKEY = struct HKEY__*;
using PHKEY = HKEY*;
using ACCESS_MASK = DWORD;
using REGSAM = ACCESS_MASK;
using LSTATUS = LONG;

#define WINAPI_ROOT_KEY(number) (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(number##U))))
#define HKEY_CLASSES_ROOT WINAPI_ROOT_KEY(0x80000000)
#define HKEY_CURRENT_USER WINAPI_ROOT_KEY(0x80000001)
#define HKEY_LOCAL_MACHINE WINAPI_ROOT_KEY(0x80000002)
#define HKEY_USERS WINAPI_ROOT_KEY(0x80000003)
#define HKEY_PERFORMANCE_DATA WINAPI_ROOT_KEY(0x80000004)  // no key opens below this one
#define HKEY_CURRENT_CONFIG WINAPI_ROOT_KEY(0x80000005)
#define HKEY_DYN_DATA WINAPI_ROOT_KEY(0x80000006)  // nor below this one

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_WOW64_64KEY 0x0100
#define KEY_WOW64_32KEY 0x0200
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_ALL_ACCESS 0xF003F

#define REG_NONE 0U
#define REG_SZ 1U
#define REG_EXPAND_SZ 2U
#define REG_BINARY 3U
#define REG_DWORD 4U
#define REG_MULTI_SZ 7U
#define REG_QWORD 11U

#define REG_CREATED_NEW_KEY 1
#define REG_OPENED_EXISTING_KEY 2

#define ERROR_MORE_DATA 234
#define ERROR_BADDB 1009
#define ERROR_KEY_DELETED 1018

// Opens a key; null and "" mean `key` itself. ERROR_FILE_NOT_FOUND when there is none,
// ERROR_BAD_PATHNAME for a path that begins with a backslash.
LSTATUS WINAPI RegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD options, REGSAM access, PHKEY result) noexcept;

// The same, but makes the key and those above it where they are missing; `disposition`, which may be null,
// tells whether it did. ERROR_INVALID_PARAMETER for a name of more than 255 units or a path of more than 512
// names.
LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR subkey, DWORD reserved, LPWSTR keyClass, DWORD options,
                               REGSAM access, LPSECURITY_ATTRIBUTES attributes, PHKEY result,
                               LPDWORD disposition) noexcept;

// Roots may be closed too, to no effect.
LSTATUS WINAPI RegCloseKey(HKEY key) noexcept;

// A value's kind, size in bytes and data as they were set: text ends in a zero unit only if that was set with
// it. A null or empty name is the key's default value. With a null `data` only kind and size are told; data
// that doesn't fit isn't copied, and then the result is ERROR_MORE_DATA with kind and size told.
LSTATUS WINAPI RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD kind, LPBYTE data,
                                LPDWORD size) noexcept;

LSTATUS WINAPI RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD kind, const BYTE* data,
                              DWORD size) noexcept;

LSTATUS WINAPI RegDeleteValueW(HKEY key, LPCWSTR name) noexcept;

// The value or the subkey at an index, ERROR_NO_MORE_ITEMS behind the last. `nameSize` counts units: the
// buffer's with the terminator before the call, the name's without it behind. A name that doesn't fit gives
// ERROR_MORE_DATA and is not copied. Classes and times of subkeys are not told: their pointers must be null.
LSTATUS WINAPI RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameSize, LPDWORD reserved,
                             LPDWORD kind, LPBYTE data, LPDWORD size) noexcept;
LSTATUS WINAPI RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameSize, LPDWORD reserved,
                             LPWSTR keyClass, LPDWORD classSize, PFILETIME lastWrite) noexcept;

// Tells the time of the last write alone: all other pointers must be null, else ERROR_INVALID_PARAMETER.
LSTATUS WINAPI RegQueryInfoKeyW(HKEY key, LPWSTR keyClass, LPDWORD classSize, LPDWORD reserved,
                                LPDWORD subkeys, LPDWORD longestSubkey, LPDWORD longestClass, LPDWORD values,
                                LPDWORD longestName, LPDWORD longestData, LPDWORD descriptorSize,
                                PFILETIME lastWrite) noexcept;

// Deletes a subkey with all below it; with a null one, everything in `key`, which stays.
LSTATUS WINAPI RegDeleteTreeW(HKEY key, LPCWSTR subkey) noexcept;
