// What tests need of the system they run on, in the same words for both homes.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace support {

// Sets an environment variable of this process and of the children it starts, or takes it away; the end of
// the object brings back what was there.
class EnvironmentVariable {
  public:
    EnvironmentVariable(const char* name, const std::optional<std::string>& value);
    ~EnvironmentVariable();
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

  private:
    std::string name_;
    std::optional<std::string> previous_;
};

// The folder that holds the running program.
[[nodiscard]] std::filesystem::path ProgramFolder();

// Kernel handles that the process has open; natively its file descriptors.
[[nodiscard]] std::size_t OpenHandles();

// Without an administrator's rights until the end of the object, where this system lets a process do so. Under
// Windows nothing changes.
class WithoutElevation {
  public:
    WithoutElevation();
    ~WithoutElevation();
    WithoutElevation(const WithoutElevation&) = delete;
    WithoutElevation& operator=(const WithoutElevation&) = delete;
};

// A fresh folder in which the stand-in keeps its named objects, for this process and its children, until the
// end of the object. Under Windows it stays empty.
class RuntimeFolder {
  public:
    RuntimeFolder();
    ~RuntimeFolder();
    RuntimeFolder(const RuntimeFolder&) = delete;
    RuntimeFolder& operator=(const RuntimeFolder&) = delete;

    // What is in it, folders aside.
    [[nodiscard]] std::vector<std::string> Files() const;

  private:
    std::filesystem::path path_;
    EnvironmentVariable variable_;
};

}  // namespace support
