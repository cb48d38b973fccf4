#include "text/detail/ansicodepage.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

namespace kestrolumen::detail {

unsigned LongestAnsiCharacter() noexcept {
    CPINFO info{};
    return GetCPInfo(CP_ACP, &info) != FALSE ? info.MaxCharSize : 0;
}

std::array<bool, 256> AnsiLeadBytes() noexcept {
    std::array<bool, 256> isLead{};
    CPINFO info{};
    if (GetCPInfo(CP_ACP, &info) == FALSE || info.MaxCharSize != 2) return isLead;
    // Pairs of a first and a last byte, and zeros behind them.
    for (std::size_t i = 0; i + 1 < std::size(info.LeadByte) && info.LeadByte[i] != 0; i += 2) {
        std::fill(isLead.begin() + info.LeadByte[i], isLead.begin() + info.LeadByte[i + 1] + 1, true);
    }
    return isLead;
}

}  // namespace kestrolumen::detail
