#include "support/registry.h"

#include <random>

namespace support {

// The folder is made by the first write, too.
FreshRegistry::FreshRegistry()
    : file_(std::filesystem::temp_directory_path() /
            ("kestrolumen-registry-" + std::to_string(std::random_device()())) / "registry"),
      variable_("KESTROLUMEN_REGISTRY", file_.string()) {}

FreshRegistry::~FreshRegistry() {
    std::filesystem::remove_all(file_.parent_path());
}

}  // namespace support
