#include "excelhost/sheet.h"

#include "excelhost/builtins.h"
#include "excelhost/calculate.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace excelhost {
namespace {

CellFault FaultAt(Place place, const std::string& message) {
    return {static_cast<std::size_t>(place.row) + 1, static_cast<std::size_t>(place.column) + 1, message};
}

CsvTable Parse(std::string_view csv) try { return ParseCsv(csv); } catch (const CellFault& fault) {
    throw SheetFaults({fault});
}

bool IsUtf8(std::string_view text) {
    return text.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                               static_cast<int>(text.size()), nullptr, 0) != 0;
}

std::optional<bool> TruthFrom(TextView text) {
    if (SameName(text, TEXT("TRUE"))) return true;
    if (SameName(text, TEXT("FALSE"))) return false;
    return std::nullopt;
}

}  // namespace

Sheet::Sheet(std::string_view csv) {
    const CsvTable table = Parse(csv);
    const std::size_t columns = table.empty() ? 0 : table.front().size();
    if (table.size() > static_cast<std::size_t>(kRowLimit)) {
        throw SheetFaults({CellFault(kRowLimit + 1, 1, "a sheet has at most 1,048,576 rows")});
    }
    if (columns > static_cast<std::size_t>(kColumnLimit)) {
        throw SheetFaults({CellFault(1, kColumnLimit + 1, "a sheet has at most 16,384 columns")});
    }
    values_ = Grid(static_cast<RW>(table.size()), static_cast<COL>(columns));
    formulas_.resize(table.size() * columns);
    std::vector<CellFault> faults;
    for (Place place; place.row < values_.Rows(); ++place.row) {
        for (place.column = 0; place.column < values_.Columns(); ++place.column) {
            try {
                Read(place,
                     table[static_cast<std::size_t>(place.row)][static_cast<std::size_t>(place.column)]);
            } catch (const CellFault& fault) {
                faults.push_back(fault);
            }
        }
    }
    if (!faults.empty()) throw SheetFaults(std::move(faults));
}

void Sheet::Read(Place place, const std::string& field) {
    if (field.empty()) return;
    if (!IsUtf8(field)) throw FaultAt(place, "the text isn't UTF-8");
    const Text text = Wide(field);
    if (text.size() > 1 && text.front() == '=') {
        try {
            formulas_[values_.Index(place)] = ParseFormula(text);
        } catch (const FormulaFault& fault) {
            throw FaultAt(place, "bad formula " + field.substr(0, 200) + ": at character " +
                                     std::to_string(fault.Position()) + ", " + fault.what());
        }
        return;
    }
    if (text.size() > kTextLimit) throw FaultAt(place, "a text has at most 32,767 characters");
    double number = 0;
    if (ReadNumber(field, number)) {
        values_.Set(place, number);
    } else if (const auto truth = TruthFrom(text)) {
        values_.Set(place, *truth);
    } else if (const int error = ErrorNumber(field); error >= 0) {
        values_.Set(place, ErrorValue{error});
    } else {
        values_.Set(place, text);
    }
}

const Formula* Sheet::FormulaAt(Place place) const {
    const auto& formula = formulas_[values_.Index(place)];
    return formula ? &*formula : nullptr;
}

// Depth first over an explicit stack, so that a chain of any length is followed. Whatever is Open while a
// cell's references are gathered leads to that cell.
std::vector<Place> Sheet::Order() const {
    enum class State : unsigned char { New, Open, Done };
    std::vector<State> states(formulas_.size(), State::New);
    std::vector<Place> order;
    std::vector<Place> stack;

    std::vector<Place> open;  // the cells of the stack whose references are being followed

    const auto circle = [&](Place from, Place to) {
        const auto first = std::find_if(open.begin(), open.end(), [&](Place place) {
            return place.row == to.row && place.column == to.column;
        });
        std::string path;
        for (auto place = first; place != open.end(); ++place)
            path += CellName(place->row, place->column) + " -> ";
        throw SheetFaults({FaultAt(from, "circular reference: " + path + CellName(to.row, to.column))});
    };
    const auto visit = [&](Place from, Place to) {
        if (FormulaAt(to) == nullptr) return;
        const State state = states[values_.Index(to)];
        if (state == State::Open) circle(from, to);
        if (state == State::New) stack.push_back(to);
    };
    const auto visitReferences = [&](Place from) {
        for (const FormulaStep& step : FormulaAt(from)->steps) {
            const Area* area = step.value.If<Area>();
            const auto inside = area != nullptr ? values_.Inside(*area) : std::nullopt;
            if (!inside) continue;
            // Pushed from the last to the first, calculated from the first to the last.
            const XLREF12& r = inside->rectangle;
            for (RW row = r.rwLast; row >= r.rwFirst; --row) {
                for (COL column = r.colLast; column >= r.colFirst; --column) visit(from, {row, column});
            }
        }
    };

    for (Place start; start.row < values_.Rows(); ++start.row) {
        for (start.column = 0; start.column < values_.Columns(); ++start.column) {
            visit(start, start);
            while (!stack.empty()) {
                const Place place = stack.back();
                State& state = states[values_.Index(place)];
                if (state == State::New) {
                    state = State::Open;
                    open.push_back(place);
                    visitReferences(place);
                    continue;
                }
                if (state == State::Open) {
                    open.pop_back();
                    order.push_back(place);
                }
                state = State::Done;
                stack.pop_back();
            }
        }
    }
    return order;
}

void Sheet::CheckCalls(const Host& host, Place place, std::vector<CellFault>& faults) const {
    for (const FormulaStep& step : FormulaAt(place)->steps) {
        if (step.step != Step::Call || FindBuiltin(step.name) != nullptr) continue;
        const auto function = host.Find(step.name);
        if (!function) {
            faults.push_back(FaultAt(place, "unknown function '" + Utf8(step.name) + "'"));
        } else if (step.count > function->Arity()) {
            faults.push_back(FaultAt(place, "'" + Utf8(step.name) + "' takes " +
                                                std::to_string(function->Arity()) + " arguments, not " +
                                                std::to_string(step.count)));
        }
    }
}

std::vector<CellFault> Sheet::Calculate(Host& host, IDSHEET id, TextView name) {
    const std::vector<Place> order = Order();
    host.AddSheet(id, name, [this](const Area& area) { return values_.Read(area); });
    host.SetCurrentSheet(id);
    const FunctionCaller call = [&](TextView function, std::span<const Value> arguments) {
        return host.Call(function, arguments);
    };
    std::vector<CellFault> faults;
    for (const Place place : order) {
        CheckCalls(host, place, faults);
        values_.Set(place, CalculateFormula(*FormulaAt(place), place, values_, call));
    }
    std::stable_sort(faults.begin(), faults.end(), [](const CellFault& a, const CellFault& b) {
        return std::pair(a.Row(), a.Column()) < std::pair(b.Row(), b.Column());
    });
    return faults;
}

std::string CellText(const Value& value) {
    Text text;
    const auto error = ToText(value, text);
    return error ? ErrorName(error->number) : Utf8(text);
}

std::string Sheet::Csv() const {
    std::string csv;
    std::vector<std::string> line(static_cast<std::size_t>(values_.Columns()));
    for (Place place; place.row < values_.Rows(); ++place.row) {
        for (place.column = 0; place.column < values_.Columns(); ++place.column) {
            line[static_cast<std::size_t>(place.column)] = CellText(values_.At(place));
        }
        csv += CsvLine(line);
    }
    return csv;
}

}  // namespace excelhost
