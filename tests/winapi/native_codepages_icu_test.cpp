// UTF-8 conversions held against ICU.
#include "codepagetext.h"

#include <cstdint>

#include <unicode/ustring.h>

namespace {

constexpr UChar32 replacement = 0xFFFD;

std::int32_t Size(std::size_t size) {
    return static_cast<std::int32_t>(size);
}

TEST(Icu, AgreesAboutUtf8) {
    std::mt19937 random(72);
    for (int round = 0; round < 4000; ++round) {
        const Wide wide = Spoilt(random, RandomWide(random, 1 + random() % 1000));
        const std::string utf8 = Spoilt(random, NarrowOf(CP_UTF8, wide));
        Wide theirs(utf8.size(), WCHAR{});
        std::string theirBytes(3 * wide.size(), '\0');
        std::int32_t count = 0;
        UErrorCode error = U_ZERO_ERROR;
        u_strFromUTF8WithSub(theirs.data(), Size(theirs.size()), &count, utf8.data(), Size(utf8.size()),
                             replacement, nullptr, &error);
        ASSERT_TRUE(U_SUCCESS(error));
        ASSERT_EQ(WideOf(CP_UTF8, utf8, 0, random() % 32), theirs.substr(0, static_cast<std::size_t>(count)));
        u_strToUTF8WithSub(theirBytes.data(), Size(theirBytes.size()), &count, wide.data(), Size(wide.size()),
                           replacement, nullptr, &error);
        ASSERT_TRUE(U_SUCCESS(error));
        ASSERT_EQ(NarrowOf(CP_UTF8, wide), theirBytes.substr(0, static_cast<std::size_t>(count)));
    }
}

}  // namespace
