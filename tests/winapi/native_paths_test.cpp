#include "src/failure.h"
#include "src/paths.h"

#include <windows.h>

#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

TEST(Paths, BothSpellingsNameTheSameFile) {
    const std::pair<const char16_t*, const char*> rows[] = {
        {u"Z:\\a\\b", "/a/b"}, {u"z:/a\\b", "/a/b"}, {u"\\a", "/a"}, {u"a\\b", "a/b"},
        {u"Z:a", "a"},         {u"Z:", "."},         {u"Z:\\", "/"}, {u"..\\x", "../x"},
    };
    for (const auto& [windows, system] : rows) EXPECT_EQ(winapi::SystemPath(windows), system);
    EXPECT_EQ(winapi::WindowsPath("/a/b"), u"Z:\\a\\b");
    EXPECT_EQ(winapi::FullPath("/a/./b//c/../d"), "/a/b/d");
    for (const char16_t* none : {u"C:\\a", u"\\\\server\\share", u""}) {
        EXPECT_THROW(static_cast<void>(winapi::SystemPath(none)), winapi::Failure);
    }
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
}

}  // namespace
