#include "excelhost/machine/memory.h"

#include <array>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

namespace excelhost {

// The second number of /proc/self/statm is the resident pages ("proc(5)").
std::size_t ResidentMemory() noexcept {
    const int file = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    if (file < 0) return 0;
    std::array<char, 128> text{};
    const bool isRead = read(file, text.data(), text.size() - 1) > 0;
    close(file);
    char* rest = text.data();
    (void)std::strtoull(rest, &rest, 10);
    const auto pages = static_cast<std::size_t>(std::strtoull(rest, nullptr, 10));
    return isRead ? pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) : 0;
}

}  // namespace excelhost
