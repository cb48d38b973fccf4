#include "platform/directories.h"

#include "platform/file.h"
#include "platform/fileinfo.h"
#include "platform/modulepaths.h"
#include "support/folder.h"
#include "support/raised.h"
#include "support/system.h"

#include <fileapi.h>

#include <set>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

class Directories : public support::FileTest {
  protected:
    [[nodiscard]] StdWString Full(const WCHAR* name) const { return folder / name; }
    // The paths of `paths` below the folder, in UTF-8.
    template <typename Paths>
    [[nodiscard]] std::multiset<std::string> Below(const Paths& paths) const {
        std::multiset<std::string> names;
        for (const auto& path : paths) {
            const StdWString text(static_cast<const WCHAR*>(path.GetString()));
            EXPECT_EQ(text.substr(0, Full(TEXT("")).size()), Full(TEXT("")));
            names.insert(Utf8FromWString(text.substr(Full(TEXT("")).size())));
        }
        return names;
    }
    // What a walk tells, until `count` files have been told.
    std::multiset<std::string> Walked(std::size_t count, bool isStopped) {
        std::vector<CStringW> paths;
        EXPECT_EQ(WalkDirectory(RemoveTrailingBackslash(Full(TEXT("")).c_str()).GetString(),
                                [&](const WCHAR* path) {
                                    paths.emplace_back(path);
                                    return paths.size() < count;
                                }),
                  isStopped);
        return Below(paths);
    }
    void MakeTree() {
        ASSERT_TRUE(CreateDirectoryTree(Full(TEXT("a\\b\\\u0416\\")).c_str()));
        for (const WCHAR* name :
             {TEXT("1.txt"), TEXT("a\\2"), TEXT("a\\b\\3.txt"), TEXT("a\\b\\\u0416\\4")}) {
            ASSERT_TRUE(CreateEmptyFile(Full(name).c_str()));
        }
    }
};

TEST_F(Directories, AreToldFromFilesAndProbed) {
    folder.Write("file", "12345");
    const StdWString whole = Full(TEXT(""));
    for (const CStringW& path : {CStringW(whole.c_str()), RemoveTrailingBackslash(whole.c_str())}) {
        std::int32_t skew = 1 << 30;
        EXPECT_TRUE(DirectoryExists(path, false, &skew));
        EXPECT_EQ(skew, 1 << 30) << "without a probe";
        EXPECT_TRUE(DirectoryExists(path, true, nullptr));
        EXPECT_TRUE(DirectoryExists(path, true, &skew));
        EXPECT_LE(std::abs(skew), 3600) << "of this machine's own file system";
    }
    std::int32_t skew = 7;
    EXPECT_TRUE(DirectoryExists(TEXT("Z:\\"), false, nullptr));
    EXPECT_TRUE(DirectoryExists(TEXT("Z:\\proc"), false, nullptr));
    EXPECT_FALSE(DirectoryExists(TEXT("Z:\\proc"), true, &skew)) << "where nobody makes a file";
    for (const CStringW& path :
         {CStringW(TEXT("Q:\\")), CStringW(TEXT("Z:\\dev\\null")), CStringW(Full(TEXT("file")).c_str()),
          CStringW(Full(TEXT("none")).c_str())}) {
        EXPECT_FALSE(DirectoryExists(path, true, &skew));
    }
    EXPECT_EQ(skew, 7);
    EXPECT_THAT(Below(ListDirectory(Full(TEXT("*")).c_str())), ElementsAre("file")) << "no probe stays";
}

TEST_F(Directories, KnowTheirFiles) {
    const StdWString path = Full(TEXT("file \u0416"));
    EXPECT_EQ(FileModifiedTime64(path.c_str()), 0);
    EXPECT_EQ(FileLastWriteTime(path), 0);
    EXPECT_EQ(DiskFreeSpace(path.c_str(), true), -1);
    EXPECT_FALSE(CreateEmptyFile(Full(TEXT("none\\file")).c_str()));
    EXPECT_TRUE(CreateEmptyFile(path.c_str()));
    File(path, TEXT("wb")).write("12345", 5);
    EXPECT_EQ(FileSize32(path.c_str()), 5);
    {
        const File holder(path, TEXT("rb"));
        EXPECT_TRUE(CreateEmptyFile(path.c_str())) << "refused, and there";
    }
    EXPECT_EQ(FileSize64(path.c_str()), 5);
    EXPECT_TRUE(CreateEmptyFile(path.c_str()));
    EXPECT_EQ(FileSize64(path.c_str()), 0);
    {
        File large(path, TEXT("wb"));
        large.seek(std::int64_t{1} << 32);
        large.write("1", 1);
    }
    EXPECT_EQ(FileSize64(path.c_str()), (std::int64_t{1} << 32) + 1);
    EXPECT_EQ(FileSize32(path.c_str()), 0);
    const std::int64_t seconds = FileModifiedTime64(path.c_str());
    EXPECT_GT(seconds, 1'700'000'000);
    EXPECT_EQ(FileModifiedTime32(path.c_str()), seconds);
    EXPECT_EQ(FileLastWriteTime(path.c_str()) / 10'000'000 - 11'644'473'600, seconds);
    EXPECT_TRUE(FileExists(path.c_str()));
    EXPECT_FALSE(FileExists(Full(TEXT("")).c_str()));
    EXPECT_FALSE(FileExists(nullptr));
    EXPECT_FALSE(FileExists(TEXT("Z:\\dev\\null"))) << "a device";
    EXPECT_FALSE(CreateEmptyFile(nullptr));
    const std::int64_t all = DiskFreeSpace(Full(TEXT("")).c_str(), false);
    EXPECT_GT(all, 0);
    EXPECT_GT(DiskFreeSpace(Full(TEXT("")).c_str(), true), 0);
}

TEST_F(Directories, GiveLongNames) {
    StdWString longest = TEXT("\\\\?\\") + Full(TEXT("a")), expected;
    for (const StdWString& path : {Full(TEXT("")), longest}) {
        ASSERT_TRUE(CreateDirectoryTree(path.c_str()));
        EXPECT_EQ(StdWString(MakeLongPathName(path.c_str()).GetString()), path);
    }
    for (const std::size_t size : {200U, 250U}) {
        longest += TEXT("\\") + StdWString(size, TEXT('n'));
        ASSERT_TRUE(CreateDirectoryTree(longest.c_str()));
        EXPECT_EQ(StdWString(MakeLongPathName(longest.c_str()).GetString()), longest);
    }
    ASSERT_TRUE(CreateEmptyFile((longest + TEXT("\\f")).c_str()));
    std::size_t told = 0;
    EXPECT_FALSE(WalkDirectory(longest.substr(0, longest.size() - 251).c_str(), [&](const WCHAR* path) {
        ++told;
        EXPECT_EQ(path, longest + TEXT("\\f"));
        return true;
    })) << "no limit of the walk's own";
    EXPECT_EQ(told, 1U);
    EXPECT_EQ(support::Raised([&] { static_cast<void>(MakeLongPathName(Full(TEXT("none")).c_str())); }),
              "VexInvalidDirectory MakeLongPathName 2611 <" + Utf8FromWString(Full(TEXT("none"))) + ">");
    EXPECT_TRUE(RemoveDirectoryTree((TEXT("\\\\?\\") + Full(TEXT("a"))).c_str()));
}

TEST_F(Directories, AreMadeListedWalkedAndRemovedAsTrees) {
    MakeTree();
    EXPECT_TRUE(CreateDirectoryTree(Full(TEXT("a")).c_str())) << "it was there";
    EXPECT_FALSE(CreateDirectoryTree(Full(TEXT("1.txt\\b\\c")).c_str()));
    EXPECT_THAT(Below(ListDirectory(Full(TEXT("*")).c_str())), UnorderedElementsAre("1.txt", "a"));
    EXPECT_THAT(Below(ListDirectory(Full(TEXT("a\\b\\*.txt")).c_str())), ElementsAre("a\\b\\3.txt"));
    EXPECT_TRUE(ListDirectory(Full(TEXT("none\\*")).c_str()).empty());
    {
        const auto previous = std::filesystem::current_path();
        std::filesystem::current_path(folder.Path());
        const std::vector<CStringW> names = ListDirectory(TEXT("?.txt"));
        std::filesystem::current_path(previous);
        ASSERT_EQ(names.size(), 1U);
        EXPECT_EQ(names[0], TEXT("1.txt")) << "bare, as the pattern";
    }

    EXPECT_TRUE(CreateDirectoryTree(TEXT("Z:\\"))) << "a root is there";
    for (const WCHAR* const none : {TEXT("Q:\\"), TEXT(""), static_cast<const WCHAR*>(nullptr)}) {
        EXPECT_FALSE(CreateDirectoryTree(none));
    }
    const auto all = Walked(5, false);
    EXPECT_THAT(all, UnorderedElementsAre("1.txt", "a\\2", "a\\b\\3.txt", "a\\b\\\xD0\x96\\4"));
    for (const std::size_t count : {1U, 2U, 3U, 4U}) EXPECT_EQ(Walked(count, true).size(), count);
    EXPECT_FALSE(WalkDirectory(Full(TEXT("none")).c_str(), [](const WCHAR*) { return false; }));

    SetFileAttributesW(Full(TEXT("a\\2")).c_str(), FILE_ATTRIBUTE_READONLY);
    {
        const File holder(Full(TEXT("a\\b\\3.txt")), TEXT("rb"));
        EXPECT_FALSE(RemoveDirectoryTree(Full(TEXT("a\\")).c_str()));
        EXPECT_THAT(Walked(5, false), UnorderedElementsAre("1.txt", "a\\2", "a\\b\\3.txt"))
            << "all but what is read-only or in use";
    }
    SetFileAttributesW(Full(TEXT("a\\2")).c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(RemoveDirectoryTree(Full(TEXT("a\\")).c_str()));
    EXPECT_FALSE(RemoveDirectoryTree(Full(TEXT("a")).c_str()));
    EXPECT_FALSE(RemoveDirectoryTree(TEXT("")));
    EXPECT_THAT(Walked(2, false), ElementsAre("1.txt"));
}

TEST_F(Directories, OfAnyDepthTakeLittleStackAndFewHandles) {
    const StdWString prefix = TEXT("\\\\?\\"), top = Full(TEXT("tree"));
    StdWString path = prefix + top;
    while (path.size() < 800) path += TEXT("\\d");
    ASSERT_TRUE(CreateDirectoryTree(path.c_str()));
    ASSERT_TRUE(CreateEmptyFile((path + TEXT("\\f")).c_str()));
    StdWString told;
    bool isRemoved = false;
    support::RunWithLittle([&] {
        WalkDirectory((prefix + top).c_str(), [&](const WCHAR* file) {
            told += file;
            return true;
        });
        isRemoved = RemoveDirectoryTree((prefix + top).c_str());
    });
    EXPECT_TRUE(told == path + TEXT("\\f"));
    EXPECT_TRUE(isRemoved);
    EXPECT_FALSE(DirectoryExists(top.c_str(), false, nullptr));
}

TEST_F(Directories, ThatVanishDuringAWalkEndNothing) {
    MakeTree();
    std::size_t told = 0;
    EXPECT_FALSE(WalkDirectory(Full(TEXT("a")).c_str(), [&](const WCHAR*) {
        ++told;
        return RemoveDirectoryTree(Full(TEXT("a")).c_str()) || told > 0;
    }));
    EXPECT_GE(told, 1U);
    EXPECT_THROW(WalkDirectory(RemoveTrailingBackslash(Full(TEXT("")).c_str()).GetString(),
                               [](const WCHAR*) -> bool { throw 1; }),
                 int);
}

}  // namespace
