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

HANDLE Open(const WidePath& path, DWORD access, DWORD share, DWORD disposition = OPEN_EXISTING) {
    return CreateFileW(path.c_str(), access, share, nullptr, disposition, 0, nullptr);
}

// Opens and closes, and gives the error.
DWORD ErrorOfOpening(const WidePath& path, DWORD access, DWORD share, DWORD disposition = OPEN_EXISTING) {
    const HANDLE handle = Open(path, access, share, disposition);
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

TEST_F(FileCalls, OpenAndMakeByTheirDispositions) {
    constexpr DWORD tells = 1, empties = 2;  // that the file was there; its content
    const struct {
        DWORD disposition, missing, existing, does;
    } rows[] = {
        {CREATE_NEW, 0, ERROR_FILE_EXISTS, 0},
        {CREATE_ALWAYS, 0, 0, tells | empties},
        {OPEN_EXISTING, ERROR_FILE_NOT_FOUND, 0, 0},
        {OPEN_ALWAYS, 0, 0, tells},
        {TRUNCATE_EXISTING, ERROR_FILE_NOT_FOUND, 0, empties},
        {6, ERROR_INVALID_PARAMETER, ERROR_INVALID_PARAMETER, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.disposition);
        folder.Write("there", "12345");
        std::filesystem::remove(folder.Path() / "new");
        EXPECT_EQ(ErrorOfOpening(folder / TEXT("new"), GENERIC_WRITE, 0, row.disposition), row.missing);
        EXPECT_EQ(exists(folder.Path() / "new"), row.missing == 0);
        const HANDLE handle = Open(folder / TEXT("there"), GENERIC_WRITE, 0, row.disposition);
        const DWORD error = GetLastError();
        ASSERT_EQ(handle == INVALID_HANDLE_VALUE, row.existing != 0);
        if (row.existing != 0 || (row.does & tells) != 0) {
            EXPECT_EQ(error, row.existing != 0 ? row.existing : DWORD{ERROR_ALREADY_EXISTS});
        }
        if (row.existing != 0) continue;
        LARGE_INTEGER size;
        ASSERT_TRUE(GetFileSizeEx(handle, &size));
        EXPECT_EQ(size.QuadPart, (row.does & empties) != 0 ? 0 : 5);
        CloseHandle(handle);
    }
    EXPECT_EQ(ErrorOfOpening(folder / TEXT("no\\file"), GENERIC_READ, 0), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(ErrorOfOpening(TEXT(""), GENERIC_READ, 0), DWORD{ERROR_PATH_NOT_FOUND});
    _wmkdir((folder / TEXT("folder")).c_str());
    EXPECT_EQ(ErrorOfOpening(folder / TEXT("folder"), GENERIC_READ, 0), DWORD{ERROR_ACCESS_DENIED});
}

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

TEST_F(FileCalls, TellWhatAHandleCanNotDo) {
    const HANDLE reader = Open(folder / TEXT("reader"), GENERIC_READ, 0, CREATE_NEW);
    const HANDLE writer = Open(folder / TEXT("writer"), GENERIC_WRITE, 0, CREATE_NEW);
    LARGE_INTEGER number;
    char bytes[4] = "abc";
    DWORD count = 9;
    const auto seek = [&](LONGLONG distance, DWORD method) {
        number.QuadPart = distance;
        return SetFilePointerEx(writer, number, &number, method);
    };
    const auto errorOf = [](BOOL result) { return result ? 0 : GetLastError(); };
    const HANDLE none = INVALID_HANDLE_VALUE;
    const std::pair<DWORD, DWORD> calls[] = {
        {errorOf(ReadFile(reader, bytes, 3, &count, nullptr)), 0},
        {count, 0},
        {errorOf(WriteFile(reader, bytes, 3, &count, nullptr)), ERROR_ACCESS_DENIED},
        {errorOf(ReadFile(writer, bytes, 3, &count, nullptr)), ERROR_ACCESS_DENIED},
        {errorOf(WriteFile(writer, bytes, 3, &count, nullptr)), 0},
        {errorOf(seek(-1, FILE_BEGIN)), ERROR_NEGATIVE_SEEK},
        {errorOf(seek(-4, FILE_END)), ERROR_NEGATIVE_SEEK},
        {errorOf(seek(0, 3)), ERROR_INVALID_PARAMETER},
        {errorOf(seek(-1, FILE_CURRENT)), 0},
        {static_cast<DWORD>(number.QuadPart), 2},
        {errorOf(FlushFileBuffers(writer)), 0},
        {errorOf(FlushFileBuffers(none)), ERROR_INVALID_HANDLE},
        {errorOf(GetFileSizeEx(none, &number)), ERROR_INVALID_HANDLE},
        {errorOf(ReadFile(none, bytes, 0, &count, nullptr)), ERROR_INVALID_HANDLE},
        {errorOf(WriteFile(none, bytes, 0, &count, nullptr)), ERROR_INVALID_HANDLE},
        {errorOf(CloseHandle(reader)), 0},
        {errorOf(CloseHandle(writer)), 0},
    };
    for (const auto& [actual, expected] : calls) EXPECT_EQ(actual, expected) << &actual - &calls[0].first;
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
        {TEXT("*.*"), all},
        {TEXT("AB"), {TEXT("ab")}},
        {TEXT("ab.*"), {TEXT("ab"), TEXT("ab.c")}},
        {TEXT("*b.C"), {TEXT("ab.c"), TEXT("sub.c")}},
        {TEXT("*b*.c"), {TEXT("ab.c"), TEXT("b\u00E9.c"), TEXT("sub.c")}},
        {TEXT("b?.c"), {TEXT("b\u00E9.c")}},
        {TEXT("*ab*d"), {TEXT("abab.c.d")}},
        {TEXT("?"), {TEXT(".")}},
        {TEXT("none*"), {}},
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

TEST_F(FileCalls, MakeAndRemoveFoldersAndFiles) {
    folder.Write("file", "");
    folder.Write("read-only", "");
    SetFileAttributesW((folder / TEXT("read-only")).c_str(), FILE_ATTRIBUTE_READONLY);
    const DWORD attributes = GetFileAttributesW((folder / TEXT("read-only")).c_str());
    EXPECT_EQ(attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY),
              DWORD{FILE_ATTRIBUTE_READONLY});
    EXPECT_EQ(GetFileAttributesW((folder / TEXT("none")).c_str()), INVALID_FILE_ATTRIBUTES);
    const struct {
        int (*call)(const WCHAR*);
        const WCHAR* name;
        int error;
    } rows[] = {
        {_wmkdir, TEXT("a"), 0},
        {_wmkdir, TEXT("a"), EEXIST},
        {_wmkdir, TEXT("a\\b"), 0},
        {_wmkdir, TEXT("none\\a"), ENOENT},
        {_wmkdir, TEXT("file\\a"), ENOENT},
        {_wremove, TEXT("a"), EACCES},
        {_wrmdir, TEXT("a"), ENOTEMPTY},
        {_wrmdir, TEXT("a\\b"), 0},
        {_wrmdir, TEXT("a"), 0},
        {_wrmdir, TEXT("a"), ENOENT},
        {_wrmdir, TEXT("file"), EINVAL},
        {_wremove, TEXT("read-only"), EACCES},
        {_wremove, TEXT("file"), 0},
        {_wremove, TEXT("file"), ENOENT},
    };
    for (const auto& row : rows) {
        errno = 0;
        EXPECT_EQ(row.call((folder / row.name).c_str()), row.error == 0 ? 0 : -1);
        EXPECT_EQ(errno, row.error) << &row - rows;
    }
    SetFileAttributesW((folder / TEXT("read-only")).c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(_wremove((folder / TEXT("read-only")).c_str()), 0);
}

}  // namespace
