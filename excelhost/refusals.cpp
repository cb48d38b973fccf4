#include "excelhost/refusals.h"

namespace excelhost {

std::optional<int> Refusals::Strike(int function, std::span<const LPXLOPER12> operands) {
    std::optional<int> code;
    for (auto rule = rules_.begin(); rule != rules_.end();) {
        bool strikes = rule->function == function;
        if (strikes && rule->target) {
            strikes = !operands.empty() && operands[0] != nullptr && TextOf(*operands[0]) == rule->target;
        }
        const bool counted = strikes && rule->remaining > 0;
        if (counted) strikes = --rule->remaining == 0;
        if (strikes && !code) code = rule->returnCode;
        rule = counted && rule->remaining == 0 ? rules_.erase(rule) : rule + 1;
    }
    return code;
}

}  // namespace excelhost
