#include "excelhost/functions/functions.h"

#include <algorithm>
#include <cmath>

namespace excelhost {
namespace {

std::vector<const Builtin*> SortedByName() {
    std::vector<const Builtin*> all;
    for (const auto family :
         {DateFunctions(), FinancialFunctions(), InformationFunctions(), LogicalFunctions(),
          LookupFunctions(), MathFunctions(), StatisticalFunctions(), TextFunctions()}) {
        for (const Builtin& builtin : family) all.push_back(&builtin);
    }
    std::sort(all.begin(), all.end(), [](const Builtin* a, const Builtin* b) { return a->name < b->name; });
    return all;
}

const std::vector<const Builtin*>& Builtins() {
    static const std::vector<const Builtin*> builtins = SortedByName();
    return builtins;
}

}  // namespace

Value Given::Scalar(std::size_t i) const {
    Value value = Any(i);
    if (const auto* error = value.If<ErrorValue>()) throw ErrorFound{*error};
    return value;
}

double Given::Number(std::size_t i) const {
    double number = 0;
    if (const auto error = ToNumber(Any(i), number)) throw ErrorFound{*error};
    return number;
}

bool Given::Truth(std::size_t i) const {
    bool truth = false;
    if (const auto error = ToTruth(Any(i), truth)) throw ErrorFound{*error};
    return truth;
}

Text Given::String(std::size_t i) const {
    Text text;
    if (const auto error = ToText(Any(i), text)) throw ErrorFound{*error};
    return text;
}

std::size_t Given::Whole(std::size_t i, std::size_t lowest) const {
    const double number = std::trunc(Number(i));
    if (number < static_cast<double>(lowest)) Fail(xlerrValue);
    constexpr double most = 2147483647;
    return static_cast<std::size_t>(std::min(number, most));
}

Cells::Range Given::Range(std::size_t i) const {
    if (!IsReference(arguments_[i])) Fail(xlerrValue);
    const auto range = cells_.Find(arguments_[i]);
    if (!range) Fail(xlerrRef);
    return *range;
}

Array Given::Table(std::size_t i) const {
    if (!IsReference(arguments_[i])) {
        if (const Array* array = arguments_[i].If<Array>()) return *array;
        return {1, 1, {Scalar(i)}};
    }
    const Cells::Range range = Range(i);
    const Area area = cells_.Bounded(range.area);
    Value value = range.grid->Read(area);
    if (Array* array = std::get_if<Array>(&value)) return std::move(*array);
    if (SizeOf(i) != Size{}) Fail(xlerrValue);
    return {1, 1, {std::move(value)}};
}

Given::Size Given::SizeOf(std::size_t i) const {
    if (const Array* array = arguments_[i].If<Array>()) return {array->rows, array->columns};
    if (!IsReference(arguments_[i])) return {};
    const Area area = cells_.Bounded(Range(i).area);
    return {area.Rows(), area.Columns()};
}

const Builtin* FindBuiltin(TextView name) {
    const std::string wanted = Utf8(UpperCase(Text(name)));
    const auto& all = Builtins();
    const auto found =
        std::lower_bound(all.begin(), all.end(), wanted,
                         [](const Builtin* builtin, std::string_view text) { return builtin->name < text; });
    return found != all.end() && (*found)->name == wanted ? *found : nullptr;
}

std::vector<std::string_view> BuiltinNames() {
    std::vector<std::string_view> names = {"IF"};
    for (const Builtin* builtin : Builtins()) names.push_back(builtin->name);
    std::sort(names.begin(), names.end());
    return names;
}

Value CallBuiltin(const Builtin& builtin, std::span<const Value> arguments, const Cells& cells) try {
    return builtin.calculate(Given(arguments, cells));
} catch (const ErrorFound& found) {
    return found.error;
}

}  // namespace excelhost
