// What a file that should be an add-in is, by its head.
#pragma once

#include <filesystem>
#include <string>

namespace excelhost {

// What keeps the file from being loaded into this program: it is no module, one for another system, or one of the
// other width. Empty when nothing of it does.
[[nodiscard]] std::string WrongKindOfModule(const std::filesystem::path& file);

// Why the system didn't load the file, as far as it can be told: the library that is missing, by its name.
[[nodiscard]] std::string WhyNotLoaded(const std::filesystem::path& file);

}  // namespace excelhost
