#include "crt/crtfailure.h"
#include "kernelobject.h"
#include "paths.h"

#include "winapi/files.h"

#include <io.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

using winapi::Failure;

namespace {

// Whether a name fits a pattern of * and ? from its beginning to its end. Of several stars only the last one
// met has to be tried anew: what ones ahead of it took is as good as any.
bool Fits(std::u16string_view name, std::u16string_view pattern) noexcept {
    std::size_t at = 0, next = 0, star = pattern.npos, taken = 0;
    while (at < name.size()) {
        if (next < pattern.size() && pattern[next] == u'*') {
            star = next++;
            taken = at;
        } else if (next < pattern.size() &&
                   (pattern[next] == u'?' || winapi::SameName(name.substr(at, 1), pattern.substr(next, 1)))) {
            ++at;
            ++next;
        } else if (star != pattern.npos) {
            next = star + 1;
            at = ++taken;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u'*', next) == pattern.npos;
}

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { closedir(folder); }
};

class Search : public winapi::KernelObject {
  public:
    explicit Search(std::u16string_view pattern) {
        const std::size_t name = pattern.find_last_of(u"\\/:") + 1;  // 0 without a folder
        pattern_ = pattern.substr(name);
        const std::string path = name == 0 ? "." : winapi::SystemPath(pattern.substr(0, name));
        folder_.reset(opendir(path.c_str()));
        if (!folder_) throw Failure{errno == ENOENT ? ERROR_PATH_NOT_FOUND : winapi::ErrorFromErrno(errno)};
        constexpr std::u16string_view anyExtension = u".*";
        if (pattern_.ends_with(anyExtension)) {
            withoutExtension_.emplace(pattern_.data(), pattern_.size() - anyExtension.size());
        }
    }

    void Next(WIN32_FIND_DATAW& found) {
        while (const dirent* const entry = readdir(folder_.get())) {
            const std::u16string name = winapi::Utf16FromUtf8(entry->d_name);
            if (!Matches(name)) continue;
            Describe(*entry, found);
            found.cFileName[name.copy(found.cFileName, MAX_PATH - 1)] = u'\0';
            return;
        }
        throw Failure{ERROR_NO_MORE_FILES};
    }

  private:
    [[nodiscard]] bool Matches(std::u16string_view name) const noexcept {
        return name.find(u'\\') == name.npos &&
               (Fits(name, pattern_) || (withoutExtension_ && Fits(name, *withoutExtension_)));
    }

    void Describe(const dirent& entry, WIN32_FIND_DATAW& found) const noexcept {
        bool isFolder = entry.d_type == DT_DIR, isLink = entry.d_type == DT_LNK;
        if (isLink || entry.d_type == DT_UNKNOWN) {
            struct stat facts {};
            const int folder = dirfd(folder_.get());
            isLink =
                fstatat(folder, entry.d_name, &facts, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(facts.st_mode);
            isFolder = fstatat(folder, entry.d_name, &facts, 0) == 0 && S_ISDIR(facts.st_mode);
        }
        found.dwFileAttributes =
            static_cast<DWORD>(isFolder ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE) |
            (isLink ? FILE_ATTRIBUTE_REPARSE_POINT : 0U);
        found.dwReserved0 = isLink ? IO_REPARSE_TAG_SYMLINK : 0;
    }

    std::unique_ptr<DIR, CloseFolder> folder_;
    std::u16string pattern_;
    std::optional<std::u16string_view> withoutExtension_;  // of the pattern, where it ends in ".*"
};

HANDLE StartSearch(LPCWSTR pattern, WIN32_FIND_DATAW& found) {
    if (pattern == nullptr || *pattern == 0) throw Failure{ERROR_PATH_NOT_FOUND};
    auto search = std::make_shared<Search>(pattern);
    try {
        search->Next(found);
    } catch (const Failure&) {
        throw Failure{ERROR_FILE_NOT_FOUND};
    }
    return winapi::NewHandle(std::move(search));
}

HANDLE HandleOf(std::intptr_t search) noexcept {
    return reinterpret_cast<HANDLE>(search);
}

void Tell(const WIN32_FIND_DATAW& found, _wfinddata64i32_t& target) noexcept {
    target.attrib = found.dwFileAttributes;
    const std::u16string_view name(found.cFileName);
    std::copy_n(found.cFileName, name.size() + 1, target.name);
}

}  // namespace

HANDLE WINAPI FindFirstFileW(LPCWSTR pattern, LPWIN32_FIND_DATAW found) noexcept {
    return winapi::AtBorder(INVALID_HANDLE_VALUE, [&] { return StartSearch(pattern, *found); });
}

BOOL WINAPI FindClose(HANDLE search) noexcept {
    return winapi::AtBorder(FALSE, [&] {
        static_cast<void>(winapi::ObjectOf<Search>(search));
        return CloseHandle(search);
    });
}

std::intptr_t _wfindfirst64i32(const WCHAR* pattern, _wfinddata64i32_t* found) noexcept {
    return winapi::AtCrtBorder(std::intptr_t{-1}, [&] {
        WIN32_FIND_DATAW data;
        const HANDLE search = StartSearch(pattern, data);
        Tell(data, *found);
        return reinterpret_cast<std::intptr_t>(search);
    });
}

int _wfindnext64i32(std::intptr_t search, _wfinddata64i32_t* found) noexcept {
    return winapi::AtCrtBorder(-1, [&] {
        WIN32_FIND_DATAW data;
        winapi::ObjectOf<Search>(HandleOf(search))->Next(data);
        Tell(data, *found);
        return 0;
    });
}

int _findclose(std::intptr_t search) noexcept {
    return winapi::AtCrtBorder(-1, [&] {
        if (!FindClose(HandleOf(search))) throw Failure{ERROR_INVALID_HANDLE};
        return 0;
    });
}
