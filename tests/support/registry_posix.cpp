#include "support/registry.h"

#include <random>

namespace support {

// In memory where there is such a place, so that nobody waits for a disk. The folder is made by the first
// write, too.
FreshRegistry::FreshRegistry()
    : file_((std::filesystem::exists("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path()) /
            ("kestrolumen-registry-" + std::to_string(std::random_device()())) / "registry"),
      variable_("KESTROLUMEN_REGISTRY", file_.string()) {}

FreshRegistry::~FreshRegistry() {
    std::filesystem::remove_all(file_.parent_path());
}

}  // namespace support
