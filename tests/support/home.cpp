#include "support/home.h"

#include "support/system.h"

#include <cstdlib>
#include <random>

namespace support {

EnvironmentVariable::EnvironmentVariable(const char* name, const std::optional<std::string>& value)
    : name_(name) {
    if (const char* previous = std::getenv(name)) previous_ = previous;
    SetVariable(name_, value ? value->c_str() : nullptr);
}
EnvironmentVariable::~EnvironmentVariable() {
    SetVariable(name_, previous_ ? previous_->c_str() : nullptr);
}

RuntimeFolder::RuntimeFolder()
    : path_(std::filesystem::temp_directory_path() /
            ("kestrolumen-test-" + std::to_string(std::random_device()()))),
      variable_("KESTROLUMEN_RUNTIME_DIR", path_.string()) {
    std::filesystem::create_directory(path_);
}
RuntimeFolder::~RuntimeFolder() {
    std::filesystem::remove_all(path_);
}

std::vector<std::string> RuntimeFolder::Files() const {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path_)) {
        if (!entry.is_directory()) files.push_back(entry.path().filename().string());
    }
    return files;
}

}  // namespace support
