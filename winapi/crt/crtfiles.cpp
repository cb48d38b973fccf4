#include "crtfailure.h"
#include "kernel32/descriptor.h"
#include "kernel32/filesharing.h"
#include "kernel32/openfile.h"
#include "kernel32/paths.h"

#include <direct.h>
#include <io.h>

#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>

using winapi::Failure;

namespace {

// Runs a call on a path and gives 0 for its success.
template <class Call>
int OnPath(const WCHAR* path, Call call) noexcept {
    return winapi::AtCrtBorder(-1, [&] {
        if (path == nullptr) throw Failure{ERROR_INVALID_PARAMETER};
        const std::string file = winapi::SystemPath(path);
        if (call(file.c_str()) != 0) throw Failure{winapi::ErrorForFile(errno, file)};
        return 0;
    });
}

// Windows' kinds of files are those of POSIX but for two: a socket counts as a pipe, a block device as a
// device. Taken as they are, their bits would make folders of them.
unsigned short WindowsMode(mode_t mode) noexcept {
    if (S_ISSOCK(mode)) mode = (mode & ~mode_t{S_IFMT}) | S_IFIFO;
    if (S_ISBLK(mode)) mode = (mode & ~mode_t{S_IFMT}) | S_IFCHR;
    return static_cast<unsigned short>(mode);
}

bool LeadsToFolder(const char* path) noexcept {
    struct stat facts {};
    return stat(path, &facts) == 0 && S_ISDIR(facts.st_mode);
}

bool RemovalIsDenied(const char* path) noexcept {
    const winapi::Descriptor file(open(path, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    return file.IsOpen() && winapi::IsDenied(file.Get(), winapi::mayRemove);
}

}  // namespace

int _wstat64(const WCHAR* path, struct _stat64* facts) noexcept {
    return OnPath(path, [&](const char* file) {
        struct stat found {};
        if (stat(file, &found) != 0) return -1;
        *facts = {.st_mode = WindowsMode(found.st_mode),
                  .st_size = found.st_size,
                  .st_atim = {found.st_atim.tv_sec},
                  .st_mtim = {found.st_mtim.tv_sec},
                  .st_ctim = {found.st_ctim.tv_sec}};
        return 0;
    });
}

int _wmkdir(const WCHAR* path) noexcept {
    return OnPath(path, [](const char* folder) { return mkdir(folder, 0777); });
}

int _wrmdir(const WCHAR* path) noexcept {
    return OnPath(path, [](const char* folder) {
        struct stat facts {};
        if (lstat(folder, &facts) != 0) return -1;
        if (!LeadsToFolder(folder)) throw Failure{ERROR_INVALID_PARAMETER};
        return S_ISLNK(facts.st_mode) ? unlink(folder) : rmdir(folder);
    });
}

int _wremove(const WCHAR* path) noexcept {
    return OnPath(path, [](const char* file) {
        struct stat facts {};
        if (lstat(file, &facts) != 0) return -1;
        const bool isRefused = LeadsToFolder(file) || (S_ISREG(facts.st_mode) &&
                                                       (winapi::IsReadOnly(facts) || RemovalIsDenied(file)));
        if (isRefused) throw Failure{ERROR_ACCESS_DENIED};
        return unlink(file);
    });
}
