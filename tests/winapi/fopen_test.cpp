#include <windows.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace {

TEST(FileOpening, TakesMicrosoftsModesAndGivesTheirErrors) {
    using Wide = std::basic_string<WCHAR>;
    const std::u16string folderName =
        (std::filesystem::temp_directory_path() / "kestrolumen fopen \u00E9").u16string();
    std::filesystem::create_directories(folderName);
    const Wide folder(folderName.begin(), folderName.end());
    const Wide path = folder + TEXT("/file");
    const struct {
        Wide path;
        const WCHAR* mode;
        errno_t error;
    } rows[] = {
        {path, TEXT("rbS"), ENOENT},  {path, TEXT("wbN"), 0},
        {path, TEXT("rbS"), 0},       {path + TEXT("/below"), TEXT("rb"), ENOENT},
        {folder, TEXT("rb"), EACCES},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        auto* file = reinterpret_cast<FILE*>(1);
        ASSERT_EQ(_wfopen_s(&file, row.path.c_str(), row.mode), row.error);
        ASSERT_EQ(file == nullptr, row.error != 0);
        if (file == nullptr) continue;
        char bytes[10] = "a\r\n\x1A\n";
        const bool writes = row.mode[0] == TEXT('w');
        EXPECT_EQ(writes ? std::fwrite(bytes, 1, 5, file) : std::fread(bytes, 1, 10, file), 5u);
        EXPECT_STREQ(bytes, "a\r\n\x1A\n");
        std::fclose(file);
    }
    std::filesystem::remove_all(folderName);
}

}  // namespace
