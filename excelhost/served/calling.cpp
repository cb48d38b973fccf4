// Formulas that are evaluated, events, and results that come later.
#include "excelhost/asynccalls.h"
#include "excelhost/callscope.h"
#include "excelhost/served/table.h"
#include "excelhost/state.h"

namespace excelhost {
namespace {

// Each cell is calculated once here, so that a volatile one has nothing to wait for.
Outcome Volatile(HostState&, Operands) {
    return Outcome::Of(true);
}

Outcome Evaluate(HostState& state, Operands operands) {
    const auto text = TextOf(*operands[0]);
    if (!text) return Outcome::Of(ValueFrom(*operands[0]));
    std::function<Value(TextView)> evaluate;
    {
        const std::lock_guard lock(state.mutex);
        const TextView formula = *text;
        const auto name = state.names.find(formula.substr(formula.starts_with(WCHAR{'='}) ? 1 : 0));
        if (name != state.names.end()) return Outcome::Of(name->second);
        evaluate = state.evaluator.evaluate;
    }
    if (!evaluate) return Outcome::Error(xlerrName, "no name of that text is set");
    return Outcome::Of(evaluate(*text));
}

Outcome GetRealTimeData(HostState&, Operands) {
    return Outcome::Error(xlerrNA, "there are no servers of real-time data here");
}

// xlEventRegister(procedure, event): 1 when a calculation has ended, 2 when it was cancelled.
Outcome RegisterEvent(HostState& state, Operands operands) {
    const auto procedure = TextOf(*operands[0]);
    const auto event = NumberOf(*operands[1]);
    const CallScope* scope = CallScope::Current();
    if (!event || (*event != 1 && *event != 2)) return Outcome::Failed(xlretFailed, "there is no such event");
    if (!procedure && !IsLeftOut(*operands[0]))
        return Outcome::Failed(xlretInvXloper, "the procedure is no text");
    const std::lock_guard lock(state.mutex);
    const auto& modules = state.registrations.Modules();
    const Module* module = scope != nullptr      ? state.registrations.FindModule(scope->Module())
                           : modules.size() == 1 ? &modules.front()
                                                 : nullptr;
    if (module == nullptr) return Outcome::Failed(xlretFailed, "called from no add-in's procedure");
    const int number = static_cast<int>(*event);
    std::erase_if(state.handlers, [&](const EventHandler& handler) {
        return handler.event == number && SameName(handler.module, module->path);
    });
    if (!procedure) return Outcome::Of(true);
    const FARPROC entry = module->exports(Utf8(*procedure).c_str());
    if (entry == nullptr) return Outcome::Failed(xlretFailed, "the module exports no such procedure");
    state.handlers.push_back({number, module->path, entry});
    return Outcome::Of(true);
}

// xlAsyncReturn(handle, value), or arrays of both.
Outcome ReturnLater(HostState& state, Operands operands) {
    const XLOPER12& handles = *operands[0];
    const Value values = ValueFrom(*operands[1]);
    if (TypeOf(handles) != xltypeMulti) {
        if (state.asyncCalls.Return(HandleFrom(handles), values)) return Outcome::Of(true);
        return Outcome::Failed(xlretInvAsynchronousContext, "no call waits for this handle");
    }
    const Array* array = values.If<Array>();
    const auto& given = handles.val.array;
    const auto count = static_cast<std::size_t>(given.rows) * static_cast<std::size_t>(given.columns);
    if (given.lparray == nullptr || array == nullptr || array->cells.size() != count) {
        return Outcome::Failed(xlretInvXloper, "handles and values are two arrays of one size");
    }
    bool all = true;
    for (std::size_t i = 0; i < count; ++i) {
        all = state.asyncCalls.Return(HandleFrom(given.lparray[i]), array->cells[i]) && all;
    }
    return all ? Outcome::Of(true)
               : Outcome::Failed(xlretInvAsynchronousContext, "no call waits for one of the handles");
}

Outcome IsOnCluster(HostState&, Operands) {
    return Outcome::Of(false);
}

constexpr ServedFunction kTable[] = {
    {237, "xlfVolatile", 0, 1, From::Anywhere, Volatile},
    {257, "xlfEvaluate", 1, 1, From::Macros, Evaluate},
    {379, "xlfRtd", 3, 255, From::Anywhere, GetRealTimeData},
    {xlSpecial | 16, "xlAsyncReturn", 2, 2, From::Anywhere, ReturnLater},
    {xlSpecial | 17, "xlEventRegister", 2, 2, From::MainThread, RegisterEvent},
    {xlSpecial | 18, "xlRunningOnCluster", 0, 0, From::Anywhere, IsOnCluster},
};

}  // namespace

std::span<const ServedFunction> ServedCalling() {
    return kTable;
}

}  // namespace excelhost
