#include "support/home.h"

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <stdexcept>

namespace support {
namespace {

void Set(const std::string& name, const std::optional<std::string>& value) {
    if (value) {
        setenv(name.c_str(), value->c_str(), 1);
    } else {
        unsetenv(name.c_str());
    }
}

std::string NewFolder() {
    std::string path = std::filesystem::temp_directory_path() / "kestrolumen-test-XXXXXX";
    if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("mkdtemp");
    return path;
}

}  // namespace

EnvironmentVariable::EnvironmentVariable(const char* name, const std::optional<std::string>& value)
    : name_(name) {
    if (const char* previous = std::getenv(name)) previous_ = previous;
    Set(name_, value);
}
EnvironmentVariable::~EnvironmentVariable() {
    Set(name_, previous_);
}

std::filesystem::path ProgramFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

std::size_t OpenHandles() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

RuntimeFolder::RuntimeFolder() : path_(NewFolder()) {
    variable_.emplace("KESTROLUMEN_RUNTIME_DIR", path_);
}
RuntimeFolder::~RuntimeFolder() {
    std::filesystem::remove_all(path_);
}

std::vector<std::string> RuntimeFolder::Files() const {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path_)) {
        if (!entry.is_directory()) files.push_back(entry.path().filename());
    }
    return files;
}

}  // namespace support
