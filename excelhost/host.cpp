#include "excelhost/host.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <exception>
#include <mutex>
#include <new>
#include <stdexcept>
#include <utility>

namespace excelhost {
namespace {

constexpr int kMostOperands = 255;
constexpr std::size_t kLongestTypeText = 255;

std::atomic<Host*> current_host{nullptr};

struct Workbook {
    Text name;
    struct Function {
        Text name;
        std::shared_ptr<const WorkbookFunction> body;
    };
    std::vector<Function> functions;
};

struct Module {
    Text fileName;
    ModuleExports exports;
};

struct Sheet {
    IDSHEET id = 0;
    Text name;
    CellReader reader;
};

struct RefusalRule {
    int function = 0;
    std::size_t remaining = 0;  // calls until it strikes once; 0 strikes at every call
    std::optional<Text> target;
    int returnCode = xlretFailed;
};

// What a function number does with its operands: a value, or a return code other than 0 and no value.
struct Outcome {
    int returnCode = xlretSuccess;
    Value value;
    std::string note;

    static Outcome Failed(int code, std::string why = {}) { return {code, Value{}, std::move(why)}; }
    static Outcome Error(int number, std::string why = {}) {
        return {xlretSuccess, ErrorValue{number}, std::move(why)};
    }
};

template <class Range>
auto FindNamed(Range& range, TextView name, Text std::ranges::range_value_t<Range>::*member) {
    return std::find_if(range.begin(), range.end(),
                        [&](const auto& item) { return SameName(item.*member, name); });
}

std::optional<Text> TextOf(const XLOPER12& record) {
    if (TypeOf(record) != xltypeStr) return std::nullopt;
    const Value value = ValueFrom(record);
    const Text* text = value.If<Text>();
    return text != nullptr ? std::optional(*text) : std::nullopt;
}

std::optional<double> NumberOf(const XLOPER12& record) {
    switch (TypeOf(record)) {
        case xltypeNum:
            return record.val.num;
        case xltypeInt:
            return record.val.w;
        case xltypeBool:
            return record.val.xbool != 0 ? 1 : 0;
        default:
            return std::nullopt;
    }
}

TracedValue Traced(const XLOPER12* record) {
    if (record == nullptr) return {nullptr, 0, "(null)"};
    return {record, TypeOf(*record), Describe(*record)};
}

// Reads a type text into `registration`: the result's letter, one letter an argument, then marks. What is
// wrong with it otherwise.
std::string ReadTypeText(Registration& registration) {
    const TextView text = registration.typeText;
    if (text.empty() || text.size() > kLongestTypeText) return "the type text has no or too many letters";
    const auto isLetter = [](WCHAR unit) { return unit == 'Q' || unit == 'U'; };
    if (!isLetter(text[0])) return "the type text begins with a letter other than Q and U";
    std::size_t next = 1;
    while (next < text.size() && isLetter(text[next]))
        registration.takesReference.push_back(text[next++] == 'U');
    for (; next < text.size(); ++next) {
        switch (text[next]) {
            case '!':
                registration.recalculatesAlways = true;
                break;
            case '$':
                registration.threadSafe = true;
                break;
            case '#':
                [[fallthrough]];
            case '&':
                break;
            default:
                return "the type text has a letter other than Q and U";
        }
    }
    if (registration.Arity() > kArityLimit) return "the type text has more than 30 arguments";
    return {};
}

// "=Book.XLA!Function" or "='Book of mine.XLA'!Function".
struct Target {
    Text workbook;
    Text function;
};
std::optional<Target> ParseTarget(TextView text) {
    if (!text.empty() && text.front() == '=') text.remove_prefix(1);
    const auto mark = text.rfind(WCHAR{'!'});
    if (mark == TextView::npos) return std::nullopt;
    TextView workbook = text.substr(0, mark);
    if (workbook.size() >= 2 && workbook.front() == '\'' && workbook.back() == '\'') {
        workbook = workbook.substr(1, workbook.size() - 2);
    }
    return Target{Text(workbook), Text(text.substr(mark + 1))};
}

// The call itself, for each number of arguments that a registered function can have.
template <std::size_t... Index>
LPXLOPER12 Invoke(FARPROC entry, [[maybe_unused]] std::span<const LPXLOPER12> arguments,
                  std::index_sequence<Index...>) {
    using Function = LPXLOPER12(PASCAL*)(std::conditional_t<Index == Index, LPXLOPER12, void>...);
    const auto function = reinterpret_cast<Function>(reinterpret_cast<void (*)()>(entry));
    return function(arguments[Index]...);
}
using Invoker = LPXLOPER12 (*)(FARPROC, std::span<const LPXLOPER12>);
template <std::size_t... Arity>
constexpr auto MakeInvokers(std::index_sequence<Arity...>) {
    return std::array<Invoker, sizeof...(Arity)>{[](FARPROC entry, std::span<const LPXLOPER12> arguments) {
        return Invoke(entry, arguments, std::make_index_sequence<Arity>{});
    }...};
}
constexpr auto kInvokers = MakeInvokers(std::make_index_sequence<kArityLimit + 1>{});

// All bytes that a worksheet function was lent, to tell afterwards whether it left them alone.
std::vector<std::byte> Snapshot(std::span<const XLOPER12> records, const Blocks& blocks) {
    std::size_t size = records.size_bytes();
    for (const Block& block : blocks) size += block.size;
    std::vector<std::byte> bytes;
    bytes.reserve(size);
    const auto append = [&](std::span<const std::byte> piece) {
        bytes.insert(bytes.end(), piece.begin(), piece.end());
    };
    append(std::as_bytes(records));
    for (const Block& block : blocks) append({block.bytes.get(), block.size});
    return bytes;
}

constexpr auto kFunctionNames = std::to_array<std::pair<int, std::string_view>>({
    {xlfError, "xlfError"},
    {xlfRegister, "xlfRegister"},
    {xlfUnregister, "xlfUnregister"},
    {xlUDF, "xlUDF"},
    {xlFree, "xlFree"},
    {xlSheetNm, "xlSheetNm"},
    {xlEnableXLMsgs, "xlEnableXLMsgs"},
    {xlDisableXLMsgs, "xlDisableXLMsgs"},
});

bool IsServed(int function) {
    return std::any_of(kFunctionNames.begin(), kFunctionNames.end(),
                       [&](const auto& named) { return named.first == function; });
}

}  // namespace

// Everything under one lock. A workbook's or a module's code never runs while it is held.
struct Host::State {
    mutable std::mutex mutex;
    std::vector<Workbook> workbooks;
    std::vector<Module> modules;
    std::vector<Sheet> sheets;
    IDSHEET currentSheet = 0;
    std::vector<Registration> registrations;
    double nextId = 1001;
    std::vector<RefusalRule> refusals;
    std::vector<Entry> trace;
    std::size_t entries = 0;
    bool keepTrace = true;
    std::function<void(const Entry&)> listener;
    Ledger ledger;
    bool alerts = true;
    bool messages = false;
    std::size_t alertsShown = 0;

    using Operands = std::span<const LPXLOPER12>;

    Entry Begin(int function, int count, Operands operands);
    void Complete(const Entry& entry);
    std::optional<int> FindRefusal(int function, Operands operands);
    const Sheet* FindSheet(IDSHEET id) const;

    Outcome Run(int function, Operands operands);
    Outcome SwitchAlerts(Operands operands);
    Outcome Register(Operands operands);
    Outcome Unregister(Operands operands);
    Outcome RunWorkbookFunction(Operands operands);
    Outcome Free(Operands operands);
    Outcome SheetName(Operands operands) const;
    Outcome SwitchMessages(Operands operands, bool on);
};

Entry Host::State::Begin(int function, int count, Operands operands) {
    Entry entry;
    entry.function = function;
    entry.count = count;
    entry.messages = messages;
    entry.alerts = alerts;
    entry.number = ++entries;
    if (keepTrace || listener) {
        entry.operands.reserve(operands.size());
        for (const XLOPER12* operand : operands) entry.operands.push_back(Traced(operand));
    }
    if (keepTrace) trace.push_back(entry);
    return entry;
}

void Host::State::Complete(const Entry& entry) {
    const auto place = std::lower_bound(trace.begin(), trace.end(), entry.number,
                                        [](const Entry& e, std::size_t number) { return e.number < number; });
    if (place != trace.end() && place->number == entry.number) *place = entry;
}

// Each refusal by number counts the call down, also when another one has struck.
std::optional<int> Host::State::FindRefusal(int function, Operands operands) {
    std::optional<int> code;
    for (auto refusal = refusals.begin(); refusal != refusals.end();) {
        bool strikes = refusal->function == function;
        if (strikes && refusal->target) {
            strikes = !operands.empty() && operands[0] != nullptr && TextOf(*operands[0]) == refusal->target;
        }
        const bool counted = strikes && refusal->remaining > 0;
        if (counted) strikes = --refusal->remaining == 0;
        if (strikes && !code) code = refusal->returnCode;
        refusal = counted && refusal->remaining == 0 ? refusals.erase(refusal) : refusal + 1;
    }
    return code;
}

const Sheet* Host::State::FindSheet(IDSHEET id) const {
    const IDSHEET wanted = id == 0 ? currentSheet : id;
    const auto sheet =
        std::find_if(sheets.begin(), sheets.end(), [&](const Sheet& s) { return s.id == wanted; });
    return sheet != sheets.end() ? &*sheet : nullptr;
}

Outcome Host::State::Run(int function, Operands operands) {
    switch (function) {
        case xlfError:
            return SwitchAlerts(operands);
        case xlfRegister:
            return Register(operands);
        case xlfUnregister:
            return Unregister(operands);
        case xlUDF:
            return RunWorkbookFunction(operands);
        case xlFree:
            return Free(operands);
        case xlSheetNm:
            return SheetName(operands);
        case xlEnableXLMsgs:
            return SwitchMessages(operands, true);
        case xlDisableXLMsgs:
            return SwitchMessages(operands, false);
        default:
            return Outcome::Failed(xlretInvXlfn);
    }
}

// ERROR(enable, macro): false or 0 turns the alerts for macro errors off.
Outcome Host::State::SwitchAlerts(Operands operands) {
    if (operands.empty() || operands.size() > 2) return Outcome::Failed(xlretInvCount);
    const auto enable = NumberOf(*operands[0]);
    if (!enable) return Outcome::Error(xlerrValue, "the operand is no number");
    const std::lock_guard lock(mutex);
    alerts = *enable != 0;
    return {xlretSuccess, true, {}};
}

// REGISTER gives #VALUE! for whatever it doesn't accept.
Outcome Host::State::Register(Operands operands) {
    if (operands.size() < 3) return Outcome::Failed(xlretInvCount);
    const auto module = TextOf(*operands[0]);
    const auto procedure = TextOf(*operands[1]);
    const auto typeText = TextOf(*operands[2]);
    const auto functionText = operands.size() > 3 ? TextOf(*operands[3]) : procedure;
    if (!module || !procedure || !typeText || !functionText) {
        return Outcome::Error(xlerrValue, "an operand is no text");
    }
    Registration registration;
    registration.module = *module;
    registration.procedure = *procedure;
    registration.typeText = *typeText;
    registration.functionText = *functionText;
    if (std::string fault = ReadTypeText(registration); !fault.empty()) {
        return Outcome::Error(xlerrValue, std::move(fault));
    }
    ModuleExports exports;
    {
        const std::lock_guard lock(mutex);
        const auto found = FindNamed(modules, *module, &Module::fileName);
        if (found == modules.end())
            return Outcome::Error(xlerrValue, "no module '" + Utf8(*module) + "' is loaded");
        exports = found->exports;
    }
    registration.entry = exports(Utf8(*procedure).c_str());
    if (registration.entry == nullptr) {
        return Outcome::Error(xlerrValue,
                              "module '" + Utf8(*module) + "' exports no '" + Utf8(*procedure) + "'");
    }
    const std::lock_guard lock(mutex);
    registration.id = nextId++;
    registrations.push_back(registration);
    return {xlretSuccess, registration.id, {}};
}

Outcome Host::State::Unregister(Operands operands) {
    if (operands.size() != 1) return Outcome::Failed(xlretInvCount);
    const auto id = NumberOf(*operands[0]);
    if (!id) return Outcome::Error(xlerrValue, "the operand is no number");
    const std::lock_guard lock(mutex);
    const auto removed = std::erase_if(registrations, [&](const Registration& r) { return r.id == *id; });
    return {xlretSuccess, removed != 0, removed != 0 ? "" : "nothing is registered under this id"};
}

Outcome Host::State::RunWorkbookFunction(Operands operands) {
    if (operands.empty()) return Outcome::Failed(xlretInvCount);
    const auto text = TextOf(*operands[0]);
    const auto target = text ? ParseTarget(*text) : std::nullopt;
    std::shared_ptr<const WorkbookFunction> body;
    std::string fault;
    {
        const std::lock_guard lock(mutex);
        if (!target) {
            fault = "the target names no workbook and function";
        } else if (const auto workbook = FindNamed(workbooks, target->workbook, &Workbook::name);
                   workbook == workbooks.end()) {
            fault = "no workbook '" + Utf8(target->workbook) + "' is open";
        } else if (const auto function =
                       FindNamed(workbook->functions, target->function, &Workbook::Function::name);
                   function == workbook->functions.end()) {
            fault =
                "workbook '" + Utf8(workbook->name) + "' has no function '" + Utf8(target->function) + "'";
        } else {
            body = function->body;
        }
        if (!body && alerts) ++alertsShown;
    }
    if (!body) return Outcome::Failed(xlretFailed, fault);
    const std::vector<const XLOPER12*> arguments(operands.begin() + 1, operands.end());
    try {
        return {xlretSuccess, (*body)(arguments), {}};
    } catch (const std::exception& e) {
        return Outcome::Error(xlerrValue, std::string("the workbook's function failed: ") + e.what());
    } catch (...) {
        return Outcome::Error(xlerrValue, "the workbook's function failed");
    }
}

Outcome Host::State::Free(Operands operands) {
    const std::lock_guard lock(mutex);
    Outcome outcome{xlretSuccess, true, {}};
    for (XLOPER12* operand : operands) {
        if (const std::string fault = ledger.TakeBack(*operand); !fault.empty()) {
            outcome = Outcome::Failed(xlretInvXloper, fault);
        }
    }
    return outcome;
}

Outcome Host::State::SheetName(Operands operands) const {
    if (operands.size() > 1) return Outcome::Failed(xlretInvCount);
    IDSHEET id = 0;
    if (!operands.empty()) {
        switch (TypeOf(*operands[0])) {
            case xltypeRef:
                id = operands[0]->val.mref.idSheet;
                break;
            case xltypeSRef:
                [[fallthrough]];
            case xltypeMissing:
                break;
            default:
                return Outcome::Failed(xlretInvXloper, "the operand is no reference");
        }
    }
    const std::lock_guard lock(mutex);
    const Sheet* sheet = FindSheet(id);
    if (sheet == nullptr) return Outcome::Failed(xlretFailed, "there is no sheet " + std::to_string(id));
    return {xlretSuccess, sheet->name, {}};
}

Outcome Host::State::SwitchMessages(Operands operands, bool on) {
    if (!operands.empty()) return Outcome::Failed(xlretInvCount);
    const std::lock_guard lock(mutex);
    messages = on;
    return {xlretSuccess, true, {}};
}

Host::Host() : state_(std::make_unique<State>()), previous_(current_host.exchange(this)) {}

Host::~Host() {
    current_host.store(previous_);
}

Host* Host::Current() noexcept {
    return current_host.load();
}

// No exception may pass into the add-in, whose code another compiler may have made.
int Host::CallBack(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) noexcept try {
    const bool readable = count >= 0 && count <= kMostOperands && (count == 0 || operands != nullptr);
    const State::Operands given = readable && count > 0
                                      ? State::Operands(operands, static_cast<std::size_t>(count))
                                      : State::Operands{};
    const bool whole = std::find(given.begin(), given.end(), nullptr) == given.end();

    Entry entry;
    std::optional<int> refusal;
    {
        const std::lock_guard lock(state_->mutex);
        entry = state_->Begin(function, count, given);
        refusal = state_->FindRefusal(function, given);
    }
    Outcome outcome;
    if (refusal) {
        outcome = Outcome::Failed(*refusal, "refused by script");
        entry.refused = true;
    } else if (!IsServed(function)) {
        outcome = Outcome::Failed(xlretInvXlfn, "a function number that this host doesn't serve");
    } else if (count < 0 || count > kMostOperands) {
        outcome = Outcome::Failed(xlretInvCount, "a bad count of operands");
    } else if (!readable || !whole) {
        outcome = Outcome::Failed(xlretInvXloper, "a null operand");
    } else {
        outcome = state_->Run(function, given);
    }

    std::function<void(const Entry&)> listener;
    {
        const std::lock_guard lock(state_->mutex);
        if (result != nullptr) {
            if (outcome.returnCode == xlretSuccess) {
                state_->ledger.Give(outcome.value, *result);
            } else {
                state_->ledger.Fail(*result);
            }
        }
        entry.returnCode = outcome.returnCode;
        entry.note = std::move(outcome.note);
        if (result == nullptr || outcome.returnCode != xlretSuccess) {
            entry.result = {result, 0, ""};
        } else if (state_->keepTrace || state_->listener) {
            entry.result = Traced(result);
        }
        state_->Complete(entry);
        listener = state_->listener;
    }
    if (listener) listener(entry);
    return entry.returnCode;
} catch (...) {
    return xlretFailed;
}

void Host::SetFunction(TextView workbook, TextView function, WorkbookFunction body) {
    const std::lock_guard lock(state_->mutex);
    auto book = FindNamed(state_->workbooks, workbook, &Workbook::name);
    if (book == state_->workbooks.end()) {
        book = state_->workbooks.insert(book, Workbook{Text(workbook), {}});
    }
    auto place = FindNamed(book->functions, function, &Workbook::Function::name);
    if (place == book->functions.end()) place = book->functions.insert(place, {Text(function), nullptr});
    place->body = std::make_shared<const WorkbookFunction>(std::move(body));
}

void Host::CloseWorkbook(TextView workbook) {
    const std::lock_guard lock(state_->mutex);
    std::erase_if(state_->workbooks, [&](const Workbook& book) { return SameName(book.name, workbook); });
}

void Host::AddSheet(IDSHEET id, TextView name, CellReader reader) {
    const std::lock_guard lock(state_->mutex);
    std::erase_if(state_->sheets, [&](const Sheet& sheet) { return sheet.id == id; });
    state_->sheets.push_back({id, Text(name), std::move(reader)});
    if (state_->currentSheet == 0) state_->currentSheet = id;
}

void Host::SetCurrentSheet(IDSHEET id) {
    const std::lock_guard lock(state_->mutex);
    state_->currentSheet = id;
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
        const Sheet* sheet = state_->FindSheet(id);
        if (sheet == nullptr || !sheet->reader) return ErrorValue{xlerrRef};
        reader = sheet->reader;
    }
    return reader(area);
}

void Host::AddModule(TextView fileName, ModuleExports exports) {
    const std::lock_guard lock(state_->mutex);
    std::erase_if(state_->modules, [&](const Module& module) { return SameName(module.fileName, fileName); });
    state_->modules.push_back({Text(fileName), std::move(exports)});
}

std::optional<Registration> Host::Find(TextView functionText) const {
    const std::lock_guard lock(state_->mutex);
    const auto& all = state_->registrations;
    const auto found = std::find_if(all.rbegin(), all.rend(), [&](const Registration& registration) {
        return SameName(registration.functionText, functionText);
    });
    return found != all.rend() ? std::optional(*found) : std::nullopt;
}

std::vector<Registration> Host::Registrations() const {
    const std::lock_guard lock(state_->mutex);
    return state_->registrations;
}

Value Host::Call(TextView functionText, std::span<const Value> arguments) {
    const auto function = Find(functionText);
    if (!function) return ErrorValue{xlerrName};
    if (arguments.size() > function->Arity()) return ErrorValue{xlerrValue};

    Blocks blocks;
    std::vector<XLOPER12> records;
    records.reserve(function->Arity());
    for (std::size_t i = 0; i < function->Arity(); ++i) {
        const Value& given = i < arguments.size() ? arguments[i] : Value(Missing{});
        records.push_back(RecordFrom(function->takesReference[i] ? given : Dereference(given), blocks));
    }
    std::vector<LPXLOPER12> pointers;
    pointers.reserve(records.size());
    for (XLOPER12& record : records) pointers.push_back(&record);
    const std::vector<std::byte> before = Snapshot(records, blocks);

    Value value = ErrorValue{xlerrValue};
    try {
        if (LPXLOPER12 result = CallRecords(*function, pointers)) {
            value = ValueFrom(*result);
            const std::lock_guard lock(state_->mutex);
            if ((result->xltype & xlbitXLFree) != 0) (void)state_->ledger.TakeBack(*result);
        } else {
            value = ErrorValue{xlerrNum};
        }
    } catch (...) {
        value = ErrorValue{xlerrValue};
    }
    {
        const std::lock_guard lock(state_->mutex);
        state_->ledger.Lent(records.size(), before != Snapshot(records, blocks));
    }
    return Dereference(value);
}

LPXLOPER12 Host::CallRecords(const Registration& function, std::span<const LPXLOPER12> arguments) {
    if (arguments.size() != function.Arity()) {
        throw std::invalid_argument("'" + Utf8(function.functionText) + "' takes " +
                                    std::to_string(function.Arity()) + " arguments");
    }
    return kInvokers[arguments.size()](function.entry, arguments);
}

void Host::Refuse(int function, int returnCode) {
    RefuseNth(function, 0, returnCode);
}

void Host::RefuseNth(int function, std::size_t nth, int returnCode) {
    const std::lock_guard lock(state_->mutex);
    state_->refusals.push_back({function, nth, std::nullopt, returnCode});
}

void Host::RefuseTarget(TextView target, int returnCode) {
    const std::lock_guard lock(state_->mutex);
    state_->refusals.push_back({xlUDF, 0, Text(target), returnCode});
}

void Host::StopRefusing() {
    const std::lock_guard lock(state_->mutex);
    state_->refusals.clear();
}

std::vector<Entry> Host::Trace() const {
    const std::lock_guard lock(state_->mutex);
    return state_->trace;
}

std::vector<int> Host::TracedFunctions() const {
    const std::lock_guard lock(state_->mutex);
    std::vector<int> functions;
    functions.reserve(state_->trace.size());
    for (const Entry& entry : state_->trace) functions.push_back(entry.function);
    return functions;
}

void Host::ClearTrace() {
    const std::lock_guard lock(state_->mutex);
    state_->trace.clear();
}

void Host::KeepTrace(bool keep) {
    const std::lock_guard lock(state_->mutex);
    state_->keepTrace = keep;
}

void Host::OnEntry(std::function<void(const Entry&)> listener) {
    const std::lock_guard lock(state_->mutex);
    state_->listener = std::move(listener);
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

std::string FunctionName(int function) {
    for (const auto& [number, name] : kFunctionNames) {
        if (number == function) return std::string(name);
    }
    return std::to_string(function);
}

std::string Describe(const Entry& entry) {
    std::string line = std::to_string(entry.number) + " " + FunctionName(entry.function) + "(";
    for (std::size_t i = 0; i < entry.operands.size(); ++i)
        line += (i == 0 ? "" : ", ") + entry.operands[i].text;
    line += ")";
    if (entry.returnCode != xlretSuccess) {
        line += " failed with code " + std::to_string(entry.returnCode);
    } else if (entry.result.record != nullptr) {
        line += " -> " + entry.result.text;
    }
    if (!entry.note.empty()) line += ": " + entry.note;
    return line;
}

}  // namespace excelhost
