// Calls into Excel that a test wants refused.
#pragma once

#include "excelhost/value.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace excelhost {

struct RefusalRule {
    int function = 0;
    std::size_t remaining = 0;   // calls until it strikes once; 0 strikes at every call
    std::optional<Text> target;  // strikes only calls with this text as their first operand
    int returnCode = xlretFailed;
};

// Not locked: who shares it locks it.
class Refusals {
  public:
    void Add(RefusalRule rule) { rules_.push_back(std::move(rule)); }
    void Clear() noexcept { rules_.clear(); }
    // The return code of the first rule that strikes. Each rule with a count counts the call down, also when
    // another one has struck.
    [[nodiscard]] std::optional<int> Strike(int function, std::span<const LPXLOPER12> operands);

  private:
    std::vector<RefusalRule> rules_;
};

}  // namespace excelhost
