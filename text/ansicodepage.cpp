#include "text/detail/ansicodepage.h"

#include <windows.h>

namespace kestrolumen::detail {

unsigned LongestAnsiCharacter() noexcept {
    CPINFO info{};
    return GetCPInfo(CP_ACP, &info) != FALSE ? info.MaxCharSize : 0;
}

}  // namespace kestrolumen::detail
