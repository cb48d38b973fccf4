// What an add-in asks about itself and the program that it runs in.
#include "excelhost/callscope.h"
#include "excelhost/served/table.h"
#include "excelhost/state.h"

#include <windows.h>

#include <cstdint>
#include <limits>
#include <mutex>

namespace excelhost {
namespace {

// The module whose code calls: that of the innermost call of this thread, or the only one there is.
std::optional<Module> CallingModule(HostState& state) {
    const std::lock_guard lock(state.mutex);
    const CallScope* scope = CallScope::Current();
    if (scope != nullptr) {
        const Module* module = state.registrations.FindModule(scope->Module());
        if (module != nullptr) return *module;
    }
    const auto& modules = state.registrations.Modules();
    return modules.size() == 1 ? std::optional(modules.front()) : std::nullopt;
}

Outcome GetName(HostState& state, Operands) {
    const auto module = CallingModule(state);
    if (!module) return Outcome::Failed(xlretFailed, "called from no add-in's procedure");
    return Outcome::Of(module->path);
}

// The low 16 bits are all that a 64-bit program gives here.
Outcome GetInstance(HostState&, Operands) {
    const auto instance = reinterpret_cast<std::uintptr_t>(GetModuleHandleW(nullptr));
    return Outcome::Of(static_cast<int>(sizeof instance > 4 ? instance & 0xFFFF : instance));
}

// The whole of it, as a handle.
Outcome GetInstancePointer(HostState&, Operands) {
    return Outcome::Of(BigData{GetModuleHandleW(nullptr), 0});
}

// There is no window. A number that is none keeps an add-in from owning somebody else's.
Outcome GetWindowHandle(HostState&, Operands) {
    return Outcome::Of(0);
}

// The bytes of stack that are left: more than a 16-bit answer of older versions could say.
Outcome GetStack(HostState&, Operands) {
    return Outcome::Of(int{std::numeric_limits<std::int16_t>::max()} + 1);
}

// Nobody presses the escape key here.
Outcome IsAborted(HostState&, Operands) {
    return Outcome::Of(false);
}

constexpr ServedFunction kTable[] = {
    {xlSpecial | 9, "xlGetName", 0, 0, From::Anywhere, GetName},
    {xlSpecial | 7, "xlGetInst", 0, 0, From::Anywhere, GetInstance},
    {xlSpecial | 19, "xlGetInstPtr", 0, 0, From::Anywhere, GetInstancePointer},
    {xlSpecial | 8, "xlGetHwnd", 0, 0, From::Anywhere, GetWindowHandle},
    {xlSpecial | 1, "xlStack", 0, 0, From::Anywhere, GetStack},
    {xlSpecial | 6, "xlAbort", 0, 1, From::Anywhere, IsAborted},
};

}  // namespace

std::span<const ServedFunction> ServedSurroundings() {
    return kTable;
}

}  // namespace excelhost
