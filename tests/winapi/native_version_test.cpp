// Images of both systems and widths, which are the seeds of fuzz/version_fuzz.cpp, too.
#include "kernel32/paths.h"

#include <windows.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(VersionFiles, OfEachKindOfImageGiveTheirBlock) {
    for (const char* const image : {"elf32", "elf64", "pe32", "pe64"}) {
        SCOPED_TRACE(image);
        const std::u16string path = winapi::WindowsPath(std::string(KESTROLUMEN_VERSION_IMAGES) + image);
        std::vector<BYTE> block(GetFileVersionInfoSizeW(path.c_str(), nullptr));
        ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()));
        void* value = nullptr;
        UINT length = 0;
        ASSERT_TRUE(VerQueryValueW(block.data(), u"\\", &value, &length));
        EXPECT_EQ(static_cast<const VS_FIXEDFILEINFO*>(value)->dwFileVersionLS, 0x30004U);
        ASSERT_TRUE(
            VerQueryValueW(block.data(), u"\\StringFileInfo\\040704E4\\companyname", &value, &length));
        EXPECT_EQ(std::u16string(static_cast<const WCHAR*>(value)), u"A firm");
        EXPECT_EQ(length, 7U) << "with the terminator";
    }
}

}  // namespace
