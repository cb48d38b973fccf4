#include "platform/tempdirectory.h"

#include "support/home.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using support::EnvironmentVariable;

TEST(TempDirectory, IsGivenWithABackslashAndWithout) {
    struct Row {
        std::string value;
        CStringW with, without;
    };
    const std::string longest(255, 'y');  // 259 units with "Z:\" and the last backslash, the most that fit
    const Row rows[] = {
        {"Z:\\some\\folder", TEXT("Z:\\some\\folder\\"), TEXT("Z:\\some\\folder")},
        {"Z:\\", TEXT("Z:\\"), TEXT("Z:")},
        {"Z:\\" + longest, TEXT("Z:\\") + CStringW(longest.c_str()) + TEXT("\\"),
         TEXT("Z:\\") + CStringW(longest.c_str())},
        // The system gives no folder: it would be too long.
        {"Z:\\y" + longest, TEXT("C:\\"), TEXT("C:")},
    };
    for (const Row& row : rows) {
        const EnvironmentVariable tmp("TMP", row.value);
        EXPECT_EQ(TempDirectory(), row.with);
        EXPECT_EQ(TempDirectoryNoSlash(), row.without);
    }
}

}  // namespace
