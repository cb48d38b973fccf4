#include "support/home.h"

#include <windows.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace {

using Wide = std::basic_string<WCHAR>;

// What the error is, after `*file` has been closed.
errno_t ErrorOf(const Wide& path, const WCHAR* mode, std::string* content = nullptr) {
    FILE* file = reinterpret_cast<FILE*>(1);
    const errno_t error = _wfopen_s(&file, path.c_str(), mode);
    EXPECT_EQ(file == nullptr, error != 0);
    if (file == nullptr) return error;
    if (content != nullptr && mode[0] != TEXT('r')) std::fwrite(content->data(), 1, content->size(), file);
    if (content != nullptr && mode[0] == TEXT('r')) {
        content->resize(100);
        content->resize(std::fread(content->data(), 1, content->size(), file));
    }
    std::fclose(file);
    return error;
}

TEST(FileOpening, TakesMicrosoftsModesAndGivesTheirErrors) {
    const auto folder = std::filesystem::temp_directory_path() / "kestrolumen fopen \u00E9";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    const std::u16string name = (folder / "file").u16string();
    const Wide path(name.begin(), name.end());

    std::string text = "a\r\nb\x1A\nc";
    EXPECT_EQ(ErrorOf(path, TEXT("rbS")), ENOENT);
    EXPECT_EQ(ErrorOf(path, TEXT("wb"), &text), 0);
    EXPECT_EQ(ErrorOf(path, TEXT("abN"), &text), 0);
    std::string read;
    for (const WCHAR* const mode : {TEXT("rbS"), TEXT("rb"), TEXT("r+bR")}) {
        EXPECT_EQ(ErrorOf(path, mode, &read), 0);
        EXPECT_EQ(read, text + text);
    }
    EXPECT_EQ(ErrorOf(path + TEXT("/below"), TEXT("rb")), ENOENT);
    EXPECT_EQ(ErrorOf(path.substr(0, path.size() - 5), TEXT("rb")), EACCES) << "a folder";
    EXPECT_EQ(ErrorOf(path.substr(0, path.size() - 5), TEXT("wb")), EACCES) << "a folder";
    EXPECT_EQ(ErrorOf(TEXT(""), TEXT("rb")), ENOENT);
    std::filesystem::remove_all(folder);
}

}  // namespace
