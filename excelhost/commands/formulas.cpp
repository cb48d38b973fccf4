#include "excelhost/commands/formulas.h"

#include "excelhost/csv.h"

#include <algorithm>

namespace excelhost {
namespace {

// A cell that a formula refers to; empty when it refers to none.
std::string FirstReference(const Formula& formula) {
    for (const FormulaStep& step : formula.steps) {
        if (step.step != Step::Push) continue;
        if (const Area* area = step.value.If<Area>()) return AreaName(*area);
    }
    return {};
}

std::string ElementText(const Value& value) {
    if (!value.Is<Text>()) return CellText(value);
    std::string text = "\"";
    for (const char c : CellText(value)) text.append(c == '"' ? 2 : 1, c);
    return text + "\"";
}

}  // namespace

Formulas::Formulas(std::span<const std::string> sheets, std::ostream& err) {
    if (sheets.empty()) return;
    files_.emplace(sheets, err);
    for (const NamedSheet& sheet : files_->Named()) names_.push_back(NameInFormulas(sheet.name));
}

void Formulas::Add(const std::string& formula) try {
    const Text text = Wide(formula.starts_with('=') ? formula : "=" + formula);
    Formula parsed = ParseFormula(text, names_, ArrayRule::Whole);
    const std::string cell = files_ ? std::string() : FirstReference(parsed);
    if (!cell.empty())
        throw InputError(Excerpt(formula) + ": there is no sheet for " + cell +
                         "; --sheet FILE.csv gives one");
    formulas_.push_back(std::move(parsed));
    texts_.push_back(Utf8(text));
} catch (const FormulaFault& fault) {
    const std::size_t marked = formula.starts_with('=') ? 0 : 1;
    throw InputError(Excerpt(formula) + ": at character " +
                     std::to_string(std::max(fault.Position(), marked + 1) - marked) + ", " + fault.what());
}

std::vector<ReportedSheet> Formulas::Reported(std::function<std::string(std::size_t)> shown) const {
    std::vector<ReportedSheet> sheets = files_ ? files_->Reported() : std::vector<ReportedSheet>{};
    if (sheets.empty()) sheets.push_back({"formulas", {}, {}});
    ReportedSheet& first = sheets.front();
    const std::size_t column = first.fields.empty() ? 0 : first.fields.front().size();
    first.fields.resize(std::max(first.fields.size(), texts_.size()), std::vector<std::string>(column));
    for (std::size_t row = 0; row < first.fields.size(); ++row) {
        first.fields[row].push_back(row < texts_.size() ? texts_[row] : std::string());
    }
    first.shown = [column, shown = std::move(shown), others = std::move(first.shown)](Place place) {
        const bool isOurs = static_cast<std::size_t>(place.column) == column;
        return isOurs ? shown(static_cast<std::size_t>(place.row)) : others(place);
    };
    return sheets;
}

OpenFormulas::OpenFormulas(Formulas& formulas, Host& host) : formulas_(formulas), host_(host) {
    std::vector<NamedSheet> named;
    if (formulas.files_) {
        formulas.files_->Calculate(host);
        named = formulas.files_->Named();
    } else {
        named.push_back({TEXT("[Book1]Sheet1"), &formulas.none_});
        (void)CalculateSheets(named, host);
    }
    std::vector<Text> names;
    for (const NamedSheet& sheet : named) {
        grids_.push_back(&sheet.sheet->Values());
        names.push_back(sheet.name);
    }
    evaluation_.emplace(host, grids_, names, 1);
}

Value OpenFormulas::Calculate(std::size_t index) const {
    const COL column = std::min(grids_.front()->Columns(), kColumnLimit - 1);
    const auto row = static_cast<RW>(std::min(index, static_cast<std::size_t>(kRowLimit) - 1));
    return evaluation_->Calculate(formulas_.formulas_[index],
                                  Reference{1, {Area{{row, row, column, column}}}});
}

std::vector<std::string> OpenFormulas::Faults(std::size_t index) const {
    return KnownFunctions(host_).Faults(formulas_.formulas_[index]);
}

std::string LineOf(const Value& value) {
    const Array* array = value.If<Array>();
    if (array == nullptr) {
        std::string text = CellText(value);
        if (text.find_first_of("\r\n") == std::string::npos) return text;
        std::string quoted = CsvLine({text});
        quoted.pop_back();
        return quoted;
    }
    std::string text = "{";
    for (std::size_t row = 0; row < array->rows; ++row) {
        for (std::size_t column = 0; column < array->columns; ++column) {
            if (column > 0) text += ',';
            text += ElementText(array->At(row, column));
        }
        text += row + 1 < array->rows ? ';' : '}';
    }
    return text;
}

Option SheetOption(std::vector<std::string>& sheets) {
    return ListOption("--sheet", "[NAME=]FILE.csv",
                      "a sheet that the formulas may refer to; may be given several times", sheets);
}

}  // namespace excelhost
