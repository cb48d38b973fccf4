#include "text/ansicodepage.h"

#include <windows.h>

namespace detail {

unsigned LongestAnsiCharacter() noexcept {
    CPINFO info{};
    return GetCPInfo(CP_ACP, &info) != FALSE ? info.MaxCharSize : 0;
}

}  // namespace detail
