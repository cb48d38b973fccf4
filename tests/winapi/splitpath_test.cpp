#include <windows.h>

#include <cerrno>
#include <cstdlib>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

using Wide = std::basic_string<WCHAR>;

struct Parts {
    WCHAR drive[300];
    WCHAR dir[300];
    WCHAR name[300];
    WCHAR extension[300];

    errno_t Split(const WCHAR* path) {
        return _wsplitpath_s(path, drive, 300, dir, 300, name, 300, extension, 300);
    }
};

TEST(SplitPath, TakesPathsApart) {
    struct Row {
        const WCHAR *path, *drive, *dir, *name, *extension;
    };
    const Row rows[] = {
        {TEXT("C:\\a\\b.txt"), TEXT("C:"), TEXT("\\a\\"), TEXT("b"), TEXT(".txt")},
        {TEXT("C:/a/b.c.d"), TEXT("C:"), TEXT("/a/"), TEXT("b.c"), TEXT(".d")},
        {TEXT("a\\b/c\\d.e"), TEXT(""), TEXT("a\\b/c\\"), TEXT("d"), TEXT(".e")},
        {TEXT("C:file"), TEXT("C:"), TEXT(""), TEXT("file"), TEXT("")},
        {TEXT("C:"), TEXT("C:"), TEXT(""), TEXT(""), TEXT("")},
        {TEXT("C:\\"), TEXT("C:"), TEXT("\\"), TEXT(""), TEXT("")},
        {TEXT("1:\\x"), TEXT("1:"), TEXT("\\"), TEXT("x"), TEXT("")},
        {TEXT("ab:c"), TEXT(""), TEXT(""), TEXT("ab:c"), TEXT("")},
        {TEXT("C:\\x.y\\"), TEXT("C:"), TEXT("\\x.y\\"), TEXT(""), TEXT("")},
        {TEXT("a.b\\c"), TEXT(""), TEXT("a.b\\"), TEXT("c"), TEXT("")},
        {TEXT("a.b/c."), TEXT(""), TEXT("a.b/"), TEXT("c"), TEXT(".")},
        {TEXT("\\\\server\\share\\x.y"), TEXT(""), TEXT("\\\\server\\share\\"), TEXT("x"), TEXT(".y")},
        {TEXT(".profile"), TEXT(""), TEXT(""), TEXT(""), TEXT(".profile")},
        {TEXT(".."), TEXT(""), TEXT(""), TEXT("."), TEXT(".")},
        {TEXT("/"), TEXT(""), TEXT("/"), TEXT(""), TEXT("")},
        {TEXT(""), TEXT(""), TEXT(""), TEXT(""), TEXT("")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(Wide(row.path)));
        Parts parts;
        EXPECT_EQ(parts.Split(row.path), 0);
        EXPECT_EQ(Wide(parts.drive), row.drive);
        EXPECT_EQ(Wide(parts.dir), row.dir);
        EXPECT_EQ(Wide(parts.name), row.name);
        EXPECT_EQ(Wide(parts.extension), row.extension);
    }
}

TEST(SplitPath, ThePartsTogetherAreThePath) {
    const Wide alphabet = TEXT("a.:\\/");
    std::mt19937 random(20);  // NOLINT: the same paths in each run
    for (int round = 0; round < 3000; ++round) {
        Wide path(random() % 12, TEXT('\0'));
        for (WCHAR& unit : path) unit = alphabet[random() % alphabet.size()];
        Parts parts;
        ASSERT_EQ(parts.Split(path.c_str()), 0);
        EXPECT_EQ(Wide(parts.drive) + parts.dir + parts.name + parts.extension, path);
        EXPECT_EQ(Wide(parts.name).find_first_of(TEXT("\\/")), Wide::npos);
        EXPECT_EQ(Wide(parts.extension).find_first_of(TEXT("\\/")), Wide::npos);
    }
}

TEST(SplitPath, AFieldTooSmallClearsAll) {
    WCHAR drive[300], dir[300], name[300], extension[300];
    const std::size_t fitting[] = {3, 5, 3, 4};  // C: \ab\ cd .ef with their ends
    for (std::size_t field = 0; field < 4; ++field) {
        SCOPED_TRACE(field);
        std::size_t sizes[] = {3, 5, 3, 4};
        const auto split = [&] {
            for (WCHAR* text : {drive, dir, name, extension}) text[0] = TEXT('q');
            return _wsplitpath_s(TEXT("C:\\ab\\cd.ef"), drive, sizes[0], dir, sizes[1], name, sizes[2],
                                 extension, sizes[3]);
        };
        EXPECT_EQ(split(), 0);
        for (std::size_t size = 1; size < fitting[field]; ++size) {
            sizes[field] = size;
            errno = 0;
            EXPECT_EQ(split(), ERANGE);
            EXPECT_EQ(errno, ERANGE);
            for (const WCHAR* text : {drive, dir, name, extension}) EXPECT_EQ(text[0], TEXT('\0'));
        }
    }
}

TEST(SplitPath, FieldsMayBeLeftOutButNotHalf) {
    WCHAR name[300];
    EXPECT_EQ(_wsplitpath_s(TEXT("C:\\ab\\cd.ef"), nullptr, 0, nullptr, 0, name, 300, nullptr, 0), 0);
    EXPECT_EQ(Wide(name), TEXT("cd"));
    WCHAR drive[3];
    EXPECT_EQ(_wsplitpath_s(TEXT("C:\\a"), drive, 0, nullptr, 0, name, 300, nullptr, 0), EINVAL);
    EXPECT_EQ(_wsplitpath_s(TEXT("C:\\a"), nullptr, 3, nullptr, 0, name, 300, nullptr, 0), EINVAL);
    errno = 0;
    EXPECT_EQ(_wsplitpath_s(nullptr, drive, 3, nullptr, 0, name, 300, nullptr, 0), EINVAL);
    EXPECT_EQ(errno, EINVAL);
}

}  // namespace
