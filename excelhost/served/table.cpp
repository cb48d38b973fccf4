#include "excelhost/served/table.h"

#include <algorithm>
#include <array>
#include <vector>

namespace excelhost {
namespace {

// Of all rooms, by number.
const std::vector<ServedFunction>& Table() {
    // Never destroyed: the names are asked for while the process ends, too.
    static const auto& table = *[] {
        auto* const made = new std::vector<ServedFunction>;
        std::vector<ServedFunction>& all = *made;
        for (const auto room : {ServedMemory(), ServedRegistration(), ServedWorkbooks(), ServedSwitches(),
                                ServedSurroundings(), ServedValues(), ServedInformation(), ServedCalling(),
                                ServedNames(), ServedWorksheetFunctions(), ServedCommands()}) {
            all.insert(all.end(), room.begin(), room.end());
        }
        std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.number < b.number; });
        return made;
    }();
    return table;
}

}  // namespace

const ServedFunction* FindServed(int number) noexcept {
    // Two bits ask for a dialog and for English names, which there are none and no others of here.
    constexpr int kPrompt = 0x1000;
    constexpr int kInternational = 0x2000;
    const int plain = number & ~(kPrompt | kInternational);
    const auto found = std::lower_bound(Table().begin(), Table().end(), plain,
                                        [](const ServedFunction& f, int n) { return f.number < n; });
    if (found != Table().end() && found->number == plain) return &*found;
    const bool isCommand = (plain & ~kHighestCommand) == kCommand;
    return isCommand ? &ServedCommands().front() : nullptr;
}

FunctionLabel LabelOf(int number) noexcept {
    const ServedFunction* function = FindServed(number);
    if (function == nullptr) return {{}, number};
    const bool isUnnamed = function->number == kCommand && (number & kHighestCommand) != 0;
    if (isUnnamed) return {"xlCommand|", number & kHighestCommand};
    return {function->name, std::nullopt};
}

std::string FunctionName(int number) {
    const FunctionLabel label = LabelOf(number);
    return std::string(label.name) + (label.number ? std::to_string(*label.number) : std::string());
}

std::optional<int> FunctionNumber(std::string_view name) {
    const auto found =
        std::find_if(Table().begin(), Table().end(), [&](const ServedFunction& f) { return f.name == name; });
    return found != Table().end() ? std::optional(found->number) : std::nullopt;
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

}  // namespace excelhost
