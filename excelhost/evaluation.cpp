#include "excelhost/evaluation.h"

#include "excelhost/callscope.h"
#include "excelhost/functions/functions.h"

namespace excelhost {
namespace {

std::optional<Reference> CurrentCaller() {
    const CallScope* scope = CallScope::Current();
    return scope != nullptr ? scope->Caller() : std::nullopt;
}

}  // namespace

Evaluation::Evaluation(Host& host, std::span<const Grid* const> grids, std::span<const Text> names,
                       IDSHEET firstId)
    : host_(host), grids_(grids), firstId_(firstId) {
    for (const Text& name : names) names_.push_back(NameInFormulas(name));
    host.SetEvaluator({[this](TextView text) { return Evaluate(text); },
                       [this](const Builtin& function, std::span<const Value> arguments) {
                           return Call(function, arguments);
                       }});
}

Value Evaluation::Calculate(const Formula& formula, const std::optional<Reference>& caller) const {
    return CalculateWhole(formula, CellsOf(caller), CallerFrom(caller));
}

// A formula, with or without its "=", as the calling cell sees the sheets. A lone reference stays one.
Value Evaluation::Evaluate(TextView text) const try {
    const Text marked = text.starts_with(WCHAR{'='}) ? Text(text) : TEXT("=") + Text(text);
    const Formula formula = ParseFormula(marked, names_);
    const bool isValue = formula.steps.size() == 1 && formula.steps.front().step == Step::Push;
    if (isValue && IsReference(formula.steps.front().value)) return formula.steps.front().value;
    const std::optional<Reference> caller = CurrentCaller();
    return CalculateFormula(formula, CellsOf(caller), CallerFrom(caller));
} catch (const FormulaFault&) {
    return ErrorValue{xlerrValue};
}

// References name sheets by the host's ids here, and by their place among these sheets in a formula.
Value Evaluation::Call(const Builtin& function, std::span<const Value> arguments) const {
    std::vector<Value> given(arguments.begin(), arguments.end());
    for (Value& argument : given) {
        if (auto* reference = std::get_if<Reference>(&argument)) reference->sheet -= firstId_ - 1;
    }
    Value value = CallBuiltin(function, given, CellsOf(CurrentCaller()));
    if (auto* reference = std::get_if<Reference>(&value)) reference->sheet += firstId_ - 1;
    return value;
}

Cells Evaluation::CellsOf(const std::optional<Reference>& caller) const {
    const IDSHEET sheet = caller ? caller->sheet - firstId_ + 1 : 1;
    const XLREF12 cell = caller ? caller->areas.front().rectangle : XLREF12{};
    return Cells(grids_, sheet, {cell.rwFirst, cell.colFirst}, names_);
}

// Refers to the caller.
FunctionCaller Evaluation::CallerFrom(const std::optional<Reference>& caller) const {
    return [this, &caller](TextView function, std::span<const Value> arguments) {
        return host_.Call(function, arguments, caller);
    };
}

std::vector<std::string> KnownFunctions::Faults(const Formula& formula) {
    std::vector<std::string> faults;
    for (const FormulaStep& step : formula.steps) {
        if (step.step != Step::Call || step.builtin != nullptr) continue;
        const Text& name = *step.value.If<Text>();
        const auto arity = Arity(name);
        if (!arity) {
            faults.push_back("unknown function '" + Excerpt(name) + "'");
        } else if (step.count > *arity) {
            faults.push_back("'" + Excerpt(name) + "' takes " + std::to_string(*arity) + " arguments, not " +
                             std::to_string(step.count));
        }
    }
    return faults;
}

std::optional<std::size_t> KnownFunctions::Arity(const Text& name) {
    const auto [place, isNew] = arities_.try_emplace(name);
    if (isNew) {
        if (const auto function = host_.Find(name)) place->second = function->Arity();
    }
    return place->second;
}

}  // namespace excelhost
