#include "platform/fileversioninfo.h"

#include "platform/modulepaths.h"
#include "support/home.h"

#include <windows.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace {

CStringW ProbePath() {
    CStringW directory;
    GetModulePathParts(nullptr, &directory, nullptr, nullptr);
    return directory + TEXT("ProbeModule.dll");
}

bool IsEmpty(const FileVersionInfo& info) {
    constexpr VS_FIXEDFILEINFO zero{};
    return info.data == nullptr && info.path.IsEmpty() && info.language == 0 && info.codePage == 0 &&
           std::memcmp(&info.fixedInfo, &zero, sizeof zero) == 0;
}

// The bytes of a text in a resource, with its end.
std::string Utf16(const std::string& text) {
    std::string bytes;
    for (const char c : text) bytes += {c, '\0'};
    return bytes + std::string(2, '\0');
}

// A copy of the probe module in which some bytes, wherever they stand, are replaced by as many others.
class SpoiltCopy {
  public:
    SpoiltCopy(const std::string& from, const std::string& to) {
        std::ifstream in(support::ProgramFolder() / "ProbeModule.dll", std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        std::size_t count = 0;
        for (std::size_t at = bytes.find(from); at != std::string::npos; at = bytes.find(from, at + 1)) {
            bytes.replace(at, to.size(), to);
            ++count;
        }
        EXPECT_GT(count, 0U);
        std::ofstream(file_, std::ios::binary) << bytes;
    }
    ~SpoiltCopy() { std::filesystem::remove(file_); }
    SpoiltCopy(const SpoiltCopy&) = delete;
    SpoiltCopy& operator=(const SpoiltCopy&) = delete;

    [[nodiscard]] CStringW Path() const { return CStringW(file_.string().c_str()); }

  private:
    std::filesystem::path file_ = std::filesystem::temp_directory_path() /
                                  ("kestrolumen-fileversioninfo-" + std::to_string(GetCurrentProcessId()));
};

constexpr std::uint32_t stringCount = 12;

void ExpectNoStrings(const FileVersionInfo& info) {
    for (const std::uint32_t index : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 10U, 11U, 12U, 0xFFFFFFFFU}) {
        EXPECT_TRUE(info.GetString(index).IsEmpty()) << index;
        EXPECT_EQ(info.HasString(index), 0) << index;
    }
}

TEST(FileVersionInfo, ReadsAModule) {
    const FileVersionInfo info(ProbePath());
    ASSERT_NE(info.data, nullptr);
    EXPECT_EQ(info.path, ProbePath());
    EXPECT_EQ(info.language, 0x0409);
    EXPECT_EQ(info.codePage, 1200);
    const DWORD high = info.fixedInfo.dwFileVersionMS, low = info.fixedInfo.dwFileVersionLS;
    EXPECT_EQ(CStringAFormat("%d.%d.%d.%d", HIWORD(high), LOWORD(high), HIWORD(low), LOWORD(low)),
              PROJECT_VERSION_TEXT);
    EXPECT_EQ(info.fixedInfo.dwProductVersionMS, high);

    // Entries 4 and 5 are asked for in another case than the resource has.
    const char* const texts[stringCount] = {
        "Quillmar",
        "Module for tests",
        PROJECT_VERSION_TEXT,
        "probe",
        "Copyright (c) Quillmar",
        "ProbeModule.dll",
        "Kestrolumen",
        PROJECT_VERSION_TEXT,
        "",
        "",
        "",
        "",
    };
    for (std::uint32_t index = 0; index < stringCount; ++index) {
        EXPECT_EQ(info.GetString(index), CStringW(texts[index])) << index;
        EXPECT_EQ(info.HasString(index) != 0, *texts[index] != '\0') << index;
    }
    EXPECT_TRUE(info.GetString(stringCount).IsEmpty());
    EXPECT_EQ(info.HasString(stringCount), 0);
}

TEST(FileVersionInfo, IsEmptyForAFileWithoutOne) {
    const CStringW paths[] = {TEXT(""), TEXT("Z:\\no\\such\\file"), GetModulePath(nullptr)};
    for (const CStringW& path : paths) {
        const FileVersionInfo info(path);
        EXPECT_TRUE(IsEmpty(info));
        ExpectNoStrings(info);
    }
    EXPECT_TRUE(IsEmpty(FileVersionInfo()));
    EXPECT_TRUE(IsEmpty(FileVersionInfo(static_cast<const WCHAR*>(nullptr))));
}

TEST(FileVersionInfo, LoadsAgainFromEmpty) {
    FileVersionInfo info;
    EXPECT_EQ(info.Load(ProbePath()), 1);
    EXPECT_EQ(info.Load(info.path), 1) << "its own path";
    EXPECT_EQ(info.path, ProbePath());
    EXPECT_EQ(info.Load(TEXT("Z:\\no\\such\\file")), 0);
    EXPECT_TRUE(IsEmpty(info)) << "nothing is left of the first file";
    EXPECT_EQ(info.Load(ProbePath().GetString()), 1);
    info.Clear();
    EXPECT_TRUE(IsEmpty(info));
}

TEST(FileVersionInfo, TellsAnEmptyEntryFromNone) {
    const SpoiltCopy copy(Utf16("Quillmar"), Utf16(""));
    const FileVersionInfo info(copy.Path());
    ASSERT_NE(info.data, nullptr);
    EXPECT_TRUE(info.GetString(0).IsEmpty());
    EXPECT_NE(info.HasString(0), 0);
    EXPECT_EQ(info.HasString(8), 0);
}

TEST(FileVersionInfo, SearchesTheFirstTranslationAlone) {
    // The translation says German in page 1252; the texts stand under English.
    const SpoiltCopy copy(std::string("\x09\x04\xB0\x04", 4), std::string("\x07\x04\xE4\x04", 4));
    const FileVersionInfo info(copy.Path());
    ASSERT_NE(info.data, nullptr);
    EXPECT_EQ(info.language, 0x0407);
    EXPECT_EQ(info.codePage, 1252);
    ExpectNoStrings(info);
}

TEST(FileVersionInfo, WithoutNumbersOrTranslationIsNone) {
    const std::string header = std::string("\x34\0\0\0", 4) + Utf16("VS_VERSION_INFO");
    const SpoiltCopy withoutNumbers(header, std::string("\0\0", 2));
    EXPECT_TRUE(IsEmpty(FileVersionInfo(withoutNumbers.Path())));
    const SpoiltCopy withoutTranslation(Utf16("Translation"), Utf16("Xranslation"));
    EXPECT_TRUE(IsEmpty(FileVersionInfo(withoutTranslation.Path())));
}

TEST(FileVersionInfo, NamesItsCodePageAsTheSystemDoes) {
    for (const char* bytes : {"\xB0\x04", "\xE4\x04", "\x01\x01"}) {
        const std::string english("\x09\x04", 2);
        const SpoiltCopy copy(english + std::string("\xB0\x04", 2), english + std::string(bytes, 2));
        const FileVersionInfo info(copy.Path());
        ASSERT_NE(info.data, nullptr);
        CPINFOEXW facts{};
        const bool known = GetCPInfoExW(info.codePage, 0, &facts) != FALSE;
        EXPECT_EQ(info.CodePageName(), known ? CStringW(facts.CodePageName) : CStringW()) << info.codePage;
    }
}

}  // namespace
