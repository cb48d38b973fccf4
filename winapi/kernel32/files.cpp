#include "winapi/files.h"

#include "filesharing.h"
#include "filetime.h"
#include "kernelobject.h"
#include "openfile.h"
#include "paths.h"

#include <limits>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>

using winapi::AtBorder;
using winapi::Failure;
using winapi::ObjectOf;

namespace {

struct FileObject : winapi::KernelObject {
    FileObject(winapi::Descriptor opened, unsigned has) noexcept : file(std::move(opened)), rights(has) {}

    winapi::Descriptor file;
    unsigned rights;
};

unsigned RightsOf(DWORD access) noexcept {
    if ((access & GENERIC_ALL) != 0) return winapi::allFileRights;
    return ((access & GENERIC_READ) != 0 ? winapi::mayRead : 0U) |
           ((access & GENERIC_WRITE) != 0 ? winapi::mayWrite : 0U) |
           ((access & DELETE) != 0 ? winapi::mayRemove : 0U);
}

HANDLE OpenHandle(LPCWSTR path, DWORD access, DWORD share, DWORD disposition, DWORD flags) {
    constexpr DWORD taken =
        FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_ARCHIVE | FILE_FLAG_SEQUENTIAL_SCAN | FILE_FLAG_RANDOM_ACCESS;
    if ((flags & ~taken) != 0) throw Failure{ERROR_NOT_SUPPORTED};
    const unsigned rights = RightsOf(access);
    const bool emptiesUnasked = disposition == TRUNCATE_EXISTING && (rights & winapi::mayWrite) == 0;
    if (disposition < CREATE_NEW || disposition > TRUNCATE_EXISTING || emptiesUnasked ||
        share > winapi::allFileRights) {
        throw Failure{ERROR_INVALID_PARAMETER};
    }
    if (path == nullptr || *path == 0) throw Failure{ERROR_PATH_NOT_FOUND};

    // What empties a file needs the right to write, whatever its handle may do then.
    const unsigned needed = rights | (disposition == CREATE_ALWAYS ? winapi::mayWrite : 0U);
    auto [descriptor, existed] =
        winapi::OpenFile(winapi::SystemPath(path), {needed, share, disposition, O_CLOEXEC});
    const HANDLE handle = winapi::NewHandle(std::make_shared<FileObject>(std::move(descriptor), rights));
    const bool tells = disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
    if (tells) SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

// Reads or writes all of `size` bytes, in as many calls as it takes.
template <class Unit, class Call>
BOOL Transfer(HANDLE file, winapi::FileRight right, Unit* data, DWORD size, LPDWORD count,
              LPOVERLAPPED overlapped, Call call) noexcept {
    return AtBorder(FALSE, [&] {
        if (count == nullptr || overlapped != nullptr) throw Failure{ERROR_INVALID_PARAMETER};
        *count = 0;
        const auto object = ObjectOf<FileObject>(file);
        if ((object->rights & right) == 0) throw Failure{ERROR_ACCESS_DENIED};
        while (*count < size) {
            const ssize_t moved =
                winapi::Retry([&] { return call(object->file.Get(), data + *count, size - *count); });
            if (moved < 0) winapi::FailErrno();
            if (moved == 0) break;
            *count += static_cast<DWORD>(moved);
        }
        return TRUE;
    });
}

void TellTime(LPFILETIME target, const timespec& moment) noexcept {
    if (target != nullptr) *target = winapi::FileTimeOf(winapi::FileTimeFromTimespec(moment));
}

struct stat FactsOf(HANDLE file) {
    struct stat facts {};
    if (fstat(ObjectOf<FileObject>(file)->file.Get(), &facts) != 0) winapi::FailErrno();
    return facts;
}

}  // namespace

HANDLE WINAPI CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD disposition,
                          DWORD flags, HANDLE) noexcept {
    return AtBorder(INVALID_HANDLE_VALUE,
                    [&] { return OpenHandle(path, access, share, disposition, flags); });
}

BOOL WINAPI ReadFile(HANDLE file, LPVOID data, DWORD size, LPDWORD count, LPOVERLAPPED overlapped) noexcept {
    return Transfer(file, winapi::mayRead, static_cast<BYTE*>(data), size, count, overlapped, read);
}

BOOL WINAPI WriteFile(HANDLE file, LPCVOID data, DWORD size, LPDWORD count,
                      LPOVERLAPPED overlapped) noexcept {
    return Transfer(file, winapi::mayWrite, static_cast<const BYTE*>(data), size, count, overlapped, write);
}

BOOL WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position,
                             DWORD method) noexcept {
    return AtBorder(FALSE, [&] {
        constexpr int origins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
        const auto object = ObjectOf<FileObject>(file);
        if (method > FILE_END) throw Failure{ERROR_INVALID_PARAMETER};
        const off_t moved = lseek(object->file.Get(), distance.QuadPart, origins[method]);
        if (moved < 0) throw Failure{errno == EINVAL ? ERROR_NEGATIVE_SEEK : winapi::ErrorFromErrno(errno)};
        if (position != nullptr) position->QuadPart = moved;
        return TRUE;
    });
}

BOOL WINAPI GetFileSizeEx(HANDLE file, PLARGE_INTEGER size) noexcept {
    return AtBorder(FALSE, [&] {
        size->QuadPart = FactsOf(file).st_size;
        return TRUE;
    });
}

BOOL WINAPI FlushFileBuffers(HANDLE file) noexcept {
    return AtBorder(FALSE, [&] {
        const auto object = ObjectOf<FileObject>(file);
        if ((object->rights & winapi::mayWrite) == 0) throw Failure{ERROR_ACCESS_DENIED};
        if (fsync(object->file.Get()) != 0) winapi::FailErrno();
        return TRUE;
    });
}

BOOL WINAPI GetFileTime(HANDLE file, LPFILETIME made, LPFILETIME lastAccess, LPFILETIME lastWrite) noexcept {
    return AtBorder(FALSE, [&] {
        const struct stat facts = FactsOf(file);
        TellTime(made, facts.st_ctim);
        TellTime(lastAccess, facts.st_atim);
        TellTime(lastWrite, facts.st_mtim);
        return TRUE;
    });
}

DWORD WINAPI GetFileAttributesW(LPCWSTR path) noexcept {
    return AtBorder(INVALID_FILE_ATTRIBUTES, [&] {
        const std::string file = winapi::SystemPath(path);
        struct stat facts {};
        if (lstat(file.c_str(), &facts) != 0) throw Failure{winapi::ErrorForFile(errno, file)};
        const bool isLink = S_ISLNK(facts.st_mode);
        // A link that leads nowhere leaves its own facts.
        if (isLink) static_cast<void>(stat(file.c_str(), &facts));
        return static_cast<DWORD>(S_ISDIR(facts.st_mode) ? FILE_ATTRIBUTE_DIRECTORY
                                                         : FILE_ATTRIBUTE_ARCHIVE) |
               (winapi::IsReadOnly(facts) ? FILE_ATTRIBUTE_READONLY : 0U) |
               (isLink ? FILE_ATTRIBUTE_REPARSE_POINT : 0U);
    });
}

BOOL WINAPI SetFileAttributesW(LPCWSTR path, DWORD attributes) noexcept {
    return AtBorder(FALSE, [&] {
        const std::string file = winapi::SystemPath(path);
        constexpr mode_t all = S_IWUSR | S_IWGRP | S_IWOTH;
        struct stat facts {};
        if (stat(file.c_str(), &facts) != 0) throw Failure{winapi::ErrorForFile(errno, file)};
        const bool readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
        const mode_t mode = readOnly ? facts.st_mode & ~all : facts.st_mode | S_IWUSR;
        if (chmod(file.c_str(), mode & 07777) != 0) winapi::FailErrno();
        return TRUE;
    });
}
