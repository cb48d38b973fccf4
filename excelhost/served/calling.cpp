// Calls, names and events.
#include "excelhost/asynccalls.h"
#include "excelhost/callscope.h"
#include "excelhost/served/table.h"
#include "excelhost/state.h"
#include "excelhost/worksheetcall.h"

namespace excelhost {
namespace {

// CALL(register id, arguments...).
Outcome CallRegistered(HostState& state, Operands operands) {
    const auto id = NumberOf(*operands[0]);
    if (!id) return Outcome::Error(xlerrValue, "the operand is no register id");
    std::shared_ptr<const Registration> function;
    {
        const std::lock_guard lock(state.mutex);
        function = state.registrations.FindById(*id);
    }
    if (!function) return Outcome::Error(xlerrValue, "nothing is registered under this id");
    std::vector<Value> arguments;
    for (const XLOPER12* operand : operands.subspan(1)) arguments.push_back(ValueFrom(*operand));
    if (arguments.size() > function->Arity()) return Outcome::Error(xlerrValue, "too many arguments");
    const CallScope* scope = CallScope::Current();
    const auto caller = scope != nullptr ? scope->Caller() : std::nullopt;
    return Outcome::Of(CallWorksheetFunction(state, *function, arguments, caller));
}

// Each cell is calculated once here, so that a volatile one has nothing to wait for.
Outcome Volatile(HostState&, Operands) {
    return Outcome::Of(true);
}

// SET.NAME(name, value); without a value the name goes.
Outcome SetName(HostState& state, Operands operands) {
    const auto name = TextOf(*operands[0]);
    if (!name || name->empty()) return Outcome::Error(xlerrValue, "the name is no text");
    const std::lock_guard lock(state.mutex);
    if (operands.size() < 2 || IsLeftOut(*operands[1])) {
        state.names.erase(*name);
    } else {
        state.names.insert_or_assign(*name, ValueFrom(*operands[1]));
    }
    return Outcome::Of(true);
}

Outcome Evaluate(HostState& state, Operands operands) {
    const auto text = TextOf(*operands[0]);
    if (!text) return Outcome::Of(ValueFrom(*operands[0]));
    std::function<Value(TextView)> evaluator;
    {
        const std::lock_guard lock(state.mutex);
        const TextView formula = *text;
        const auto name = state.names.find(formula.substr(formula.starts_with(WCHAR{'='}) ? 1 : 0));
        if (name != state.names.end()) return Outcome::Of(name->second);
        evaluator = state.evaluator;
    }
    if (!evaluator) return Outcome::Error(xlerrName, "no name of that text is set");
    return Outcome::Of(evaluator(*text));
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

// xlDefineBinaryName(name, data): kept for as long as the host lives; without data the name goes.
Outcome DefineBinaryName(HostState& state, Operands operands) {
    const auto name = TextOf(*operands[0]);
    if (!name || name->empty()) return Outcome::Failed(xlretInvXloper, "the name is no text");
    const std::lock_guard lock(state.mutex);
    if (operands.size() < 2 || IsLeftOut(*operands[1])) {
        state.binaryNames.erase(*name);
        return Outcome::Of(true);
    }
    const auto& data = operands[1]->val.bigdata;
    if (TypeOf(*operands[1]) != xltypeBigData || data.cbData < 0 ||
        (data.h.lpbData == nullptr && data.cbData != 0)) {
        return Outcome::Failed(xlretInvXloper, "the data is none");
    }
    state.binaryNames[*name].assign(data.h.lpbData, data.h.lpbData + data.cbData);
    return Outcome::Of(true);
}

Outcome IsOnCluster(HostState&, Operands) {
    return Outcome::Of(false);
}

constexpr ServedFunction kTable[] = {
    {88, "xlfSetName", 1, 2, From::Macros, SetName},
    {150, "xlfCall", 1, 255, From::MainThread, CallRegistered},
    {237, "xlfVolatile", 0, 1, From::Anywhere, Volatile},
    {257, "xlfEvaluate", 1, 1, From::Macros, Evaluate},
    {379, "xlfRtd", 3, 255, From::Anywhere, GetRealTimeData},
    {xlSpecial | 12, "xlDefineBinaryName", 1, 2, From::Anywhere, DefineBinaryName},
    {xlSpecial | 16, "xlAsyncReturn", 2, 2, From::Anywhere, ReturnLater},
    {xlSpecial | 17, "xlEventRegister", 2, 2, From::MainThread, RegisterEvent},
    {xlSpecial | 18, "xlRunningOnCluster", 0, 0, From::Anywhere, IsOnCluster},
};

}  // namespace

std::span<const ServedFunction> ServedCalling() {
    return kTable;
}

}  // namespace excelhost
