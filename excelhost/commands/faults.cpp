#include "excelhost/commands/faults.h"

#include "excelhost/commandline.h"
#include "excelhost/served/table.h"

#include "excelvalues/xlcall.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

namespace excelhost {
namespace {

// Microsoft's "Excel12, Excel12v" names them.
constexpr auto kReturnCodes = std::to_array<std::pair<std::string_view, int>>({
    {"xlretAbort", xlretAbort},
    {"xlretInvXlfn", xlretInvXlfn},
    {"xlretInvCount", xlretInvCount},
    {"xlretInvXloper", xlretInvXloper},
    {"xlretStackOvfl", xlretStackOvfl},
    {"xlretFailed", xlretFailed},
    {"xlretUncalced", xlretUncalced},
    {"xlretNotThreadSafe", xlretNotThreadSafe},
    {"xlretInvAsynchronousContext", xlretInvAsynchronousContext},
    {"xlretNotClusterSafe", xlretNotClusterSafe},
});

template <class Number>
std::optional<Number> NumberIn(std::string_view text) {
    Number number{};
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && rest == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

int FunctionFrom(std::string_view text) {
    const std::optional<int> number = NumberIn<int>(text);
    const std::optional<int> found = number ? number : FunctionNumber(text);
    if (!found) throw UsageError("--refuse: no function has the name '" + std::string(text) + "'");
    return *found;
}

int CodeFrom(std::string_view text) {
    const auto found = std::find_if(kReturnCodes.begin(), kReturnCodes.end(),
                                    [&](const auto& row) { return row.first == text; });
    if (found != kReturnCodes.end()) return found->second;
    const std::optional<int> number = NumberIn<int>(text);
    if (number && *number > 0) return *number;
    throw UsageError("--refuse: '" + std::string(text) + "' is no return code; xlretFailed and 32 are");
}

}  // namespace

ScriptedRefusal RefusalFrom(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) throw UsageError("--refuse takes FUNCTION[:N]=CODE, not '" + text + "'");
    const std::string_view function = std::string_view(text).substr(0, equals);
    const std::size_t colon = std::min(function.find(':'), function.size());
    ScriptedRefusal refusal{FunctionFrom(function.substr(0, colon)), 0,
                            CodeFrom(std::string_view(text).substr(equals + 1))};
    if (colon == function.size()) return refusal;
    const auto nth = NumberIn<std::size_t>(function.substr(colon + 1));
    if (!nth || *nth == 0) throw UsageError("--refuse: the calls count from 1 on, in '" + text + "'");
    refusal.nth = *nth;
    return refusal;
}

}  // namespace excelhost
