// A file that is added to when the program ends in an add-in.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace excelhost {

class LastFile {
  public:
    // The file is there. One that can't be opened takes nothing.
    explicit LastFile(const std::filesystem::path& path) noexcept;
    ~LastFile();
    LastFile(const LastFile&) = delete;
    LastFile& operator=(const LastFile&) = delete;

    // At the end of the file, at once. Takes neither memory nor a lock, and little of the stack.
    void Append(std::string_view text) const noexcept;

  private:
    std::intptr_t handle_;
};

}  // namespace excelhost
