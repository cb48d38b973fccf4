#include "excelhost/modulefile.h"

#include <dlfcn.h>

namespace excelhost {

// The loader's own words name what is missing.
std::string WhyNotLoaded(const std::filesystem::path& file) {
    if (void* module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) dlclose(module);
    const char* words = dlerror();
    return words != nullptr ? words : "the system doesn't say why";
}

}  // namespace excelhost
