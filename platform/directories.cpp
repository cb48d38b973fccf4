#include "platform/directories.h"

#include "errors/vex.h"
#include "platform/fileinfo.h"
#include "platform/detail/filestatus.h"
#include "platform/modulepaths.h"

#include <direct.h>
#include <fileapi.h>
#include <io.h>
#include <profileapi.h>
#include <share.h>
#include <stdio.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <string>

namespace {

bool IsDirectory(const WCHAR* path) noexcept {
    const auto status = kestrolumen::detail::StatusOf(path);
    return status && kestrolumen::detail::IsDirectory(*status);
}

// A search of the runtime library, ended by the destructor, that stands on a match or behind the last one.
class Search {
  public:
    explicit Search(const WCHAR* pattern) noexcept
        : search_(_wfindfirst64i32(pattern, &entry_)), isOnMatch_(search_ != -1) {
        PassOverDots();
    }
    ~Search() {
        if (search_ != -1) _findclose(search_);
    }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    [[nodiscard]] bool IsOnMatch() const noexcept { return isOnMatch_; }
    // Zero-terminated.
    [[nodiscard]] StdWStringView Name() const noexcept { return entry_.name; }
    [[nodiscard]] bool IsSubdirectory() const noexcept { return (entry_.attrib & _A_SUBDIR) != 0; }
    void Next() noexcept {
        Step();
        PassOverDots();
    }

  private:
    void Step() noexcept { isOnMatch_ = _wfindnext64i32(search_, &entry_) == 0; }
    // The directory's own entries for itself and its parent.
    void PassOverDots() noexcept {
        while (isOnMatch_ && (Name() == TEXT(".") || Name() == TEXT(".."))) Step();
    }

    _wfinddata64i32_t entry_;
    std::intptr_t search_;
    bool isOnMatch_;
};

// `path` has the directory and serves as scratch space for the paths below it.
bool Walk(StdWString& path, const std::function<bool(const WCHAR*)>& callback) {
    const std::size_t length = path.size();
    path += TEXT("\\*.*");
    bool isStopped = false;
    for (Search search(path.c_str()); search.IsOnMatch() && !isStopped; search.Next()) {
        path.resize(length + 1);
        path += search.Name();
        isStopped = search.IsSubdirectory() ? Walk(path, callback) : !callback(path.c_str());
    }
    path.resize(length);
    return isStopped;
}

// What else a reparse point can be, such as a file that is kept elsewhere, is no way out of the tree. A
// system that gives no tag means a link.
bool IsLink(const CStringW& path) noexcept {
    const DWORD attributes = GetFileAttributesW(path.GetString());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return false;
    }
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(path.GetString(), &found);
    if (search == INVALID_HANDLE_VALUE) return true;
    FindClose(search);
    return found.dwReserved0 == 0 || IsReparseTagNameSurrogate(found.dwReserved0);
}

// Ours is the local clock. A difference beyond 32 bits is cut to their bounds.
std::int32_t SecondsAheadOfOurs(std::int64_t time) noexcept {
    using Limits = std::numeric_limits<std::int32_t>;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const std::int64_t ours = std::chrono::duration_cast<std::chrono::seconds>(now).count();
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(time - ours, Limits::min(), Limits::max()));
}

// Makes a file in the directory, whose path ends in a backslash, and removes it.
bool ProbeWrite(const CStringW& directory, std::int32_t* clockSkewSeconds) {
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    const CStringW probe = CStringWFormat(TEXT("%s%16.16I64X.TST"), directory, count.QuadPart);
    if (!CreateEmptyFile(probe.GetString())) return false;
    if (clockSkewSeconds != nullptr) {
        const auto status = kestrolumen::detail::StatusOf(probe.GetString());
        *clockSkewSeconds = status ? SecondsAheadOfOurs(status->st_ctime) : 0;
    }
    static_cast<void>(_wremove(probe.GetString()));
    return true;
}

}  // namespace

CStringW MakeLongPathName(const CStringW& path) {
    WCHAR buffer[257];
    const DWORD length = GetLongPathNameW(path.GetString(), buffer, 257);
    if (length == 0) throw VexInvalidDirectory("MakeLongPathName", VexCode::NoLongPathName, path);
    if (length < 257) return CStringW(buffer, static_cast<int>(length));
    // What changes between the two calls leaves the text empty.
    std::vector<WCHAR> larger(std::size_t{length} + 1);
    GetLongPathNameW(path.GetString(), larger.data(), length + 1);
    return CStringW(larger.data());
}

bool DirectoryExists(const CStringW& path, bool probeWrite, std::int32_t* clockSkewSeconds) {
    CStringW directory = RemoveTrailingBackslash(path);
    auto status = kestrolumen::detail::StatusOf(directory.GetString());
    if (!status) {
        // A drive's root has to have its backslash.
        directory += TEXT('\\');
        status = kestrolumen::detail::StatusOf(directory.GetString());
    }
    if (!status || !kestrolumen::detail::IsDirectory(*status)) return false;
    return !probeWrite || ProbeWrite(AddTrailingBackslash(directory.GetString()), clockSkewSeconds);
}

std::int64_t DiskFreeSpace(const WCHAR* path, bool forCaller) noexcept {
    ULARGE_INTEGER freeForCaller, total, free;
    if (path == nullptr || !GetDiskFreeSpaceExW(path, &freeForCaller, &total, &free)) return -1;
    return static_cast<std::int64_t>((forCaller ? freeForCaller : free).QuadPart);
}

std::vector<CStringW> ListDirectory(const WCHAR* pattern) {
    std::vector<CStringW> paths;
    if (pattern == nullptr) return paths;
    CStringW drive, dir, fname, ext;
    SplitPath(pattern, drive, dir, fname, ext);
    const CStringW prefix = drive + dir;
    for (Search search(pattern); search.IsOnMatch(); search.Next())
        paths.push_back(prefix + search.Name().data());
    return paths;
}

bool WalkDirectory(const WCHAR* directory, const std::function<bool(const WCHAR*)>& callback) {
    if (directory == nullptr) return false;
    StdWString path(directory);
    return Walk(path, callback);
}

bool CreateDirectoryTree(const WCHAR* path) {
    if (path == nullptr) return false;
    const CStringW directory = RemoveTrailingBackslash(path);
    const auto nextBackslash = [&](int from) { return directory.Find(TEXT('\\'), from); };
    int end = nextBackslash(0);
    while (end >= 0 && (end = nextBackslash(end + 1)) >= 0) {
        const CStringW ahead = directory.Left(end);
        if (!kestrolumen::detail::StatusOf(ahead.GetString())) static_cast<void>(_wmkdir(ahead.GetString()));
    }
    static_cast<void>(_wmkdir(directory.GetString()));
    return IsDirectory(directory.GetString());
}

bool RemoveDirectoryTree(const WCHAR* path) {
    // With a backslash behind it an empty path would be the drive's root.
    if (path == nullptr || *path == 0) return false;
    const CStringW directory = RemoveTrailingBackslash(path);
    if (IsLink(directory)) return _wrmdir(directory.GetString()) == 0;
    bool isComplete = true;
    for (const CStringW& entry : ListDirectory((directory + TEXT("\\*")).GetString())) {
        const bool isRemoved = DirectoryExists(entry, false, nullptr) ? RemoveDirectoryTree(entry.GetString())
                                                                      : _wremove(entry.GetString()) == 0;
        isComplete = isComplete && isRemoved;
    }
    return _wrmdir(directory.GetString()) == 0 && isComplete;
}
