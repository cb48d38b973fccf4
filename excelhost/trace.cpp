#include "excelhost/trace.h"

#include "excelhost/functions.h"

#include <algorithm>

namespace excelhost {

TracedValue Traced(const XLOPER12* record) {
    if (record == nullptr) return {nullptr, 0, "(null)"};
    return {record, TypeOf(*record), Describe(*record)};
}

void Trace::Begin(Entry& entry, std::span<const LPXLOPER12> operands) {
    entry.number = ++count_;
    if (!IsWatched()) return;
    entry.operands.reserve(operands.size());
    for (const XLOPER12* operand : operands) entry.operands.push_back(Traced(operand));
    if (keeps_) entries_.push_back(entry);
}

void Trace::Complete(const Entry& entry) {
    const auto place = std::lower_bound(entries_.begin(), entries_.end(), entry.number,
                                        [](const Entry& e, std::size_t number) { return e.number < number; });
    if (place != entries_.end() && place->number == entry.number) *place = entry;
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
