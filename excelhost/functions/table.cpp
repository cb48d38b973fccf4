#include "excelhost/functions.h"

#include <algorithm>
#include <array>
#include <vector>

namespace excelhost {
namespace {

// Of all rooms, by number.
const std::vector<ServedFunction>& Table() {
    static const std::vector<ServedFunction> table = [] {
        std::vector<ServedFunction> all;
        for (const auto room : {MemoryFunctions(), RegistrationFunctions(), WorkbookFunctions(),
                                SwitchFunctions(), SurroundingsFunctions()}) {
            all.insert(all.end(), room.begin(), room.end());
        }
        std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.number < b.number; });
        return all;
    }();
    return table;
}

}  // namespace

const ServedFunction* FindServed(int number) noexcept {
    const auto found = std::lower_bound(Table().begin(), Table().end(), number,
                                        [](const ServedFunction& f, int n) { return f.number < n; });
    return found != Table().end() && found->number == number ? &*found : nullptr;
}

std::string FunctionName(int number) {
    const ServedFunction* function = FindServed(number);
    return function != nullptr ? std::string(function->name) : std::to_string(number);
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
