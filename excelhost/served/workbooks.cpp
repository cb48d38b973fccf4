// Workbooks and their sheets.
#include "excelhost/served/table.h"
#include "excelhost/state.h"

#include <exception>

namespace excelhost {
namespace {

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

Outcome RunWorkbookFunction(HostState& state, Operands operands) {
    const auto text = TextOf(*operands[0]);
    const auto target = text ? ParseTarget(*text) : std::nullopt;
    std::shared_ptr<const WorkbookFunction> body;
    std::string fault;
    {
        const std::lock_guard lock(state.mutex);
        if (!target) {
            fault = "the target names no workbook and function";
        } else if (!state.workbooks.IsOpen(target->workbook)) {
            fault = "no workbook '" + Utf8(target->workbook) + "' is open";
        } else if (body = state.workbooks.Find(target->workbook, target->function); !body) {
            fault =
                "workbook '" + Utf8(target->workbook) + "' has no function '" + Utf8(target->function) + "'";
        }
        if (!body && state.alerts) ++state.alertsShown;
    }
    if (!body) return Outcome::Failed(xlretFailed, std::move(fault));
    const std::vector<const XLOPER12*> arguments(operands.begin() + 1, operands.end());
    try {
        return Outcome::Of((*body)(arguments));
    } catch (const std::exception& e) {
        return Outcome::Error(xlerrValue, std::string("the workbook's function failed: ") + e.what());
    } catch (...) {
        return Outcome::Error(xlerrValue, "the workbook's function failed");
    }
}

Outcome SheetName(HostState& state, Operands operands) {
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
    const std::lock_guard lock(state.mutex);
    const OpenSheet* sheet = state.sheets.Find(id);
    if (sheet == nullptr) return Outcome::Failed(xlretFailed, "there is no sheet " + std::to_string(id));
    return Outcome::Of(sheet->name);
}

constexpr ServedFunction kTable[] = {
    {xlUDF, "xlUDF", 1, 255, From::MainThread, RunWorkbookFunction},
    {xlSheetNm, "xlSheetNm", 0, 1, From::Anywhere, SheetName},
};

}  // namespace

std::span<const ServedFunction> ServedWorkbooks() {
    return kTable;
}

}  // namespace excelhost
