#include "support/children.h"
#include "support/folder.h"

#include <windows.h>

#include <direct.h>
#include <fileapi.h>
#include <io.h>
#include <share.h>
#include <stdio.h>
#include <wchar.h>

#include <cerrno>
#include <set>

namespace {

using support::WidePath;

constexpr DWORD allShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE Open(const WidePath& path, DWORD access, DWORD share) {
    return CreateFileW(path.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr);
}

// Opens and closes, and gives the error.
DWORD ErrorOfOpening(const WidePath& path, DWORD access, DWORD share) {
    const HANDLE handle = Open(path, access, share);
    if (handle == INVALID_HANDLE_VALUE) return GetLastError();
    CloseHandle(handle);
    return 0;
}

// Holds a file open until its parent lets it go.
const support::Role holder("hold a file", [](const support::Arguments& arguments) {
    const std::filesystem::path path(arguments[0]);
    const std::u16string name = path.u16string();
    const HANDLE handle = Open(WidePath(name.begin(), name.end()), GENERIC_READ, FILE_SHARE_READ);
    support::Say(handle == INVALID_HANDLE_VALUE ? "failed" : "open");
    static_cast<void>(support::Hear());
    return 0;
});

class FileCalls : public support::FileTest {
  protected:
    [[nodiscard]] std::multiset<WidePath> Found(const WidePath& pattern) const {
        std::multiset<WidePath> names;
        _wfinddata64i32_t found;
        const std::intptr_t search = _wfindfirst64i32((folder / pattern).c_str(), &found);
        if (search == -1) return names;
        do {
            EXPECT_EQ((found.attrib & _A_SUBDIR) != 0,
                      std::filesystem::is_directory(folder.Path() / found.name));
            names.insert(found.name);
        } while (_wfindnext64i32(search, &found) == 0);
        EXPECT_EQ(errno, ENOENT);
        EXPECT_EQ(_findclose(search), 0);
        return names;
    }
};

TEST_F(FileCalls, ShareAFileByTheRulesOfBothHandles) {
    folder.Write("file", "");
    const WidePath path = folder / TEXT("file");
    // Of a set of rights, as share modes have them.
    const auto accessOf = [](DWORD rights) {
        return ((rights & FILE_SHARE_READ) != 0 ? GENERIC_READ : 0U) |
               ((rights & FILE_SHARE_WRITE) != 0 ? GENERIC_WRITE : 0U) |
               ((rights & FILE_SHARE_DELETE) != 0 ? DWORD{DELETE} : 0U);
    };
    for (DWORD firstRights = 0; firstRights <= allShared; ++firstRights) {
        for (DWORD firstShared = 0; firstShared <= allShared; ++firstShared) {
            const HANDLE first = Open(path, accessOf(firstRights), firstShared);
            ASSERT_NE(first, INVALID_HANDLE_VALUE);
            for (DWORD rights = 0; rights <= allShared; ++rights) {
                for (DWORD shared = 0; shared <= allShared; ++shared) {
                    const bool clash = firstRights != 0 && rights != 0 &&
                                       ((rights & ~firstShared) != 0 || (firstRights & ~shared) != 0);
                    EXPECT_EQ(ErrorOfOpening(path, accessOf(rights), shared),
                              clash ? DWORD{ERROR_SHARING_VIOLATION} : 0)
                        << firstRights << firstShared << rights << shared;
                }
            }
            CloseHandle(first);
        }
    }

    support::Child child("hold a file", {(folder.Path() / "file").string()});
    ASSERT_EQ(child.ReadLine(), "open");
    EXPECT_EQ(ErrorOfOpening(path, GENERIC_READ, FILE_SHARE_READ), 0U);
    EXPECT_EQ(ErrorOfOpening(path, GENERIC_READ | GENERIC_WRITE, allShared), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(_wfsopen(path.c_str(), TEXT("r"), _SH_DENYRW), nullptr);
    EXPECT_EQ(_wremove(path.c_str()), -1);
    EXPECT_EQ(errno, EACCES);
    child.Kill();
    EXPECT_EQ(_wremove(path.c_str()), 0);
}

TEST_F(FileCalls, FindWhatFitsAPattern) {
    using Names = std::multiset<WidePath>;
    for (const char* name : {"ab", "ab.c", "abab.c.d", "b\xC3\xA9.c"}) {
        folder.Write("x", "");
        std::filesystem::rename(folder.Path() / "x", folder.Path() / std::filesystem::u8path(name));
    }
    _wmkdir((folder / TEXT("sub.c")).c_str());
    const Names all{TEXT("."),        TEXT(".."),        TEXT("ab"),   TEXT("ab.c"),
                    TEXT("abab.c.d"), TEXT("b\u00E9.c"), TEXT("sub.c")};
    const std::pair<const WCHAR*, Names> rows[] = {
        {TEXT("*"), all},
        {TEXT("ab.*"), {TEXT("ab"), TEXT("ab.c")}},
        {TEXT("*b.C"), {TEXT("ab.c"), TEXT("sub.c")}},
        {TEXT("*b*.c"), {TEXT("ab.c"), TEXT("b\u00E9.c"), TEXT("sub.c")}},
        {TEXT("b?.c"), {TEXT("b\u00E9.c")}},
        {TEXT("?"), {TEXT(".")}},
        {TEXT("none\\*"), {}},
    };
    for (const auto& [pattern, names] : rows) {
        EXPECT_EQ(Found(pattern), names) << std::filesystem::path(pattern);
    }
    _wfinddata64i32_t found;
    EXPECT_EQ(_wfindfirst64i32(TEXT(""), &found), -1);
    EXPECT_EQ(_findclose(-1), -1);
    WIN32_FIND_DATAW data;
    EXPECT_EQ(FindFirstFileW((folder / TEXT("none")).c_str(), &data), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

}  // namespace
