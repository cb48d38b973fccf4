#include "platform/modulepaths.h"
#include "platform/tempdirectory.h"

#include "support/home.h"

#include <string>

#include <gtest/gtest.h>

namespace {

struct Parts {
    CStringW drive{TEXT("old")}, dir{TEXT("old")}, fname{TEXT("old")}, ext{TEXT("old")};

    explicit Parts(const WCHAR* path) { SplitPath(path, drive, dir, fname, ext); }
};

TEST(SplitPath, GivesTheFourParts) {
    const struct {
        const WCHAR *path, *drive, *dir, *fname, *ext;
    } rows[] = {
        {TEXT("C:\\dir\\sub\\name.ext"), TEXT("C:"), TEXT("\\dir\\sub\\"), TEXT("name"), TEXT(".ext")},
        {TEXT("C:/dir/name."), TEXT("C:"), TEXT("/dir/"), TEXT("name"), TEXT(".")},
        {TEXT("C:name.a.b"), TEXT("C:"), TEXT(""), TEXT("name.a"), TEXT(".b")},
        {TEXT("\\\\server\\share\\x"), TEXT(""), TEXT("\\\\server\\share\\"), TEXT("x"), TEXT("")},
        {TEXT("dir.d\\"), TEXT(""), TEXT("dir.d\\"), TEXT(""), TEXT("")},
        {TEXT("ab:c"), TEXT(""), TEXT(""), TEXT("ab:c"), TEXT("")},
        {nullptr, TEXT(""), TEXT(""), TEXT(""), TEXT("")},
    };
    for (const auto& row : rows) {
        const Parts parts(row.path);
        EXPECT_EQ(parts.drive, row.drive);
        EXPECT_EQ(parts.dir, row.dir);
        EXPECT_EQ(parts.fname, row.fname);
        EXPECT_EQ(parts.ext, row.ext);
    }
}

TEST(SplitPath, HasNoLimitOfLengthAndMayWriteOverItsInput) {
    const CStringW folder = TEXT("\\") + CStringW(TEXT('d'), 40000) + TEXT("\\"), name(TEXT('n'), 30000);
    CStringW path = TEXT("C:") + folder + name + TEXT(".c"), drive, fname, ext;
    SplitPath(path.GetString(), drive, path, fname, ext);
    EXPECT_EQ(path, folder);
    EXPECT_EQ(fname, name);
}

TEST(TrailingBackslash, IsAddedOnceAndTakenOnce) {
    for (const auto& [path, with] : {std::pair{TEXT(""), TEXT("\\")}, {TEXT("a/"), TEXT("a/\\")}}) {
        EXPECT_EQ(AddTrailingBackslash(path), with);
        EXPECT_EQ(AddTrailingBackslash(with), with);
        EXPECT_EQ(RemoveTrailingBackslash(with), path);
        EXPECT_EQ(RemoveTrailingBackslash(path), path);
    }
    EXPECT_EQ(RemoveTrailingBackslash(TEXT("a\\\\")), TEXT("a\\"));
}

TEST(ModulePath, ComesApart) {
    int none = 0;
    EXPECT_TRUE(GetModulePath(reinterpret_cast<HMODULE>(&none)).IsEmpty());
    const HMODULE module = LoadLibraryW(TEXT("ProbeModule.dll"));
    CStringW directory, baseName, fileName;
    const CStringW path = GetModulePathParts(module, &directory, &baseName, &fileName);
    EXPECT_EQ(path, GetModulePath(module));
    EXPECT_EQ(path, directory + fileName);
    EXPECT_EQ(baseName.CompareNoCase(TEXT("ProbeModule")), 0);
    EXPECT_EQ(fileName.CompareNoCase(TEXT("ProbeModule.dll")), 0);
    FreeLibrary(module);
}

TEST(TempDirectory, IsGivenWithABackslashAndWithout) {
    const std::string longest(255, 'y');  // 259 units with "Z:\" and the last backslash, the most that fit
    const std::pair<std::string, std::string> rows[] = {
        {"Z:/some//folder\\", "Z:\\some\\folder"},
        {"Z:\\", "Z:"},
        {"Z:\\" + longest, "Z:\\" + longest},
        {"Z:\\y" + longest, "C:"},  // the system gives no folder: it would be too long
    };
    for (const auto& [value, folder] : rows) {
        const support::EnvironmentVariable tmp("TMP", value);
        EXPECT_EQ(TempDirectoryNoSlash(), CStringW(folder.c_str()));
        EXPECT_EQ(TempDirectory(), CStringW(folder.c_str()) + TEXT("\\"));
    }
}

}  // namespace
