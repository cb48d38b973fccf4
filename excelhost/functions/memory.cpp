// What takes memory back.
#include "excelhost/functions.h"
#include "excelhost/state.h"

namespace excelhost {
namespace {

Outcome Free(HostState& state, Operands operands) {
    const std::lock_guard lock(state.mutex);
    Outcome outcome = Outcome::Of(true);
    for (XLOPER12* operand : operands) {
        if (std::string fault = state.ledger.TakeBack(*operand); !fault.empty()) {
            outcome = Outcome::Failed(xlretInvXloper, std::move(fault));
        }
    }
    return outcome;
}

constexpr ServedFunction kTable[] = {
    {xlFree, "xlFree", 0, 255, Free},
};

}  // namespace

std::span<const ServedFunction> MemoryFunctions() {
    return kTable;
}

}  // namespace excelhost
