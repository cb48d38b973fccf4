// Microsoft's io.h: searches in folders. Beside them stand the calls on files that Microsoft has in stdio.h,
// wchar.h and sys/stat.h, which here are the C library's own.
#pragma once

#include "winapi/types.h"

#include <cstdio>

#include <sys/stat.h>

#define _A_SUBDIR 0x10

// Without times and size, which would cost a look at each file.
struct _wfinddata64i32_t {
    unsigned attrib;
    WCHAR name[MAX_PATH];
};

// A search as FindFirstFileW tells it. Its handle, and 0 for each further match; -1 with errno set, which is
// ENOENT where no match is left.
[[nodiscard]] std::intptr_t _wfindfirst64i32(const WCHAR* pattern, _wfinddata64i32_t* found) noexcept;
int _wfindnext64i32(std::intptr_t search, _wfinddata64i32_t* found) noexcept;
int _findclose(std::intptr_t search) noexcept;

// The C library makes macros of st_atime and its kin, which lead to these members. The time of making is
// that of the last change of the file's facts.
struct WINAPI_SECONDS {
    std::int64_t tv_sec;
};
struct _stat64 {
    unsigned short st_mode;
    std::int64_t st_size;
    WINAPI_SECONDS st_atim, st_mtim, st_ctim;
};
#define _S_IFDIR 0x4000
#define _S_IFREG 0x8000

// Facts of what the path leads to. 0, or -1 with errno set.
int _wstat64(const WCHAR* path, struct _stat64* facts) noexcept;

// Removes a file or a link. 0, or -1 with errno set: EACCES for a folder, a read-only file, and one that is
// open with a handle that doesn't share removal.
int _wremove(const WCHAR* path) noexcept;

// As _wfopen_s, which lets readers share the file with readers and nobody else, but with one of share.h's
// values for what is shared. Null with errno set on failure: EACCES for what others don't share.
[[nodiscard]] std::FILE* _wfsopen(const WCHAR* path, const WCHAR* mode, int share) noexcept;

int _fseeki64(std::FILE* stream, std::int64_t offset, int origin) noexcept;
[[nodiscard]] std::int64_t _ftelli64(std::FILE* stream) noexcept;

[[nodiscard]] int _fileno(std::FILE* stream) noexcept;
// In bytes; -1 with errno set where the descriptor has none.
[[nodiscard]] std::int64_t _filelengthi64(int descriptor) noexcept;
