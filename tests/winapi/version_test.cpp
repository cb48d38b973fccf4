#include <windows.h>

#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Wide = std::basic_string<WCHAR>;

Wide ExecutablePath() {
    WCHAR path[2048];
    return {path, GetModuleFileNameW(nullptr, path, 2048)};
}

Wide ProbePath() {
    const Wide own = ExecutablePath();
    return own.substr(0, own.rfind(TEXT('\\')) + 1) + TEXT("ProbeModule.dll");
}

std::vector<BYTE> VersionInfoOf(const Wide& path) {
    DWORD handle = 77;
    std::vector<BYTE> block(GetFileVersionInfoSizeW(path.c_str(), &handle));
    EXPECT_EQ(handle, 0U);
    EXPECT_FALSE(block.empty());
    EXPECT_TRUE(GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()));
    return block;
}

// A text of the block, or "(none)".
Wide TextIn(const std::vector<BYTE>& block, const WCHAR* path) {
    void* value = nullptr;
    UINT length = 77;
    if (VerQueryValueW(block.data(), path, &value, &length) == FALSE) {
        EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_TYPE_NOT_FOUND});
        EXPECT_EQ(length, 0U);
        return TEXT("(none)");
    }
    const Wide text(static_cast<const WCHAR*>(value), length);
    EXPECT_TRUE(text.ends_with(TEXT('\0'))) << "the length counts the terminator";
    return text.substr(0, text.size() - 1);
}

TEST(VersionInfo, GivesTheNumbers) {
    const std::vector<BYTE> block = VersionInfoOf(ProbePath());
    unsigned word[4] = {};
    ASSERT_EQ(std::sscanf(PROJECT_VERSION_TEXT, "%u.%u.%u.%u", &word[0], &word[1], &word[2], &word[3]), 4);
    for (const WCHAR* root : {TEXT("\\"), TEXT("")}) {
        void* value = nullptr;
        UINT length = 0;
        ASSERT_TRUE(VerQueryValueW(block.data(), root, &value, &length));
        ASSERT_EQ(length, sizeof(VS_FIXEDFILEINFO));
        const auto& info = *static_cast<const VS_FIXEDFILEINFO*>(value);
        EXPECT_EQ(info.dwSignature, DWORD{VS_FFI_SIGNATURE});
        EXPECT_EQ(info.dwStrucVersion, DWORD{VS_FFI_STRUCVERSION});
        EXPECT_EQ(info.dwFileVersionMS, word[0] << 16 | word[1]);
        EXPECT_EQ(info.dwFileVersionLS, word[2] << 16 | word[3]);
        EXPECT_EQ(info.dwProductVersionMS, info.dwFileVersionMS);
        EXPECT_EQ(info.dwProductVersionLS, info.dwFileVersionLS);
        EXPECT_EQ(info.dwFileType, 2U);
    }
}

TEST(VersionInfo, GivesTheTranslationAndTheTexts) {
    const std::vector<BYTE> block = VersionInfoOf(ProbePath());
    void* value = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), TEXT("\\VarFileInfo\\Translation"), &value, &length));
    ASSERT_EQ(length, 4U);
    EXPECT_EQ(static_cast<const WORD*>(value)[0], 0x0409);
    EXPECT_EQ(static_cast<const WORD*>(value)[1], 1200);

    const std::string narrowVersion = PROJECT_VERSION_TEXT;
    const Wide version(narrowVersion.begin(), narrowVersion.end());
    struct Row {
        const WCHAR* path;
        Wide text;
    };
    const Row rows[] = {
        {TEXT("\\StringFileInfo\\040904B0\\CompanyName"), TEXT("Quillmar")},
        {TEXT("\\StringFileInfo\\040904B0\\FileDescription"), TEXT("Module for tests")},
        {TEXT("\\StringFileInfo\\040904B0\\FileVersion"), version},
        {TEXT("\\StringFileInfo\\040904B0\\InternalName"), TEXT("probe")},
        {TEXT("\\StringFileInfo\\040904B0\\LegalCopyright"), TEXT("Copyright (c) Quillmar")},
        {TEXT("\\StringFileInfo\\040904B0\\OriginalFilename"), TEXT("ProbeModule.dll")},
        {TEXT("\\StringFileInfo\\040904B0\\ProductName"), TEXT("Kestrolumen")},
        {TEXT("\\StringFileInfo\\040904B0\\ProductVersion"), version},
        // Names are found without regard to case, also without the first backslash.
        {TEXT("\\stringfileinfo\\040904b0\\LEGALCOPYRIGHT"), TEXT("Copyright (c) Quillmar")},
        {TEXT("StringFileInfo\\040904B0\\ProductName"), TEXT("Kestrolumen")},
        {TEXT("\\StringFileInfo\\040904B0\\Comments"), TEXT("(none)")},
        {TEXT("\\StringFileInfo\\040904E4\\ProductName"), TEXT("(none)")},
        {TEXT("\\StringFileInfo\\040904B0\\ProductName\\x"), TEXT("(none)")},
        {TEXT("\\ProductName"), TEXT("(none)")},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(TextIn(block, row.path), row.text) << testing::PrintToString(Wide(row.path));
    }
}

TEST(VersionInfo, ANodeWithoutAValueIsFoundEmpty) {
    const std::vector<BYTE> block = VersionInfoOf(ProbePath());
    for (const WCHAR* path :
         {TEXT("\\StringFileInfo"), TEXT("\\StringFileInfo\\040904B0"), TEXT("\\VarFileInfo")}) {
        void* value = nullptr;
        UINT length = 77;
        EXPECT_TRUE(VerQueryValueW(block.data(), path, &value, &length));
        EXPECT_EQ(length, 0U);
    }
}

TEST(VersionInfo, FilesWithoutItGiveNone) {
    struct Row {
        Wide path;
        DWORD error;
    };
    const Row rows[] = {
        {ExecutablePath(), ERROR_RESOURCE_DATA_NOT_FOUND},
        {TEXT("Z:\\etc\\passwd"), ERROR_RESOURCE_DATA_NOT_FOUND},
        {TEXT("Z:\\no\\such\\file"), ERROR_PATH_NOT_FOUND},
        {TEXT("Z:\\nosuchfile"), ERROR_FILE_NOT_FOUND},
        {TEXT("Z:\\etc"), ERROR_ACCESS_DENIED},
        {TEXT(""), ERROR_BAD_PATHNAME},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.path));
        DWORD handle = 77;
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(GetFileVersionInfoSizeW(row.path.c_str(), &handle), 0U);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(handle, 0U);
        BYTE block[100];
        SetLastError(ERROR_SUCCESS);
        EXPECT_FALSE(GetFileVersionInfoW(row.path.c_str(), 0, sizeof block, block));
        EXPECT_EQ(GetLastError(), row.error);
    }
    EXPECT_EQ(GetFileVersionInfoSizeW(nullptr, nullptr), 0U);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_FALSE(GetFileVersionInfoW(ProbePath().c_str(), 0, 100, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_DATA});
}

}  // namespace
