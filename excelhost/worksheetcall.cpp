#include "excelhost/worksheetcall.h"

#include "excelhost/calling.h"
#include "excelhost/callscope.h"

namespace excelhost {
namespace {

// The flags of a result record, old or new; 0 when the type has no record.
DWORD FlagsOf(ValueType type, Word result) {
    if (result.pointer == nullptr) return 0;
    if (type.letter == 'Q' || type.letter == 'U') return static_cast<LPXLOPER12>(result.pointer)->xltype;
    if (type.letter == 'P' || type.letter == 'R') return static_cast<XLOPER*>(result.pointer)->xltype;
    return 0;
}

// Hands a result back to whom its flags name.
void Settle(HostState& state, const Registration& function, Word result) {
    const ValueType type = function.type.result;
    const DWORD flags = FlagsOf(type, result);
    const bool isOld = type.letter == 'P' || type.letter == 'R';
    if ((flags & xlbitDLLFree) != 0) {
        const FARPROC free = isOld ? function.freeOldResult : function.freeResult;
        {
            const std::lock_guard lock(state.mutex);
            state.ledger.Flagged(free != nullptr);
        }
        using Free = void(PASCAL*)(void*);
        if (free != nullptr) reinterpret_cast<Free>(reinterpret_cast<void (*)()>(free))(result.pointer);
    } else if ((flags & xlbitXLFree) != 0 && !isOld) {
        const std::lock_guard lock(state.mutex);
        (void)state.ledger.TakeBack(*static_cast<LPXLOPER12>(result.pointer));
    }
}

Value CallAndRead(HostState& state, const Registration& function, LentArguments& lent) try {
    const Word result = function.signature->Call(function.entry, lent.Seal());
    if (function.type.inPlace != 0) return lent.Changed(function.type.inPlace);
    Value value = ResultFrom(function.type.result, result);
    Settle(state, function, result);
    return value;
} catch (...) {
    return ErrorValue{xlerrValue};
}

}  // namespace

Value CallWorksheetFunction(HostState& state, const Registration& function, std::span<const Value> arguments,
                            std::optional<Reference> caller,
                            const std::function<Value(const Value&)>& dereference) {
    const CallScope scope(function, std::move(caller));
    LentArguments lent(function.type);
    for (std::size_t i = 0; i < function.Arity(); ++i) {
        const bool asItIs = i >= arguments.size() || TakesReferences(function.type.arguments[i]);
        const Value& given = i < arguments.size() ? arguments[i] : Value(Missing{});
        const auto error = lent.Add(asItIs ? given : dereference(given));
        if (error) return *error;
    }
    Value value = CallAndRead(state, function, lent);
    const bool altered = lent.Inspect() != LentArguments::Harm::None;
    const std::lock_guard lock(state.mutex);
    state.ledger.Lent(lent.Count(), altered);
    return value;
}

}  // namespace excelhost
