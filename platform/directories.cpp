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
#include <optional>
#include <string>
#include <utility>

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

// What is left to do in a tree: entries of its directories, the next one last. A directory is read as a whole
// and its search ended before anything below it is met, so that a tree of any depth takes heap memory alone.
class ToDo {
  public:
    struct Entry {
        StdWString name;
        std::size_t parentLength;  // of the directory's path
        bool isDirectory;
        bool isVisited = false;  // a directory below which all is done
    };

    // Adds what the directory `path` has, the first entry as the next.
    void Add(const StdWString& path, const WCHAR* pattern) {
        const auto count = static_cast<std::ptrdiff_t>(entries_.size());
        for (Search search((path + pattern).c_str()); search.IsOnMatch(); search.Next()) {
            entries_.push_back({StdWString(search.Name()), path.size(), search.IsSubdirectory()});
        }
        std::reverse(entries_.begin() + count, entries_.end());
    }
    // Adds what the directory `path`, which is `entry`, has, and behind that the entry again.
    void AddThenVisit(Entry entry, const StdWString& path, const WCHAR* pattern) {
        entry.isVisited = true;
        entries_.push_back(std::move(entry));
        Add(path, pattern);
    }
    // The next entry, and `path`, that of the entry before it, becomes its own; nothing when all is done.
    std::optional<Entry> Next(StdWString& path) {
        if (entries_.empty()) return {};
        Entry entry = std::move(entries_.back());
        entries_.pop_back();
        path.resize(entry.parentLength);
        path += TEXT('\\');
        path += entry.name;
        return entry;
    }

  private:
    std::vector<Entry> entries_;
};

// What else a reparse point can be, such as a file that is kept elsewhere, is no way out of the tree. A
// system that gives no tag means a link.
bool IsLink(const WCHAR* path) noexcept {
    const DWORD attributes = GetFileAttributesW(path);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return false;
    }
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(path, &found);
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
    ToDo toDo;
    toDo.Add(path, TEXT("\\*.*"));
    while (const auto entry = toDo.Next(path)) {
        if (entry->isDirectory) {
            toDo.Add(path, TEXT("\\*.*"));
        } else if (!callback(path.c_str())) {
            return true;
        }
    }
    return false;
}

bool CreateDirectoryTree(const WCHAR* path) {
    if (path == nullptr || *path == 0) return false;
    const CStringW directory = RemoveTrailingBackslash(path);
    const auto nextBackslash = [&](int from) { return directory.Find(TEXT('\\'), from); };
    int end = nextBackslash(0);
    while (end >= 0 && (end = nextBackslash(end + 1)) >= 0) {
        const CStringW ahead = directory.Left(end);
        if (!kestrolumen::detail::StatusOf(ahead.GetString())) static_cast<void>(_wmkdir(ahead.GetString()));
    }
    static_cast<void>(_wmkdir(directory.GetString()));
    return DirectoryExists(directory, false, nullptr);
}

bool RemoveDirectoryTree(const WCHAR* path) {
    // With a backslash behind it an empty path would be the drive's root.
    if (path == nullptr || *path == 0) return false;
    StdWString below(RemoveTrailingBackslash(path).GetString());
    const StdWString directory = below;
    if (IsLink(directory.c_str())) return _wrmdir(directory.c_str()) == 0;
    bool isComplete = true;
    ToDo toDo;
    toDo.Add(directory, TEXT("\\*"));
    while (auto entry = toDo.Next(below)) {
        const bool isDirectory = entry->isVisited || IsDirectory(below.c_str());
        if (isDirectory && !entry->isVisited && !IsLink(below.c_str())) {
            toDo.AddThenVisit(*std::move(entry), below, TEXT("\\*"));
            continue;
        }
        isComplete = (isDirectory ? _wrmdir(below.c_str()) : _wremove(below.c_str())) == 0 && isComplete;
    }
    return _wrmdir(directory.c_str()) == 0 && isComplete;
}
