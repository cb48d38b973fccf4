#pragma once

#include "support/home.h"

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace support {

using WidePath = std::basic_string<WCHAR>;

// A fresh folder for files until the end of the object. Paths in it have a drive and backslashes.
class Folder {
  public:
    Folder() : path_(std::filesystem::temp_directory_path() / FreshName()) {
        std::filesystem::create_directory(path_);
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const noexcept { return path_; }

    // Of a name in the folder, which has "\" between the names of folders below it.
    [[nodiscard]] WidePath operator/(const WidePath& name) const {
        const std::u16string folder = path_.u16string();
        WidePath path(folder.begin(), folder.end());
        std::replace(path.begin(), path.end(), TEXT('/'), TEXT('\\'));
        return (path.front() == TEXT('\\') ? TEXT("Z:") : TEXT("")) + path + TEXT("\\") + name;
    }

    void Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(path_ / name, std::ios::binary) << bytes;
    }
    [[nodiscard]] std::string Read(const std::string& name) const {
        std::ifstream file(path_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    static std::string FreshName() {
        static int count = 0;
        return "kestrolumen files " + std::to_string(GetCurrentProcessId()) + "." + std::to_string(++count);
    }

    std::filesystem::path path_;
};

// Tests of files: each has a folder, and leaves as many handles open as it found.
class FileTest : public testing::Test {
  protected:
    const Folder folder;

  private:
    void SetUp() override { handles_ = OpenHandles(); }
    void TearDown() override { EXPECT_LE(OpenHandles(), handles_ + 2) << "Wine keeps a few of its own"; }

    std::size_t handles_ = 0;
};

}  // namespace support
