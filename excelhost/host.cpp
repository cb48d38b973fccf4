#include "excelhost/host.h"

#include "excelhost/callscope.h"
#include "excelhost/journal.h"
#include "excelhost/state.h"
#include "excelhost/worksheetcall.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <utility>

namespace excelhost {
namespace {

constexpr int kMostOperands = 255;

std::atomic<Host*> current_host{nullptr};

const std::string kUnreadable = "an operand is ";

// Excel keeps worksheet functions from what only commands and macro sheets may do.
std::optional<Outcome> RefusalOfCaller(From from) {
    const CallScope* scope = CallScope::Current();
    const Registration* function = scope != nullptr ? scope->Function() : nullptr;
    if (function == nullptr || from == From::Anywhere) return std::nullopt;
    if (function->type.threadSafe) {
        return Outcome::Failed(xlretNotThreadSafe, "not from a function that is registered as thread-safe");
    }
    if (from == From::Commands) return Outcome::Failed(xlretFailed, "a command, and no command calls");
    if (from == From::Macros && !function->type.forMacroSheets) {
        return Outcome::Failed(xlretFailed, "not from a worksheet function without '#'");
    }
    return std::nullopt;
}

std::string NameOfCaller() {
    const CallScope* scope = CallScope::Current();
    return scope != nullptr ? std::string(scope->Name()) : "an add-in";
}

std::string GiverOf(int function) {
    return NameOfCaller() + " in a result of " + FunctionName(function);
}

// What an add-in should hear of even if it doesn't look at its results.
void NoteFault(HostState& state, const Entry& entry, JournalCall& journal) {
    const auto find = [&](const std::string& what, bool isFault, unsigned mark) {
        state.findings.Add(NameOfCaller() + " " + what, isFault, journal.Number());
        journal.end.marks |= mark;
    };
    if (entry.function == xlFree && !entry.refused && entry.returnCode != xlretSuccess) {
        find("handed xlFree a value that is " + entry.note, true,
             entry.note == kFreedBefore ? kFreedTwice : kForeign);
    }
    if (entry.note.starts_with(kUnreadable)) {
        find("called " + FunctionName(entry.function) + ", and " + entry.note, true, kFault);
    } else if (entry.function == xlfRegister && !entry.note.empty()) {
        find("had a registration refused: " + entry.note, false, kWord);
    }
}

// Checks a call into Excel and serves it.
Outcome Serve(HostState& state, int number, int count, LPXLOPER12* records) {
    const ServedFunction* function = FindServed(number);
    if (function == nullptr) {
        return Outcome::Failed(xlretInvXlfn, "a function number that this host doesn't serve");
    }
    if (count < 0 || count > kMostOperands) return Outcome::Failed(xlretInvCount, "a bad count of operands");
    if (count > 0 && records == nullptr) return Outcome::Failed(xlretInvXloper, "a null operand");
    const Operands operands(records, static_cast<std::size_t>(count));
    if (std::find(operands.begin(), operands.end(), nullptr) != operands.end()) {
        return Outcome::Failed(xlretInvXloper, "a null operand");
    }
    // xlFree knows its own memory by its address and reads nothing else.
    for (const XLOPER12* operand : function->number == xlFree ? Operands{} : operands) {
        if (std::string fault = Unreadable(*operand); !fault.empty()) {
            return Outcome::Failed(xlretInvXloper, kUnreadable + fault);
        }
    }
    if (operands.size() < function->fewest || operands.size() > function->most) {
        return Outcome::Failed(xlretInvCount);
    }
    if (auto refusal = RefusalOfCaller(function->from)) return *std::move(refusal);
    return function->run(state, operands);
}

}  // namespace

Host::Host() : state_(std::make_unique<HostState>()), previous_(current_host.exchange(this)) {}

Host::~Host() {
    current_host.store(previous_);
}

Host* Host::Current() noexcept {
    return current_host.load();
}

// No exception may pass into the add-in, whose code another compiler may have made.
int Host::CallBack(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) noexcept try {
    const bool readable = count > 0 && count <= kMostOperands && operands != nullptr;
    const Operands given = readable ? Operands(operands, static_cast<std::size_t>(count)) : Operands{};

    JournalCall journal([&] {
        return CallBeginning{CallKind::Callback, FunctionName(function), DescribeAll(given), {}};
    });
    Entry entry;
    entry.function = function;
    entry.count = count;
    LastCalls& lastCalls = LastCalls::OfThisThread();
    const std::size_t call = lastCalls.Begin(function);
    std::optional<int> refusal;
    {
        const std::lock_guard lock(state_->mutex);
        entry.messages = state_->messages;
        entry.alerts = state_->alerts;
        state_->trace.Begin(entry, given);
        refusal = state_->refusals.Strike(function, given);
    }
    entry.refused = refusal.has_value();
    Outcome outcome =
        refusal ? Outcome::Failed(*refusal, "refused by script") : Serve(*state_, function, count, operands);

    lastCalls.End(call, outcome.returnCode);

    std::function<void(const Entry&)> listener;
    {
        const std::lock_guard lock(state_->mutex);
        const bool succeeded = outcome.returnCode == xlretSuccess;
        if (result != nullptr && succeeded && state_->ledger.Give(outcome.value, *result)) {
            state_->ledger.SetGiver(*result, {GiverOf(function), journal.Number()});
        }
        if (result != nullptr && !succeeded) state_->ledger.Fail(*result);
        entry.returnCode = outcome.returnCode;
        entry.note = std::move(outcome.note);
        entry.result.record = result;
        if (result != nullptr && succeeded && state_->trace.IsWatched()) entry.result = Traced(result);
        state_->trace.Complete(entry);
        NoteFault(*state_, entry, journal);
        if (journal.IsKept()) {
            journal.end.returnCode = entry.returnCode;
            if (result != nullptr && succeeded) journal.end.result = DescribeWithElements(result);
            journal.end.note = entry.note;
        }
        listener = state_->trace.Listener();
    }
    if (listener) listener(entry);
    return entry.returnCode;
} catch (...) {
    return xlretFailed;
}

void Host::SetFunction(TextView workbook, TextView function, WorkbookFunction body) {
    const std::lock_guard lock(state_->mutex);
    state_->workbooks.SetFunction(workbook, function, std::move(body));
}

void Host::CloseWorkbook(TextView workbook) {
    const std::lock_guard lock(state_->mutex);
    state_->workbooks.Close(workbook);
}

void Host::AddSheet(IDSHEET id, TextView name, CellReader reader) {
    const std::lock_guard lock(state_->mutex);
    state_->sheets.Add({id, Text(name), std::move(reader)});
}

void Host::SetCurrentSheet(IDSHEET id) {
    const std::lock_guard lock(state_->mutex);
    state_->sheets.SetCurrent(id);
}

Value Host::Dereference(const Value& value) const {
    return excelhost::Dereference(*state_, value);
}

void Host::AddModule(TextView path, ModuleExports exports, HINSTANCE instance) {
    const std::lock_guard lock(state_->mutex);
    state_->registrations.AddModule({Text(path), Text(FileNameOf(path)), std::move(exports), instance});
}

std::vector<Module> Host::Modules() const {
    const std::lock_guard lock(state_->mutex);
    return state_->registrations.Modules();
}

std::shared_ptr<const Registration> Host::Find(TextView functionText) const {
    const std::lock_guard lock(state_->mutex);
    return state_->registrations.Find(functionText);
}

std::vector<Registration> Host::Registrations() const {
    const std::lock_guard lock(state_->mutex);
    std::vector<Registration> all;
    for (const auto& registration : state_->registrations.All()) all.push_back(*registration);
    return all;
}

Value Host::Call(TextView functionText, std::span<const Value> arguments, std::optional<Reference> caller) {
    const auto function = Find(functionText);
    if (!function || function->kind == Registration::Kind::Command) return ErrorValue{xlerrName};
    if (arguments.size() > function->Arity()) return ErrorValue{xlerrValue};
    const Value value = CallWorksheetFunction(*state_, *function, arguments, std::move(caller));
    return Dereference(value);
}

void Host::Refuse(int function, int returnCode) {
    RefuseNth(function, 0, returnCode);
}

void Host::RefuseNth(int function, std::size_t nth, int returnCode) {
    const std::lock_guard lock(state_->mutex);
    state_->refusals.Add({function, nth, std::nullopt, returnCode});
}

void Host::RefuseTarget(TextView target, int returnCode) {
    const std::lock_guard lock(state_->mutex);
    state_->refusals.Add({xlUDF, 0, Text(target), returnCode});
}

void Host::StopRefusing() {
    const std::lock_guard lock(state_->mutex);
    state_->refusals.Clear();
}

std::vector<Entry> Host::Trace() const {
    const std::lock_guard lock(state_->mutex);
    return state_->trace.Entries();
}

std::vector<int> Host::TracedFunctions() const {
    const std::lock_guard lock(state_->mutex);
    std::vector<int> functions;
    functions.reserve(state_->trace.Entries().size());
    for (const Entry& entry : state_->trace.Entries()) functions.push_back(entry.function);
    return functions;
}

void Host::ClearTrace() {
    const std::lock_guard lock(state_->mutex);
    state_->trace.Clear();
}

void Host::KeepTrace(bool keep) {
    const std::lock_guard lock(state_->mutex);
    state_->trace.Keep(keep);
}

void Host::OnEntry(std::function<void(const Entry&)> listener) {
    const std::lock_guard lock(state_->mutex);
    state_->trace.Listen(std::move(listener));
}

std::vector<Leak> Host::Leaks() const {
    const std::lock_guard lock(state_->mutex);
    return state_->ledger.Leaks();
}

std::vector<Finding> Host::Findings() const {
    const std::lock_guard lock(state_->mutex);
    excelhost::Findings findings = state_->findings;
    for (const Leak& leak : state_->ledger.Leaks()) {
        findings.Add("what " + leak.giver + " was given never came back through xlFree", true, leak.call);
    }
    return findings.All();
}

void Host::SetEvaluator(SheetEvaluator evaluator) {
    const std::lock_guard lock(state_->mutex);
    state_->evaluator = std::move(evaluator);
}

void Host::CalculationEnded() {
    std::vector<EventHandler> handlers;
    {
        const std::lock_guard lock(state_->mutex);
        handlers = state_->handlers;
    }
    constexpr int kEnded = 1;
    for (const EventHandler& handler : handlers) {
        if (handler.event != kEnded) continue;
        const CallScope scope(handler.module, "an event's procedure");
        reinterpret_cast<int(PASCAL*)()>(reinterpret_cast<void (*)()>(handler.entry))();
    }
}

Account Host::GetAccount() const {
    const std::lock_guard lock(state_->mutex);
    return state_->ledger.Counts();
}

bool Host::MacroAlerts() const {
    const std::lock_guard lock(state_->mutex);
    return state_->alerts;
}

std::size_t Host::AlertsShown() const {
    const std::lock_guard lock(state_->mutex);
    return state_->alertsShown;
}

bool Host::Messages() const {
    const std::lock_guard lock(state_->mutex);
    return state_->messages;
}

}  // namespace excelhost
