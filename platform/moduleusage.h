#pragma once

#include "text/text.h"

#include <cstdint>

// How often this process has loaded the module with the file name `fileName`, as "kernel32.dll" in any case:
// the system's count, which is 65535 for modules that came with the process. -1 when no such module is
// loaded, when a path is given instead of a name, and when the system doesn't tell. Raises nothing but what
// the memory layer raises.
[[nodiscard]] std::int32_t ModuleUsageCount(const CStringW& fileName);
