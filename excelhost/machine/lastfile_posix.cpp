#include "excelhost/machine/lastfile.h"

#include <fcntl.h>
#include <unistd.h>

namespace excelhost {

LastFile::LastFile(const std::filesystem::path& path) noexcept
    : handle_(open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC)) {}

LastFile::~LastFile() {
    if (handle_ >= 0) close(static_cast<int>(handle_));
}

void LastFile::Append(std::string_view text) const noexcept {
    (void)!write(static_cast<int>(handle_), text.data(), text.size());
}

}  // namespace excelhost
