#include "kernel32/failure.h"
#include "kernel32/paths.h"

#include <windows.h>

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

}  // namespace
