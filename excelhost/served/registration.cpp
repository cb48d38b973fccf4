// Registering and unregistering functions and commands, and calling them.
#include "excelhost/calling.h"
#include "excelhost/callscope.h"
#include "excelhost/served/table.h"
#include "excelhost/state.h"
#include "excelhost/worksheetcall.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace excelhost {
namespace {

// REGISTER's operands by their places ("xlfRegister (Form 1)"); the help texts of the arguments follow.
enum RegisterOperand : std::size_t {
    kModule,
    kProcedure,
    kTypeText,
    kFunctionText,
    kArgumentText,
    kMacroType,
    kCategory,
    kShortcut,
    kHelpTopic,
    kFunctionHelp,
    kFirstArgumentHelp,
};

// What keeps a registration from being made; REGISTER gives #VALUE! for it.
struct Refusal {
    std::string why;
};

class RegisterOperands {
  public:
    explicit RegisterOperands(Operands operands) : operands_(operands) {}

    [[nodiscard]] bool Has(std::size_t place) const {
        return place < operands_.size() && !IsLeftOut(*operands_[place]);
    }
    [[nodiscard]] Text TextAt(std::size_t place, const char* name) const {
        auto text = TextOf(*operands_[place]);
        if (!text) throw Refusal{std::string("the ") + name + " is no text: " + Describe(*operands_[place])};
        return *std::move(text);
    }
    // What is only shown to people: a number is as good as a text, and what is neither is nothing.
    [[nodiscard]] Text Shown(std::size_t place) const {
        if (!Has(place)) return {};
        if (auto text = TextOf(*operands_[place])) return *std::move(text);
        const auto number = NumberOf(*operands_[place]);
        return number ? Wide(NumberText(*number)) : Text();
    }
    [[nodiscard]] std::size_t Count() const noexcept { return operands_.size(); }
    [[nodiscard]] Registration::Kind Kind() const {
        if (!Has(kMacroType)) return Registration::Kind::Function;
        const auto number = NumberOf(*operands_[kMacroType]);
        if (!number || (*number != 0 && *number != 1 && *number != 2)) {
            throw Refusal{"the macro type is none of 0, 1 and 2: " + Describe(*operands_[kMacroType])};
        }
        return static_cast<Registration::Kind>(static_cast<int>(*number));
    }

  private:
    Operands operands_;
};

Registration ReadRegistration(const RegisterOperands& given) {
    Registration registration;
    registration.module = given.TextAt(kModule, "module");
    registration.procedure = given.TextAt(kProcedure, "procedure");
    registration.kind = given.Kind();
    const bool isCommand = registration.kind == Registration::Kind::Command;
    // A command takes nothing and gives an int, whether or not its type text says so.
    registration.typeText =
        isCommand && !given.Has(kTypeText) ? Text(TEXT("J")) : given.TextAt(kTypeText, "type text");
    registration.functionText =
        given.Has(kFunctionText) ? given.TextAt(kFunctionText, "function text") : registration.procedure;
    if (given.Has(kArgumentText)) registration.argumentText = given.TextAt(kArgumentText, "argument text");
    try {
        registration.type = TypeTextFrom(registration.typeText);
    } catch (const TypeTextFault& fault) {
        throw Refusal{fault.what()};
    }
    registration.category = given.Shown(kCategory);
    registration.shortcut = given.Shown(kShortcut);
    registration.helpTopic = given.Shown(kHelpTopic);
    registration.functionHelp = given.Shown(kFunctionHelp);
    for (std::size_t i = kFirstArgumentHelp; i < given.Count(); ++i) {
        registration.argumentHelp.push_back(given.Shown(i));
    }
    if (isCommand && registration.Arity() != 0) throw Refusal{"a command takes no arguments"};
    return registration;
}

Module FindModule(HostState& state, const Text& name) {
    const std::lock_guard lock(state.mutex);
    const Module* module = state.registrations.FindModule(name);
    if (module == nullptr) throw Refusal{"no module '" + Utf8(name) + "' is loaded"};
    return *module;
}

// Without a type text it is the module that knows how a procedure is registered ("xlAutoRegister/xlAutoRegister12").
// Gives the register id, or what the module gives in place of one.
Value RegisterByModule(const Module& module, const Text& procedure) {
    static constexpr const char* kAutoRegister = "xlAutoRegister12";
    using AutoRegister = LPXLOPER12(PASCAL*)(LPXLOPER12);
    using Free = void(PASCAL*)(LPXLOPER12);
    const auto find = [&](const char* name) { return reinterpret_cast<void (*)()>(module.exports(name)); };
    const auto entry = reinterpret_cast<AutoRegister>(find(kAutoRegister));
    if (entry == nullptr) throw Refusal{"no type text, and the module exports no xlAutoRegister12"};
    const CallScope* outer = CallScope::Current();
    if (outer != nullptr && outer->Procedure() == kAutoRegister) {
        throw Refusal{"no type text, from xlAutoRegister12 itself"};
    }
    const CallScope scope(module.path, kAutoRegister);
    Blocks blocks;
    XLOPER12 name = RecordFrom(procedure, blocks);
    const LPXLOPER12 given = entry(&name);
    if (given == nullptr) throw Refusal{"xlAutoRegister12 gave a null pointer"};
    Value id = ValueFrom(*given);
    if ((given->xltype & xlbitDLLFree) != 0) {
        if (const auto free = reinterpret_cast<Free>(find("xlAutoFree12"))) free(given);
    }
    return id;
}

// The registration with what the module's procedure needs to be called.
std::shared_ptr<Registration> Completed(HostState& state, Registration registration) {
    const Module module = FindModule(state, registration.module);
    registration.entry = module.exports(Utf8(registration.procedure).c_str());
    if (registration.entry == nullptr) {
        throw Refusal{"module '" + Utf8(registration.module) + "' exports no '" +
                      Utf8(registration.procedure) + "'"};
    }
    registration.freeResult = module.exports("xlAutoFree12");
    registration.freeOldResult = module.exports("xlAutoFree");
    registration.signature = std::make_shared<const Signature>(SignatureOf(registration.type));
    registration.shownName =
        "'" + Utf8(registration.functionText) + "' of " + Utf8(FileNameOf(registration.module));
    return std::make_shared<Registration>(std::move(registration));
}

Outcome Register(HostState& state, Operands operands) try {
    const RegisterOperands given(operands);
    if (!given.Has(kTypeText) && given.Kind() != Registration::Kind::Command) {
        return Outcome::Of(RegisterByModule(FindModule(state, given.TextAt(kModule, "module")),
                                            given.TextAt(kProcedure, "procedure")));
    }
    const auto registration = Completed(state, ReadRegistration(given));
    const std::lock_guard lock(state.mutex);
    return Outcome::Of(state.registrations.Add(std::move(*registration))->id);
} catch (const Refusal& refusal) {
    return Outcome::Error(xlerrValue, refusal.why);
}

std::shared_ptr<const Registration> Registered(HostState& state, const Value& id) {
    const double* number = id.If<double>();
    const std::lock_guard lock(state.mutex);
    auto function = state.registrations.FindById(number != nullptr ? *number : 0);
    if (!function) throw Refusal{"nothing is registered under this id"};
    return function;
}

// What CALL's first operands name, and their number: a register id; or module, procedure and type text, in place of
// which the module's own registration serves.
std::pair<std::shared_ptr<const Registration>, std::size_t> Called(HostState& state, Operands operands) {
    if (const auto id = NumberOf(*operands[0])) return {Registered(state, *id), 1};
    constexpr std::size_t kNames = 3;
    const RegisterOperands given(operands.first(std::min(operands.size(), kNames)));
    if (!given.Has(kProcedure)) throw Refusal{"neither a register id nor a module and a procedure"};
    if (given.Has(kTypeText)) return {Completed(state, ReadRegistration(given)), kNames};
    const Module module = FindModule(state, given.TextAt(kModule, "module"));
    const Text procedure = given.TextAt(kProcedure, "procedure");
    {
        const std::lock_guard lock(state.mutex);
        if (auto known = state.registrations.FindProcedure(module, procedure)) return {known, kNames};
    }
    return {Registered(state, RegisterByModule(module, procedure)), kNames};
}

// CALL(register id, arguments...) or CALL(module, procedure, type text, arguments...).
Outcome Call(HostState& state, Operands operands) try {
    const auto [function, named] = Called(state, operands);
    std::vector<Value> arguments;
    for (const XLOPER12* operand : operands.subspan(std::min(named, operands.size()))) {
        arguments.push_back(ValueFrom(*operand));
    }
    if (arguments.size() > function->Arity()) throw Refusal{"too many arguments"};
    const CallScope* scope = CallScope::Current();
    const auto caller = scope != nullptr ? scope->Caller() : std::nullopt;
    return Outcome::Of(CallWorksheetFunction(state, *function, arguments, caller));
} catch (const Refusal& refusal) {
    return Outcome::Error(xlerrValue, refusal.why);
}

// UNREGISTER(register id), or UNREGISTER(module) for all that it has registered. Excel unloads the module then; here
// it stays, for its session still closes it.
Outcome Unregister(HostState& state, Operands operands) {
    if (const auto module = TextOf(*operands[0])) {
        const std::lock_guard lock(state.mutex);
        const bool any = state.registrations.RemoveModule(*module) != 0;
        return Outcome::Of(any, any ? "" : "nothing is registered for this module");
    }
    const auto id = NumberOf(*operands[0]);
    if (!id) return Outcome::Error(xlerrValue, "the operand is neither a number nor a module");
    const std::lock_guard lock(state.mutex);
    const bool removed = state.registrations.Remove(*id);
    return Outcome::Of(removed, removed ? "" : "nothing is registered under this id");
}

constexpr ServedFunction kTable[] = {
    {xlfRegister, "xlfRegister", 3, 255, From::MainThread, Register},
    {150, "xlfCall", 1, 255, From::MainThread, Call},
    {xlfUnregister, "xlfUnregister", 1, 1, From::MainThread, Unregister},
};

}  // namespace

std::span<const ServedFunction> ServedRegistration() {
    return kTable;
}

}  // namespace excelhost
