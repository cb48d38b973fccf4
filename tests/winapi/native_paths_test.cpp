#include "src/failure.h"
#include "src/paths.h"

#include <windows.h>

#include <filesystem>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

using winapi::Failure;

DWORD ErrorOf(std::u16string_view path) {
    try {
        static_cast<void>(winapi::SystemPath(path));
        return ERROR_SUCCESS;
    } catch (const Failure& failure) {
        return failure.code;
    }
}

TEST(Paths, BothSpellingsNameTheSameFile) {
    struct Row {
        const char16_t* windows;
        const char* system;
    };
    const Row rows[] = {
        {u"Z:\\a\\b", "/a/b"}, {u"z:/a\\b", "/a/b"}, {u"/a/b", "/a/b"}, {u"\\a", "/a"},     {u"a\\b", "a/b"},
        {u"Z:a", "a"},         {u"Z:", "."},         {u"Z:\\", "/"},    {u"..\\x", "../x"},
    };
    for (const Row& row : rows) EXPECT_EQ(winapi::SystemPath(row.windows), row.system);
    EXPECT_EQ(winapi::WindowsPath("/a/b"), u"Z:\\a\\b");
    EXPECT_EQ(winapi::WindowsPath("a/b"), u"a\\b");
    EXPECT_EQ(winapi::WindowsPath("/"), u"Z:\\");
    EXPECT_EQ(ErrorOf(u"C:\\a"), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(ErrorOf(u"\\\\server\\share"), DWORD{ERROR_BAD_NETPATH});
    EXPECT_EQ(ErrorOf(u""), DWORD{ERROR_INVALID_NAME});
}

TEST(Paths, FullPathsHaveNoDetours) {
    EXPECT_EQ(winapi::FullPath("/a/./b//c/../d"), "/a/b/d");
    EXPECT_EQ(winapi::FullPath("x"), (std::filesystem::current_path() / "x").string());
}

TEST(Paths, AnyBytesComeBackAsTheyWere) {
    std::mt19937 random(5);  // NOLINT: the same bytes in each run
    for (int round = 0; round < 5000; ++round) {
        std::string bytes(random() % 12, '\0');
        // Mostly lead and trail bytes, so that well-formed sequences come up.
        for (char& byte : bytes)
            byte = static_cast<char>(random() % 4 == 0 ? random() : 0x80 + random() % 0x80);
        EXPECT_EQ(winapi::Utf8FromUtf16(winapi::Utf16FromUtf8(bytes)), bytes)
            << testing::PrintToString(bytes);
    }
    for (char32_t character = 0; character < 0x110000; character += 0x101) {
        if (character >= 0xD800 && character < 0xE000) continue;
        const std::u16string wide = character < 0x10000
                                        ? std::u16string{static_cast<char16_t>(character)}
                                        : std::u16string{static_cast<char16_t>(0xD7C0 + (character >> 10)),
                                                         static_cast<char16_t>(0xDC00 | (character & 0x3FF))};
        EXPECT_EQ(winapi::Utf16FromUtf8(winapi::Utf8FromUtf16(wide)), wide);
    }
}

TEST(Paths, NamesAreComparedWithoutCase) {
    EXPECT_TRUE(winapi::SameName(u"XLCall32.dll", u"xlcALL32.DLL"));
    EXPECT_FALSE(winapi::SameName(u"a", u"ab"));
    EXPECT_FALSE(winapi::SameName(u"[", u"{"));
}

TEST(Paths, APathThatDoesNotFitIsTerminated) {
    WCHAR path[6] = u"qqqqq";
    EXPECT_EQ(GetModuleFileNameW(nullptr, path, 4), 4U);
    EXPECT_EQ(path[3], u'\0');
    EXPECT_EQ(path[4], u'q');
}

}  // namespace
