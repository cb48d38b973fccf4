// Files by handle, as Microsoft's fileapi.h describes them.
//
// Handles share a file as Windows has it: an opening fails with ERROR_SHARING_VIOLATION if it asks for what
// another handle doesn't share, or doesn't share what another handle has. This holds between all processes
// of this layer, on local file systems; other programs see nothing of it. A file without write permission is
// a read-only one, for every user. A named pipe is read as far as something stands in it, and can't be opened
// for writing while nobody reads it: no call waits for another process.
#pragma once

#include "winapi/errorcodes.h"
#include "winapi/handles.h"
#include "winapi/security.h"

#define GENERIC_READ 0x80000000U
#define GENERIC_WRITE 0x40000000U
#define GENERIC_ALL 0x10000000U
#define FILE_SHARE_READ 0x1
#define FILE_SHARE_WRITE 0x2
#define FILE_SHARE_DELETE 0x4
#define CREATE_NEW 1
#define CREATE_ALWAYS 2
#define OPEN_EXISTING 3
#define OPEN_ALWAYS 4
#define TRUNCATE_EXISTING 5
#define FILE_BEGIN 0
#define FILE_CURRENT 1
#define FILE_END 2
#define FILE_ATTRIBUTE_READONLY 0x1
#define FILE_ATTRIBUTE_DIRECTORY 0x10
#define FILE_ATTRIBUTE_ARCHIVE 0x20
#define FILE_ATTRIBUTE_NORMAL 0x80
#define FILE_ATTRIBUTE_REPARSE_POINT 0x400
#define INVALID_FILE_ATTRIBUTES 0xFFFFFFFFU
#define FILE_FLAG_RANDOM_ACCESS 0x10000000
#define FILE_FLAG_SEQUENTIAL_SCAN 0x08000000
#define IO_REPARSE_TAG_SYMLINK 0xA000000CU
#define IsReparseTagNameSurrogate(tag) ((tag)&0x20000000)

#define ERROR_NO_MORE_FILES 18
#define ERROR_SHARING_VIOLATION 32
#define ERROR_NOT_SUPPORTED 50
#define ERROR_FILE_EXISTS 80
#define ERROR_NEGATIVE_SEEK 131
#define ERROR_DIR_NOT_EMPTY 145
#define ERROR_DIRECTORY 267

struct OVERLAPPED;
using LPOVERLAPPED = OVERLAPPED*;

// Opens or makes a file; INVALID_HANDLE_VALUE on failure. Where CREATE_ALWAYS and OPEN_ALWAYS succeed, the
// last error is ERROR_ALREADY_EXISTS for a file that was there and ERROR_SUCCESS for a new one. Folders give
// ERROR_ACCESS_DENIED. Of `flags` the attributes NORMAL and ARCHIVE and the two cache hints are taken, and
// change nothing; others give ERROR_NOT_SUPPORTED. Security attributes and template aren't looked at.
[[nodiscard]] HANDLE WINAPI CreateFileW(LPCWSTR path, DWORD access, DWORD share,
                                        LPSECURITY_ATTRIBUTES attributes, DWORD disposition, DWORD flags,
                                        HANDLE templateFile) noexcept;

// Each moves the position by the bytes that it tells, on failure too. Reading ends early at the end of the
// file alone, with success. Nothing is overlapped: the last argument must be null. ERROR_ACCESS_DENIED
// without the right, ERROR_DISK_FULL where the file may not grow.
BOOL WINAPI ReadFile(HANDLE file, LPVOID data, DWORD size, LPDWORD count, LPOVERLAPPED overlapped) noexcept;
BOOL WINAPI WriteFile(HANDLE file, LPCVOID data, DWORD size, LPDWORD count, LPOVERLAPPED overlapped) noexcept;

// `position`, which may be null, gets the new position. ERROR_NEGATIVE_SEEK for one ahead of the start.
BOOL WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position,
                             DWORD method) noexcept;

BOOL WINAPI GetFileSizeEx(HANDLE file, PLARGE_INTEGER size) noexcept;
BOOL WINAPI FlushFileBuffers(HANDLE file) noexcept;

// Each pointer may be null. The time of making is that of the last change of the file's facts.
BOOL WINAPI GetFileTime(HANDLE file, LPFILETIME made, LPFILETIME lastAccess, LPFILETIME lastWrite) noexcept;

// READONLY, REPARSE_POINT, and DIRECTORY or ARCHIVE; of a link that it is one and where it leads. On failure
// INVALID_FILE_ATTRIBUTES.
DWORD WINAPI GetFileAttributesW(LPCWSTR path) noexcept;

// FILE_ATTRIBUTE_READONLY takes away all permission to write, its absence gives it to the owner.
BOOL WINAPI SetFileAttributesW(LPCWSTR path, DWORD attributes) noexcept;

// Of the volume that holds a folder; each pointer may be null. ERROR_DIRECTORY for a file.
BOOL WINAPI GetDiskFreeSpaceExW(LPCWSTR folder, PULARGE_INTEGER freeForCaller, PULARGE_INTEGER total,
                                PULARGE_INTEGER free) noexcept;

// Gives the path as it is if it leads somewhere: there are no short names. The length without the terminator,
// or the size needed with it where `size` is too small, or 0.
DWORD WINAPI GetLongPathNameW(LPCWSTR path, LPWSTR longPath, DWORD size) noexcept;

// A file as its folder tells it, without the times and sizes that would cost a look at each file. A link to
// a folder has the attributes of both; one that leads nowhere counts as a file.
struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;  // DIRECTORY or ARCHIVE, and REPARSE_POINT
    DWORD dwReserved0;       // the tag of a reparse point
    WCHAR cFileName[MAX_PATH];
};
using LPWIN32_FIND_DATAW = WIN32_FIND_DATAW*;

// The first match, in the order of the file system, of a pattern whose last name may have * for any units
// and ? for one; ".*" at its end goes for no extension, too, and A to Z for both cases. Names with a
// backslash are passed over, as no path could tell them. ERROR_FILE_NOT_FOUND without a match.
[[nodiscard]] HANDLE WINAPI FindFirstFileW(LPCWSTR pattern, LPWIN32_FIND_DATAW found) noexcept;
BOOL WINAPI FindClose(HANDLE search) noexcept;
