#pragma once

#include "support/home.h"

#include <cstdint>
#include <filesystem>

namespace support {

// An empty registry for this process until the end of the object: natively a file of its own, which children
// share. Under Windows the roots HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE are led to keys below
// HKEY_CURRENT_USER\Software, which go at the end; children see the real ones.
class FreshRegistry {
  public:
    FreshRegistry();
    ~FreshRegistry();
    FreshRegistry(const FreshRegistry&) = delete;
    FreshRegistry& operator=(const FreshRegistry&) = delete;

    // The file that isn't there before the first write; under Windows no file.
    [[nodiscard]] const std::filesystem::path& File() const noexcept { return file_; }

  private:
    std::filesystem::path file_;
    EnvironmentVariable variable_;
};

}  // namespace support
