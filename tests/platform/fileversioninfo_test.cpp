#include "platform/fileversioninfo.h"

#include "platform/modulepaths.h"
#include "support/folder.h"

#include <windows.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace {

CStringW ProbePath() {
    return CStringW((support::ProgramFolder() / "ProbeModule.dll").c_str());
}

bool IsEmpty(const FileVersionInfo& info) {
    constexpr VS_FIXEDFILEINFO zero{};
    return info.data == nullptr && info.path.IsEmpty() && info.language == 0 && info.codePage == 0 &&
           std::memcmp(&info.fixedInfo, &zero, sizeof zero) == 0 && info.HasString(0) == 0;
}

// The bytes of a text in a resource, with its end.
std::string Utf16(const std::string& text) {
    std::string bytes;
    for (const char c : text) bytes += {c, '\0'};
    return bytes + std::string(2, '\0');
}

// Loads a copy of the probe module in which some bytes, wherever they stand, are replaced by as many others.
void LoadSpoilt(FileVersionInfo& info, const std::string& from, const std::string& to) {
    std::ifstream in(support::ProgramFolder() / "ProbeModule.dll", std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    for (auto at = bytes.find(from); at != std::string::npos; at = bytes.find(from, at + 1)) {
        bytes.replace(at, to.size(), to);
    }
    const support::Folder folder;
    folder.Write("spoilt", bytes);
    info.Load(CStringW((folder / TEXT("spoilt")).c_str()));
}

TEST(FileVersionInfo, ReadsAModule) {
    FileVersionInfo info(ProbePath());
    ASSERT_NE(info.data, nullptr);
    EXPECT_EQ(info.language, 0x0409);
    EXPECT_EQ(info.codePage, 1200);
    EXPECT_EQ(StdStringFormat("%d.", HIWORD(info.fixedInfo.dwFileVersionMS)),
              std::string(PROJECT_VERSION_TEXT).substr(0, 2));
    const char* const texts[] = {"Quillmar",    "Module for tests",       PROJECT_VERSION_TEXT,
                                 "probe",       "Copyright (c) Quillmar", "ProbeModule.dll",
                                 "Kestrolumen", PROJECT_VERSION_TEXT};
    for (std::uint32_t index = 0; index < 14; ++index) {
        EXPECT_EQ(info.HasString(index) != 0, index < std::size(texts)) << index;
        EXPECT_EQ(info.GetString(index), CStringW(index < std::size(texts) ? texts[index] : "")) << index;
    }
    EXPECT_EQ(info.Load(info.path), 1) << "its own path";
    EXPECT_EQ(info.path, ProbePath());
    EXPECT_EQ(info.Load(TEXT("Z:\\no\\such\\file")), 0);
    EXPECT_TRUE(IsEmpty(info)) << "nothing is left of the first file";
    EXPECT_EQ(info.Load(GetModulePath(nullptr)), 0) << "a module without a resource";
}

TEST(FileVersionInfo, EndsATextWithItsEntry) {
    const std::string name = Utf16("CompanyName");
    // Bytes of the entry, the length of its text, and whether it is a text.
    const std::string whole("\x32\0\x09\0\1\0", 6), binary("\x28\0\x08\0\0\0", 6),
        damaged("\x28\0\xFF\xFF\1\0", 6), nowhere("\xFF\xFF\xFF\xFF\1\0", 6);
    FileVersionInfo info;
    for (const std::string& header : {binary, damaged}) {
        LoadSpoilt(info, whole + name, header + name);
        EXPECT_EQ(info.GetString(0), "Quil");
    }
    LoadSpoilt(info, whole + name, nowhere + name);
    EXPECT_TRUE(info.GetString(0).IsEmpty() || info.GetString(0) == "Quillmar") << "as the system finds it";
}

TEST(FileVersionInfo, ReadsWhatIsOddlyFilled) {
    FileVersionInfo info;
    LoadSpoilt(info, Utf16("Quillmar"), Utf16(""));
    EXPECT_TRUE(info.GetString(0).IsEmpty());
    EXPECT_NE(info.HasString(0), 0) << "an empty entry is one";
    LoadSpoilt(info, Utf16("Translation"), Utf16("Xranslation"));
    EXPECT_TRUE(IsEmpty(info));
    LoadSpoilt(info, std::string("\x34\0\0\0", 4) + Utf16("VS_VERSION_INFO"), std::string("\0\0", 2));
    EXPECT_TRUE(IsEmpty(info)) << "without numbers";
    // The translation says German in page 1252; the texts stand under English.
    LoadSpoilt(info, "\x09\x04\xB0\x04", "\x07\x04\xE4\x04");
    EXPECT_EQ(info.language, 0x0407);
    CPINFOEXW facts{};
    ASSERT_TRUE(GetCPInfoExW(1252, 0, &facts));
    EXPECT_EQ(info.CodePageName(), CStringW(facts.CodePageName));
    EXPECT_EQ(info.HasString(0), 0) << "the first translation alone is searched";
}

}  // namespace
