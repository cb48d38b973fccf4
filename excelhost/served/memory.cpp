// What takes memory back.
#include "excelhost/served/table.h"
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
    {xlFree, "xlFree", 0, 255, From::Anywhere, Free},
};

}  // namespace

std::span<const ServedFunction> ServedMemory() {
    return kTable;
}

}  // namespace excelhost
