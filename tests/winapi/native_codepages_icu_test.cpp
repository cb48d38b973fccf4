// UTF-8 conversions and the Western page held against ICU.

#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#include <windows.h>

#include <memory>
#include <random>
#include <string>

#include "src/utf8.h"
#include "utfmodel.h"

namespace {

using utfmodel::Wide;

constexpr UChar32 replacement = 0xFFFD;

std::int32_t Size(std::size_t size) {
    return static_cast<std::int32_t>(size);
}

TEST(Icu, AgreesAboutUtf8) {
    std::mt19937 random(72);
    for (int round = 0; round < 2000; ++round) {
        const bool illFormed = round % 2 != 0;
        const std::string utf8 = utfmodel::RandomUtf8(random, 1 + random() % 1000, illFormed);
        Wide theirs(utf8.size(), WCHAR{});
        std::int32_t count = 0;
        UErrorCode error = U_ZERO_ERROR;
        u_strFromUTF8WithSub(theirs.data(), Size(theirs.size()), &count, utf8.data(), Size(utf8.size()),
                             replacement, nullptr, &error);
        ASSERT_TRUE(U_SUCCESS(error));
        theirs.resize(static_cast<std::size_t>(count));
        Wide ours(winapi::utf8::Utf16Length(utf8), WCHAR{});
        ASSERT_EQ(winapi::utf8::ToUtf16(utf8, ours), ours.size());
        ASSERT_EQ(ours, theirs);

        const Wide wide = utfmodel::RandomWide(random, 1 + random() % 1000, illFormed);
        std::string theirBytes(3 * wide.size(), '\0');
        u_strToUTF8WithSub(theirBytes.data(), Size(theirBytes.size()), &count, wide.data(), Size(wide.size()),
                           replacement, nullptr, &error);
        ASSERT_TRUE(U_SUCCESS(error));
        theirBytes.resize(static_cast<std::size_t>(count));
        std::string ourBytes(winapi::utf8::Utf8Length(wide), '\0');
        ASSERT_EQ(winapi::utf8::ToUtf8(wide, ourBytes), ourBytes.size());
        ASSERT_EQ(ourBytes, theirBytes);
    }
}

// ICU's converters and ours may differ where a page leaves bytes undefined and in what they call the best
// fit; text of the page alone has neither.
TEST(Icu, AgreesAboutSingleBytePages) {
    for (const auto& [number, name] :
         {std::pair{1250u, "windows-1250"}, {1251u, "windows-1251"}, {1252u, "windows-1252"}}) {
        UErrorCode error = U_ZERO_ERROR;
        const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open(name, &error),
                                                                           &ucnv_close);
        ASSERT_TRUE(U_SUCCESS(error));
        std::string bytes;
        for (int byte = 1; byte < 256; ++byte) bytes += static_cast<char>(byte);
        Wide theirs(bytes.size(), WCHAR{});
        ucnv_toUChars(converter.get(), theirs.data(), Size(theirs.size()), bytes.data(), Size(bytes.size()),
                      &error);
        Wide ours(bytes.size(), WCHAR{});
        ASSERT_EQ(
            MultiByteToWideChar(number, 0, bytes.data(), Size(bytes.size()), ours.data(), Size(ours.size())),
            Size(bytes.size()));
        EXPECT_EQ(ours, theirs) << name;
        std::string back(bytes.size(), '\0');
        WideCharToMultiByte(number, 0, ours.data(), Size(ours.size()), back.data(), Size(back.size()),
                            nullptr, nullptr);
        EXPECT_EQ(back, bytes) << name;
    }
}

}  // namespace
