// Values of cells, and values in other types.
#include "excelhost/served/table.h"
#include "excelhost/grid.h"
#include "excelhost/state.h"

#include <cmath>
#include <limits>

namespace excelhost {
namespace {

constexpr DWORD kAnyValue =
    xltypeNum | xltypeStr | xltypeBool | xltypeErr | xltypeMulti | xltypeMissing | xltypeNil | xltypeInt;

DWORD TypeOfValue(const Value& value) {
    Blocks blocks;
    return TypeOf(RecordFrom(value, blocks));
}

// One value in the first of the wanted types that it can have.
Value Converted(const Value& value, DWORD wanted) {
    if (value.Is<ErrorValue>()) return value;
    double number = 0;
    if ((wanted & (xltypeNum | xltypeInt)) != 0 && !ToNumber(value, number)) {
        if ((wanted & xltypeNum) != 0) return number;
        const double whole = std::trunc(number);
        if (std::abs(whole) <= std::numeric_limits<int>::max()) return static_cast<int>(whole);
    }
    bool truth = false;
    if ((wanted & xltypeBool) != 0 && !ToTruth(value, truth)) return truth;
    Text text;
    if ((wanted & xltypeStr) != 0 && !ToText(value, text)) return text;
    return ErrorValue{xlerrValue};
}

// xlCoerce(value or reference, types): the cells of a reference, or the value in one of the types.
Outcome Coerce(HostState& state, Operands operands) {
    DWORD wanted = kAnyValue;
    if (operands.size() == 2 && !IsLeftOut(*operands[1])) {
        const auto types = NumberOf(*operands[1]);
        if (!types || *types < 1 || *types > 0xFFF) {
            return Outcome::Failed(xlretInvXloper, "the types are no mask of xltype's bits");
        }
        wanted = static_cast<DWORD>(*types);
    }
    Value value = ValueFrom(*operands[0]);
    if ((TypeOf(*operands[0]) & wanted) != 0) return Outcome::Of(std::move(value));
    // A reference to the current sheet and one to a named sheet are one as good as the other.
    if (const Area* area = value.If<Area>(); area != nullptr && (wanted & xltypeRef) != 0) {
        const std::lock_guard lock(state.mutex);
        return Outcome::Of(Reference{state.sheets.Current(), {*area}});
    }
    if (const Reference* reference = value.If<Reference>();
        reference != nullptr && (wanted & xltypeSRef) != 0 && reference->areas.size() == 1) {
        return Outcome::Of(reference->areas.front());
    }
    value = Dereference(state, value);
    if ((TypeOfValue(value) & wanted) != 0) return Outcome::Of(std::move(value));
    if (const Array* array = value.If<Array>()) {
        if (array->cells.size() != 1) return Outcome::Error(xlerrValue, "several values are no single one");
        const Value single = array->cells.front();
        return Outcome::Of(Converted(single, wanted));
    }
    Value converted = Converted(value, wanted);
    if (converted.Is<ErrorValue>() && (wanted & xltypeMulti) != 0) {
        return Outcome::Of(Array{1, 1, {std::move(value)}});
    }
    return Outcome::Of(std::move(converted));
}

// xlSet(reference, value). The sheets are what their files and formulas say.
Outcome Set(HostState&, Operands operands) {
    const DWORD type = TypeOf(*operands[0]);
    if (type != xltypeSRef && type != xltypeRef) {
        return Outcome::Failed(xlretInvXloper, "the first operand is no reference");
    }
    return Outcome::Failed(xlretFailed, "cells can't be set from outside the calculation here");
}

constexpr ServedFunction kTable[] = {
    {xlSpecial | 2, "xlCoerce", 1, 2, From::Anywhere, Coerce},
    {xlSpecial | 3, "xlSet", 1, 2, From::Commands, Set},
};

}  // namespace

std::span<const ServedFunction> ServedValues() {
    return kTable;
}

}  // namespace excelhost
