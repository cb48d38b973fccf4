// What turns messages and alerts on and off.
#include "excelhost/served/table.h"
#include "excelhost/state.h"

namespace excelhost {
namespace {

// ERROR(enable, macro): false or 0 turns the alerts for macro errors off.
Outcome SwitchAlerts(HostState& state, Operands operands) {
    const auto enable = NumberOf(*operands[0]);
    if (!enable) return Outcome::Error(xlerrValue, "the operand is no number");
    const std::lock_guard lock(state.mutex);
    state.alerts = *enable != 0;
    return Outcome::Of(true);
}

template <bool On>
Outcome SwitchMessages(HostState& state, Operands) {
    const std::lock_guard lock(state.mutex);
    state.messages = On;
    return Outcome::Of(true);
}

constexpr ServedFunction kTable[] = {
    {xlfError, "xlfError", 1, 2, From::MainThread, SwitchAlerts},
    {xlEnableXLMsgs, "xlEnableXLMsgs", 0, 0, From::Anywhere, SwitchMessages<true>},
    {xlDisableXLMsgs, "xlDisableXLMsgs", 0, 0, From::Anywhere, SwitchMessages<false>},
};

}  // namespace

std::span<const ServedFunction> ServedSwitches() {
    return kTable;
}

}  // namespace excelhost
