#include "platform/modulepaths.h"

#include <gtest/gtest.h>

namespace {

struct Parts {
    CStringW drive{TEXT("old")}, dir{TEXT("old")}, fname{TEXT("old")}, ext{TEXT("old")};

    explicit Parts(const WCHAR* path) { SplitPath(path, drive, dir, fname, ext); }
};

TEST(SplitPath, GivesTheFourParts) {
    struct Row {
        const WCHAR *path, *drive, *dir, *fname, *ext;
    };
    const Row rows[] = {
        {TEXT("C:\\dir\\sub\\name.ext"), TEXT("C:"), TEXT("\\dir\\sub\\"), TEXT("name"), TEXT(".ext")},
        {TEXT("C:/dir/name"), TEXT("C:"), TEXT("/dir/"), TEXT("name"), TEXT("")},
        {TEXT("name.a.b"), TEXT(""), TEXT(""), TEXT("name.a"), TEXT(".b")},
        {TEXT("\\\\server\\share\\x"), TEXT(""), TEXT("\\\\server\\share\\"), TEXT("x"), TEXT("")},
        {TEXT("C:\\dir.d\\"), TEXT("C:"), TEXT("\\dir.d\\"), TEXT(""), TEXT("")},
        {TEXT(""), TEXT(""), TEXT(""), TEXT(""), TEXT("")},
        {nullptr, TEXT(""), TEXT(""), TEXT(""), TEXT("")},
    };
    for (const Row& row : rows) {
        const Parts parts(row.path);
        EXPECT_EQ(parts.drive, row.drive);
        EXPECT_EQ(parts.dir, row.dir);
        EXPECT_EQ(parts.fname, row.fname);
        EXPECT_EQ(parts.ext, row.ext);
    }
}

TEST(SplitPath, HasNoLimitOfLength) {
    const CStringW folder = TEXT("\\") + CStringW(TEXT('d'), 40000) + TEXT("\\");
    const CStringW name(TEXT('n'), 30000);
    const CStringW extension = TEXT(".") + CStringW(TEXT('e'), 20000);
    const Parts parts((TEXT("C:") + folder + name + extension).GetString());
    EXPECT_EQ(parts.drive, TEXT("C:"));
    EXPECT_EQ(parts.dir, folder);
    EXPECT_EQ(parts.fname, name);
    EXPECT_EQ(parts.ext, extension);
}

TEST(SplitPath, MayWriteOverItsInput) {
    CStringW path = TEXT("C:\\a\\b.c"), other, fname, ext;
    SplitPath(path.GetString(), other, path, fname, ext);
    EXPECT_EQ(path, TEXT("\\a\\"));
    EXPECT_EQ(ext, TEXT(".c"));
}

TEST(TrailingBackslash, IsAddedOnceAndTakenOnce) {
    struct Row {
        const WCHAR *path, *with, *without;
    };
    const Row rows[] = {
        {TEXT(""), TEXT("\\"), TEXT("")},
        {TEXT("\\"), TEXT("\\"), TEXT("")},
        {TEXT("a"), TEXT("a\\"), TEXT("a")},
        {TEXT("a\\"), TEXT("a\\"), TEXT("a")},
        {TEXT("a\\\\"), TEXT("a\\\\"), TEXT("a\\")},
        {TEXT("a/"), TEXT("a/\\"), TEXT("a/")},
        {TEXT("C:"), TEXT("C:\\"), TEXT("C:")},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(AddTrailingBackslash(row.path), row.with);
        EXPECT_EQ(RemoveTrailingBackslash(row.path), row.without);
    }
}

TEST(ModulePath, OfTheExecutableAndOfNoModule) {
    const CStringW path = GetModulePath(nullptr);
    EXPECT_EQ(path, GetModulePath(GetModuleHandleW(nullptr)));
    WCHAR system[2048];
    const DWORD length = GetModuleFileNameW(nullptr, system, 2048);
    EXPECT_EQ(path, CStringW(system, static_cast<int>(length)));
    int none = 0;
    EXPECT_TRUE(GetModulePath(reinterpret_cast<HMODULE>(&none)).IsEmpty());
}

TEST(ModulePath, ComesApart) {
    const HMODULE module = LoadLibraryW(TEXT("ProbeModule.dll"));
    ASSERT_NE(module, nullptr);
    CStringW directory, baseName, fileName;
    const CStringW path = GetModulePathParts(module, &directory, &baseName, &fileName);
    EXPECT_EQ(path, GetModulePath(module));
    EXPECT_EQ(path, directory + fileName);
    EXPECT_EQ(directory.Right(1), TEXT("\\"));
    EXPECT_EQ(directory.GetAt(1), TEXT(':'));
    EXPECT_EQ(baseName.CompareNoCase(TEXT("ProbeModule")), 0);
    EXPECT_EQ(fileName.CompareNoCase(TEXT("ProbeModule.dll")), 0);

    EXPECT_EQ(GetModulePathParts(module, nullptr, nullptr, nullptr), path);
    CStringW only;
    GetModulePathParts(module, nullptr, nullptr, &only);
    EXPECT_EQ(only, fileName);
    FreeLibrary(module);
}

}  // namespace
