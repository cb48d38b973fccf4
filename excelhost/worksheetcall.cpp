#include "excelhost/worksheetcall.h"

#include "excelhost/calling.h"
#include "excelhost/callscope.h"
#include "excelhost/journal.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>

namespace excelhost {
namespace {

std::atomic<std::chrono::milliseconds> async_limit{std::chrono::seconds{30}};
// How far below this frame a returned address still lies in frames that are gone.
constexpr std::uintptr_t kDeadStack = std::uintptr_t{256} << 10;

bool HasOldRecord(ValueType type) {
    return type.letter == 'P' || type.letter == 'R';
}

bool HasNewRecord(ValueType type) {
    return type.letter == 'Q' || type.letter == 'U';
}

// The stack grows downwards in all our homes: what was there during the call is below this frame now.
bool IsDeadStack(const void* address) noexcept {
    volatile char here = 0;
    const auto frame = reinterpret_cast<std::uintptr_t>(&here);
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    return place < frame && frame - place < kDeadStack;
}

class WorksheetCall {
  public:
    WorksheetCall(HostState& state, const Registration& function, JournalCall& journal)
        : state_(state), function_(function), journal_(journal), lent_(function.type) {}

    Value Run(std::span<const Value> arguments) {
        for (std::size_t i = 0; i < function_.Arity(); ++i) {
            const bool asItIs = i >= arguments.size() || TakesReferences(function_.type.arguments[i]);
            const Value& given = i < arguments.size() ? arguments[i] : Value(Missing{});
            const auto error = lent_.Add(asItIs ? given : ArgumentFrom(given, function_.type.arguments[i]));
            if (error) return *error;
        }
        Value value = function_.type.asynchronous ? CallAsync() : CallAndRead();
        Inspect();
        return value;
    }

  private:
    // A function that wants one value of a range gets the one in the row or column of the calling cell.
    Value ArgumentFrom(const Value& given, ValueType type) const {
        const Area* area = given.If<Area>();
        const CallScope* scope = CallScope::Current();
        if (area == nullptr || !TakesOneValue(type) || !scope->Caller()) return Dereference(state_, given);
        const XLREF12& r = area->rectangle;
        const XLREF12& cell = scope->Caller()->areas.front().rectangle;
        Area one = *area;
        if (r.colFirst == r.colLast && cell.rwFirst >= r.rwFirst && cell.rwFirst <= r.rwLast) {
            one.rectangle.rwFirst = one.rectangle.rwLast = cell.rwFirst;
        } else if (r.rwFirst == r.rwLast && cell.colFirst >= r.colFirst && cell.colFirst <= r.colLast) {
            one.rectangle.colFirst = one.rectangle.colLast = cell.colFirst;
        } else if (one.Rows() * one.Columns() != 1) {
            return ErrorValue{xlerrValue};
        }
        return Dereference(state_, one);
    }

    Value CallAndRead() try {
        const Word result = function_.signature->Call(function_.entry, lent_.Seal());
        if (function_.type.inPlace != 0) return lent_.Changed(function_.type.inPlace);
        const ValueType type = function_.type.result;
        if (type.passing == Passing::Pointer && result.pointer != nullptr && IsDeadStack(result.pointer)) {
            Find("gave the address of a variable of its own, which is gone");
            return ErrorValue{xlerrValue};
        }
        Value value = ResultFrom(type, result);
        Settle(type, result);
        return value;
    } catch (const std::exception& e) {
        Find(std::string("let an exception out: ") + e.what());
        return ErrorValue{xlerrValue};
    } catch (...) {
        Find("let an exception out");
        return ErrorValue{xlerrValue};
    }

    Value CallAsync() try {
        const std::uintptr_t handle = state_.asyncCalls.Open();
        const XLOPER12 record = HandleRecord(handle);
        lent_.SetHandle(&record);
        (void)function_.signature->Call(function_.entry, lent_.Seal());
        const std::chrono::milliseconds limit = async_limit;
        if (auto value = state_.asyncCalls.WaitFor(handle, limit)) return *std::move(value);
        Find("hasn't returned its result within " + std::to_string(limit.count()) + " ms");
        return ErrorValue{xlerrNA};
    } catch (...) {
        Find("let an exception out");
        return ErrorValue{xlerrValue};
    }

    // Hands a result back to whom its flags name.
    void Settle(ValueType type, Word result) {
        if (result.pointer == nullptr || !(HasOldRecord(type) || HasNewRecord(type))) return;
        const bool isOld = HasOldRecord(type);
        const DWORD flags = isOld ? static_cast<XLOPER*>(result.pointer)->xltype
                                  : static_cast<LPXLOPER12>(result.pointer)->xltype;
        if ((flags & xlbitDLLFree) != 0) {
            const FARPROC free = isOld ? function_.freeOldResult : function_.freeResult;
            {
                const std::lock_guard lock(state_.mutex);
                state_.ledger.Flagged(free != nullptr);
            }
            if (free == nullptr) {
                Find(std::string("flags its result xlbitDLLFree, but the add-in exports no ") +
                     (isOld ? "xlAutoFree" : "xlAutoFree12"));
                return;
            }
            reinterpret_cast<void(PASCAL*)(void*)>(reinterpret_cast<void (*)()>(free))(result.pointer);
        } else if ((flags & xlbitXLFree) != 0 && !isOld) {
            std::string fault;
            {
                const std::lock_guard lock(state_.mutex);
                fault = state_.ledger.TakeBack(*static_cast<LPXLOPER12>(result.pointer));
            }
            if (!fault.empty()) Find("flags a result xlbitXLFree that is " + fault);
        }
    }

    void Inspect() {
        const LentArguments::Harm harm = lent_.Inspect();
        if (harm == LentArguments::Harm::Changed) Find("wrote into memory that it was only lent", kAltered);
        if (harm == LentArguments::Harm::Overrun) Find("wrote beyond the memory that it was lent", kAltered);
        const std::lock_guard lock(state_.mutex);
        state_.ledger.Lent(lent_.Count(), harm != LentArguments::Harm::None);
    }

    void Find(const std::string& what, CallMark mark = kFault) {
        journal_.Note(what, mark);
        const std::lock_guard lock(state_.mutex);
        state_.findings.Add(function_.shownName + " " + what, true, journal_.Number());
    }

    HostState& state_;
    const Registration& function_;
    JournalCall& journal_;
    LentArguments lent_;
};

}  // namespace

void SetAsyncLimit(std::chrono::milliseconds limit) noexcept {
    async_limit = limit;
}

Value CallWorksheetFunction(HostState& state, const Registration& function, std::span<const Value> arguments,
                            std::optional<Reference> caller) {
    JournalCall journal([&] {
        return CallBeginning{CallKind::Function, Utf8(function.functionText), DescribeAll(arguments), caller};
    });
    const CallScope scope(function, std::move(caller));
    Value value = WorksheetCall(state, function, journal).Run(arguments);
    if (journal.IsKept()) journal.end.result = DescribeWithElements(value);
    return value;
}

}  // namespace excelhost
