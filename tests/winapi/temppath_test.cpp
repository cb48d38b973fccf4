#include "support/home.h"

#include <windows.h>

#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace {

using support::EnvironmentVariable;
using Wide = std::basic_string<WCHAR>;

Wide TempPath() {
    WCHAR path[600] = {};
    const DWORD length = GetTempPathW(600, path);
    EXPECT_EQ(Wide(path).size(), length);
    return path;
}

TEST(TempPath, IsTheFirstVariableThatIsSet) {
    const EnvironmentVariable tmp("TMP", "Z:\\first"), temp("TEMP", "Z:\\second"),
        profile("USERPROFILE", "Z:\\third");
    const EnvironmentVariable tmpdir("TMPDIR", std::nullopt);
    EXPECT_EQ(TempPath(), TEXT("Z:\\first\\"));
    const EnvironmentVariable noTmp("TMP", std::nullopt);
    EXPECT_EQ(TempPath(), TEXT("Z:\\second\\"));
    const EnvironmentVariable noTemp("TEMP", std::nullopt);
    EXPECT_EQ(TempPath(), TEXT("Z:\\third\\"));
}

TEST(TempPath, IsAFullPathWithOneBackslashAtItsEnd) {
    struct Row {
        const char* value;
        const WCHAR* path;
    };
    const Row rows[] = {
        {"Z:\\tmp", TEXT("Z:\\tmp\\")},       {"Z:\\tmp\\", TEXT("Z:\\tmp\\")},
        {"Z:/tmp//x", TEXT("Z:\\tmp\\x\\")},  {"/tmp", TEXT("Z:\\tmp\\")},
        {"Z:\\a\\..\\b\\.", TEXT("Z:\\b\\")}, {"Z:\\", TEXT("Z:\\")},
    };
    for (const Row& row : rows) {
        const EnvironmentVariable tmp("TMP", row.value);
        EXPECT_EQ(TempPath(), row.path) << row.value;
    }
}

TEST(TempPath, TellsTheSizeItNeeds) {
    const EnvironmentVariable tmp("TMP", "Z:\\abc");
    constexpr DWORD length = 7;
    WCHAR path[20];
    EXPECT_EQ(GetTempPathW(0, nullptr), length + 1);
    for (const DWORD size : {DWORD{1}, DWORD{3}, length}) {
        path[0] = TEXT('q');
        EXPECT_EQ(GetTempPathW(size, path), length + 1);
        EXPECT_EQ(path[0], TEXT('\0'));
    }
    EXPECT_EQ(GetTempPathW(length + 1, path), length);
}

TEST(TempPath, FailsForAPathThatIsTooLong) {
    WCHAR path[600] = {};
    {
        const EnvironmentVariable tmp("TMP", "Z:\\" + std::string(255, 'y'));
        EXPECT_EQ(GetTempPathW(600, path), 259U) << "MAX_PATH with the end";
    }
    const EnvironmentVariable tmp("TMP", "Z:\\" + std::string(256, 'y'));
    path[0] = TEXT('q');
    EXPECT_EQ(GetTempPathW(600, path), 0U);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILENAME_EXCED_RANGE});
    EXPECT_EQ(path[0], TEXT('q'));
}

}  // namespace
