#include "excelhost/trace.h"

#include "excelhost/machine/readable.h"
#include "excelhost/served/table.h"

#include <algorithm>
#include <cstddef>

namespace excelhost {

std::string Unreadable(const XLOPER12& record) {
    const auto isThere = [](const void* start, std::size_t size) {
        return IsReadable(start, size) ? std::string() : std::string("a pointer to memory that isn't there");
    };
    switch (TypeOf(record)) {
        case xltypeStr: {
            const XCHAR* text = record.val.str;
            if (text == nullptr || !IsReadable(text, sizeof(XCHAR))) return isThere(text, sizeof(XCHAR));
            return isThere(text, (std::size_t{text[0]} + 1) * sizeof(XCHAR));
        }
        case xltypeRef: {
            const XLMREF12* block = record.val.mref.lpmref;
            if (block == nullptr) return {};
            if (!IsReadable(block, sizeof(WORD))) return isThere(block, sizeof(WORD));
            return isThere(block, offsetof(XLMREF12, reflref) + block->count * sizeof(XLREF12));
        }
        case xltypeMulti: {
            const auto& array = record.val.array;
            if (array.lparray == nullptr || array.rows < 1 || array.rows > kRowLimit) return {};
            const auto cells =
                static_cast<std::size_t>(array.rows) * static_cast<std::size_t>(array.columns & 0xFFFF);
            return isThere(array.lparray, cells * sizeof(XLOPER12));
        }
        case xltypeNum:
        case xltypeBool:
        case xltypeErr:
        case xltypeMissing:
        case xltypeNil:
        case xltypeInt:
        case xltypeSRef:
        case xltypeFlow:
        case xltypeBigData:
            return {};
        default:
            return "an uninitialised record, type " + std::to_string(record.xltype);
    }
}

TracedValue Traced(const XLOPER12* record) {
    if (record == nullptr) return {nullptr, 0, "(null)"};
    const std::string fault = Unreadable(*record);
    return {record, TypeOf(*record), fault.empty() ? Describe(*record) : "(" + fault + ")"};
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
