#include <windows.h>

#include <winbase.h>

#include <string>

#include <gtest/gtest.h>

namespace {

using Wide = std::basic_string<WCHAR>;

struct Formatted {
    Wide text;
    DWORD error;
};

Formatted Format(DWORD code, DWORD language = 0x400, DWORD size = 300) {
    WCHAR text[300] = {};
    SetLastError(ERROR_SUCCESS);
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, language, text, size, nullptr);
    return {Wide(text, length), length == 0 ? GetLastError() : ERROR_SUCCESS};
}

TEST(FormatMessage, HasALineForEachCode) {
    for (const DWORD code :
         {0U, 2U, 3U, 5U, 6U, 32U, 87U, 122U, 123U, 183U, 267U, 288U, 1400U, 1815U, 0x80004001U}) {
        const Wide line = Format(code).text;
        ASSERT_GT(line.size(), 2U) << code;
        EXPECT_EQ(line.substr(line.size() - 2), TEXT("\r\n")) << code;
    }
    EXPECT_EQ(Format(0x80070057).text, Format(87).text);
    EXPECT_EQ(Format(5, 0x409).text, Format(5).text);
}

TEST(FormatMessage, TellsWhyThereIsNone) {
    EXPECT_EQ(Format(87654321).error, DWORD{ERROR_MR_MID_NOT_FOUND});
    EXPECT_EQ(Format(193).error, DWORD{ERROR_INVALID_PARAMETER}) << "it wants an argument";
    EXPECT_EQ(Format(5, 0x47F).error, DWORD{ERROR_RESOURCE_LANG_NOT_FOUND});
    EXPECT_EQ(Format(5, 0x400, 5).error, DWORD{ERROR_INSUFFICIENT_BUFFER});
}

}  // namespace
