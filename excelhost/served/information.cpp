// Who calls, and what is known of the workspace, a document and a cell. Of the many numbers that the GET functions
// take, those are answered that a sheet without a screen has an answer to; any other gives #N/A.
#include "excelhost/callscope.h"
#include "excelhost/served/table.h"
#include "excelhost/state.h"

#include <cmath>
#include <iterator>
#include <string_view>

namespace excelhost {
namespace {

constexpr const char* kNoAnswer = "this host has no answer to that number";

// The number of what is asked for; -1 when it is none.
int Topic(const XLOPER12& record) {
    const auto number = NumberOf(record);
    return number && std::abs(*number) < 1000 ? static_cast<int>(*number) : -1;
}

Reference ActiveReference(HostState& state) {
    const std::lock_guard lock(state.mutex);
    return {state.sheets.Current(), {Area{{0, 0, 0, 0}}}};
}

// The calling cell; #REF! when a cell isn't what calls.
Outcome Caller(HostState&, Operands) {
    const CallScope* scope = CallScope::Current();
    if (scope == nullptr || !scope->Caller()) return Outcome::Error(xlerrRef, "no cell calls");
    return Outcome::Of(*scope->Caller());
}

Outcome ActiveCell(HostState& state, Operands) {
    return Outcome::Of(ActiveReference(state));
}

// In the order of XlApplicationInternational, for the United States.
constexpr const char* kInternational[] = {
    "1",     "1",                                                // country of the program and of the system
    ".",     ",",       ",",                                     // decimal point, thousands, list
    "R",     "C",       "r",     "c",    "[",    "]", "{", "}",  // rows, columns and brackets
    ",",     ";",       "@",  // columns, rows and alternative ones of array constants
    "/",     ":",       "y",     "m",    "d",    "h", "m", "s",  // dates and times
    "$",     "General",                                          // money, the number format
    "2",     "1",       "2",     "3",    "3",    "0",  // digits, negative money, short names, order of dates
    "FALSE", "FALSE",   "FALSE",                       // 24 hours, foreign functions, metric
    "FALSE", "TRUE",    "TRUE",  "TRUE", "TRUE",       // money: space, sign in front, minus, zeros
    "FALSE", "FALSE",   "TRUE",  "TRUE", "FALSE"       // months, days, long years, month first, hours
};

Array International() {
    Array array{1, std::size(kInternational), {}};
    array.cells.resize(array.columns);
    for (std::size_t i = 0; i < array.columns; ++i) {
        const std::string_view item = kInternational[i];
        Value& cell = array.cells[i];
        if (item.front() >= '0' && item.front() <= '9') {
            cell.emplace<double>(item.front() - '0');
        } else if (item == "TRUE" || item == "FALSE") {
            cell.emplace<bool>(item == "TRUE");
        } else {
            cell.emplace<Text>(Wide(item));
        }
    }
    return array;
}

Array Procedures(HostState& state) {
    const std::lock_guard lock(state.mutex);
    Array array{0, 3, {}};
    for (const auto& registration : state.registrations.All()) {
        ++array.rows;
        array.cells.insert(array.cells.end(), {Value(registration->module), Value(registration->procedure),
                                               Value(registration->typeText)});
    }
    return array;
}

Outcome GetWorkspace(HostState& state, Operands operands) {
    switch (Topic(*operands[0])) {
        case 1:
            return Outcome::Of(Text(sizeof(void*) == 8 ? TEXT("Windows (64-bit) NT 10.00")
                                                       : TEXT("Windows (32-bit) NT 10.00")));
        case 2:
            return Outcome::Of(Text(TEXT("16.0")));
        case 3:
            return Outcome::Of(0.0);  // no workspace of its own
        case 37:
            return Outcome::Of(International());
        case 44: {
            Array procedures = Procedures(state);
            if (procedures.rows == 0) return Outcome::Error(xlerrNA, "nothing is registered");
            return Outcome::Of(std::move(procedures));
        }
        default:
            return Outcome::Error(xlerrNA, kNoAnswer);
    }
}

// "[Book1.xlsx]Sheet1" in its two parts.
Text BookOf(TextView name) {
    const auto bracket = name.find(WCHAR{']'});
    return bracket == TextView::npos ? Text(name) : Text(name.substr(1, bracket - 1));
}

std::optional<OpenSheet> SheetNamed(HostState& state, Operands operands, std::size_t place) {
    const std::lock_guard lock(state.mutex);
    const OpenSheet* sheet = nullptr;
    if (place >= operands.size() || IsLeftOut(*operands[place])) {
        sheet = state.sheets.Find(0);
    } else if (const auto name = TextOf(*operands[place])) {
        sheet = state.sheets.FindByName(*name);
    }
    return sheet != nullptr ? std::optional(*sheet) : std::nullopt;
}

Outcome GetDocument(HostState& state, Operands operands) {
    const auto sheet = SheetNamed(state, operands, 1);
    if (!sheet) return Outcome::Error(xlerrValue, "there is no such sheet");
    switch (Topic(*operands[0])) {
        case 1:
        case 76:
            return Outcome::Of(sheet->name);
        case 3:
            return Outcome::Of(1.0);  // a worksheet
        case 66:
        case 68:
        case 88:
            return Outcome::Of(BookOf(sheet->name));
        case 87:
            return Outcome::Of(static_cast<double>(sheet->id));
        default:
            return Outcome::Error(xlerrNA, kNoAnswer);
    }
}

Outcome GetCell(HostState& state, Operands operands) {
    Value value = operands.size() > 1 && !IsLeftOut(*operands[1]) ? ValueFrom(*operands[1])
                                                                  : Value(ActiveReference(state));
    if (const Area* area = value.If<Area>()) value = Reference{0, {*area}};
    const Reference* reference = value.If<Reference>();
    if (reference == nullptr || reference->areas.empty()) {
        return Outcome::Error(xlerrValue, "the operand is no reference");
    }
    const XLREF12& r = reference->areas.front().rectangle;
    const Reference first{reference->sheet, {Area{{r.rwFirst, r.rwFirst, r.colFirst, r.colFirst}}}};
    Text name;
    {
        const std::lock_guard lock(state.mutex);
        const OpenSheet* sheet = state.sheets.Find(reference->sheet);
        if (sheet == nullptr) return Outcome::Error(xlerrRef, "there is no such sheet");
        name = sheet->name;
    }
    switch (Topic(*operands[0])) {
        case 1:
            return Outcome::Of(name + TEXT("!") + Wide(CellName(r.rwFirst, r.colFirst)));
        case 2:
            return Outcome::Of(r.rwFirst + 1.0);
        case 3:
            return Outcome::Of(r.colFirst + 1.0);
        case 5:
            return Outcome::Of(Dereference(state, first));
        case 7:
            return Outcome::Of(Text(TEXT("General")));
        case 32:
        case 62:
            return Outcome::Of(name);
        case 66:
            return Outcome::Of(BookOf(name));
        default:
            return Outcome::Error(xlerrNA, kNoAnswer);
    }
}

Outcome SheetId(HostState& state, Operands operands) {
    const auto sheet = SheetNamed(state, operands, 0);
    if (!sheet) return Outcome::Failed(xlretFailed, "there is no such sheet");
    return Outcome::Of(Reference{sheet->id, {}});
}

constexpr ServedFunction kTable[] = {
    {89, "xlfCaller", 0, 0, From::Anywhere, Caller},
    {94, "xlfActiveCell", 0, 0, From::Macros, ActiveCell},
    {95, "xlfSelection", 0, 0, From::Macros, ActiveCell},
    {185, "xlfGetCell", 1, 2, From::Macros, GetCell},
    {186, "xlfGetWorkspace", 1, 1, From::Macros, GetWorkspace},
    {188, "xlfGetDocument", 1, 2, From::Macros, GetDocument},
    {xlSpecial | 4, "xlSheetId", 0, 1, From::Anywhere, SheetId},
};

}  // namespace

std::span<const ServedFunction> ServedInformation() {
    return kTable;
}

}  // namespace excelhost
