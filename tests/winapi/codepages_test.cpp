#include <gtest/gtest.h>
#include <windows.h>
#include <string>

namespace {

using Wide = std::basic_string<WCHAR>;

Wide WideOf(UINT codePage, const std::string& bytes) {
    Wide wide(bytes.size() + 1, WCHAR{});
    const int written = MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()),
                                            wide.data(), static_cast<int>(wide.size()));
    wide.resize(static_cast<std::size_t>(written));
    return wide;
}

TEST(CodePages, Utf8ReplacesIllFormedSequences) {
    EXPECT_EQ(WideOf(CP_UTF8, "\xC3\x28"), TEXT("\xFFFD("));
    EXPECT_EQ(WideOf(CP_UTF8, "\xE2\x82"), TEXT("\xFFFD"));
    EXPECT_EQ(WideOf(1252, "\x80\x81"), TEXT("\x20AC\x81"));
    EXPECT_EQ(WideOf(932, "\x82\x60"), TEXT("\xFF21"));
}

}  // namespace
