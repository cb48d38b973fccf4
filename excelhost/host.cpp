#include "excelhost/host.h"

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
    if (operands.size() < function->fewest || operands.size() > function->most) {
        return Outcome::Failed(xlretInvCount);
    }
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

    Entry entry;
    entry.function = function;
    entry.count = count;
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

    std::function<void(const Entry&)> listener;
    {
        const std::lock_guard lock(state_->mutex);
        const bool succeeded = outcome.returnCode == xlretSuccess;
        if (result != nullptr && succeeded) state_->ledger.Give(outcome.value, *result);
        if (result != nullptr && !succeeded) state_->ledger.Fail(*result);
        entry.returnCode = outcome.returnCode;
        entry.note = std::move(outcome.note);
        entry.result.record = result;
        if (result != nullptr && succeeded && state_->trace.IsWatched()) entry.result = Traced(result);
        state_->trace.Complete(entry);
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
    IDSHEET id = 0;
    Area area;
    if (const Area* onSheet = value.If<Area>()) {
        area = *onSheet;
    } else if (const Reference* reference = value.If<Reference>()) {
        if (reference->areas.size() != 1) return ErrorValue{xlerrValue};
        id = reference->sheet;
        area = reference->areas.front();
    } else {
        return value;
    }
    CellReader reader;
    {
        const std::lock_guard lock(state_->mutex);
        const OpenSheet* sheet = state_->sheets.Find(id);
        if (sheet == nullptr || !sheet->reader) return ErrorValue{xlerrRef};
        reader = sheet->reader;
    }
    return reader(area);
}

void Host::AddModule(TextView path, ModuleExports exports, HINSTANCE instance) {
    const std::lock_guard lock(state_->mutex);
    state_->registrations.AddModule({Text(path), Text(FileNameOf(path)), std::move(exports), instance});
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
    const Value value = CallWorksheetFunction(*state_, *function, arguments, std::move(caller),
                                              [this](const Value& given) { return Dereference(given); });
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
