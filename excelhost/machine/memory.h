// What the system tells of this process' memory.
#pragma once

#include <cstddef>

namespace excelhost {

// Bytes of physical memory in use; 0 when the system doesn't tell.
[[nodiscard]] std::size_t ResidentMemory() noexcept;

}  // namespace excelhost
