// The calculation of sheets through a host.
#include "excelhost/batches.h"
#include "excelhost/calculate.h"
#include "excelhost/evaluation.h"
#include "excelhost/functions/functions.h"
#include "excelhost/sheet.h"
#include "excelhost/workers.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <utility>

namespace excelhost {
namespace {

CellFault FaultAt(Place place, const std::string& message) {
    return {static_cast<std::size_t>(place.row) + 1, static_cast<std::size_t>(place.column) + 1, message};
}

std::vector<std::uint32_t> OrderOf(std::span<const LocatedFormula> formulas,
                                   std::span<const Grid* const> grids, std::span<const Text> names) try {
    return CalculationOrder(formulas, grids, names);
} catch (const CircularReference& circle) {
    throw SheetFaults({FaultAt(circle.Cell().cell->place, circle.what())}, circle.Cell().sheet);
}

// Cells by column, for the question whether an area has one.
class CellSet {
  public:
    void Add(Place place) { rows_[place.column].insert(place.row); }
    [[nodiscard]] bool HasAny(const Area& area) const {
        const XLREF12& r = area.rectangle;
        for (auto column = rows_.lower_bound(r.colFirst); column != rows_.end() && column->first <= r.colLast;
             ++column) {
            const auto row = column->second.lower_bound(r.rwFirst);
            if (row != column->second.end() && *row <= r.rwLast) return true;
        }
        return false;
    }

  private:
    std::map<COL, std::set<RW>> rows_;
};

// Functions that find their cells (OFFSET, INDIRECT) may find any: formulas with such ones, and those that refer to
// them, are calculated behind all others, each part in its order.
std::vector<std::uint32_t> FindersLast(std::vector<std::uint32_t> order,
                                       std::span<const LocatedFormula> formulas) {
    std::map<IDSHEET, CellSet> late;
    const auto isLate = [&](std::uint32_t number) {
        const auto& [sheet, cell] = formulas[number];
        const auto waits = [&, own = sheet](const FormulaStep& step) {
            if (step.step == Step::Call) return step.builtin != nullptr && step.builtin->findsCells;
            if (step.step != Step::Push || late.empty()) return false;
            if (const Area* area = step.value.If<Area>()) return late[own].HasAny(*area);
            const Reference* other = step.value.If<Reference>();
            return other != nullptr && late[other->sheet].HasAny(other->areas.front());
        };
        const bool found = std::any_of(cell->formula.steps.begin(), cell->formula.steps.end(), waits);
        if (found) late[sheet].Add(cell->place);
        return found;
    };
    std::vector<std::uint32_t> last;
    std::erase_if(order, [&](std::uint32_t number) {
        const bool found = isLate(number);
        if (found) last.push_back(number);
        return found;
    });
    order.insert(order.end(), last.begin(), last.end());
    return order;
}

// A small batch is done before other threads have woken up.
constexpr std::size_t kSmallBatch = 8;

class SheetCalculation {
  public:
    SheetCalculation(std::span<const NamedSheet> sheets, Host& host, IDSHEET firstId)
        : sheets_(sheets), host_(host), firstId_(firstId), known_(host), faults_(sheets.size()) {
        for (const NamedSheet& named : sheets) {
            grids_.push_back(&named.sheet->Values());
            names_.push_back(named.name);
            namesInFormulas_.push_back(NameInFormulas(named.name));
            for (const FormulaCell& cell : named.sheet->Formulas()) {
                formulas_.push_back({grids_.size(), &cell});
            }
        }
    }

    std::vector<std::vector<CellFault>> Run(std::size_t threads, const CalculationProgress& progress) {
        const std::vector<std::uint32_t> order = FindersLast(OrderOf(formulas_, grids_, names_), formulas_);
        for (std::size_t i = 0; i < sheets_.size(); ++i) {
            host_.AddSheet(firstId_ + i, sheets_[i].name,
                           [grid = grids_[i]](const Area& area) { return grid->Read(area); });
        }
        const Evaluation evaluation(host_, grids_, names_, firstId_);
        std::optional<Workers> workers;
        if (threads > 1) workers.emplace(threads);
        for (std::size_t done = 0; done < order.size();) {
            const auto window = std::span(order).subspan(done, std::min(order.size() - done, kBatchWindow));
            if (workers) {
                CalculateByMany(window, *workers);
            } else {
                for (const std::uint32_t number : window) Calculate(number);
            }
            done += window.size();
            if (progress) progress(done, order.size());
        }
        host_.SetCurrentSheet(firstId_);
        for (auto& ofSheet : faults_) {
            std::stable_sort(ofSheet.begin(), ofSheet.end(), [](const CellFault& a, const CellFault& b) {
                return std::pair(a.Row(), a.Column()) < std::pair(b.Row(), b.Column());
            });
        }
        return std::move(faults_);
    }

  private:
    // While several threads calculate, no cell gets its value: an add-in may look at any.
    void CalculateByMany(std::span<const std::uint32_t> window, Workers& workers) {
        std::vector<Value> values;
        for (const Batch& batch :
             BatchesOf(window, formulas_, grids_, [&](const Formula& f) { return CanBeShared(f); })) {
            if (!batch.isShared || batch.formulas.size() < kSmallBatch) {
                for (const std::uint32_t number : batch.formulas) Calculate(number);
                continue;
            }
            ShowSheet(batch.sheet);
            values.resize(batch.formulas.size());
            workers.Share(values.size(),
                          [&](std::size_t i) { values[i] = ValueOf(formulas_[batch.formulas[i]]); });
            for (std::size_t i = 0; i < values.size(); ++i) {
                Set(formulas_[batch.formulas[i]], std::move(values[i]));
            }
        }
    }

    // Excel's own functions can, but for those that look at cells which the formula doesn't name.
    [[nodiscard]] bool CanBeShared(const Formula& formula) const {
        return std::all_of(formula.steps.begin(), formula.steps.end(), [&](const FormulaStep& step) {
            if (step.step != Step::Call) return true;
            if (step.builtin != nullptr) return !step.builtin->looksFurther;
            const auto function = host_.Find(*step.value.If<Text>());
            return function && function->type.threadSafe && step.count <= function->Arity();
        });
    }

    void Calculate(std::uint32_t number) {
        const LocatedFormula& formula = formulas_[number];
        for (const std::string& fault : known_.Faults(formula.cell->formula)) {
            faults_[formula.sheet - 1].push_back(FaultAt(formula.cell->place, fault));
        }
        ShowSheet(formula.sheet);
        Set(formula, ValueOf(formula));
    }

    [[nodiscard]] Value ValueOf(const LocatedFormula& formula) const {
        const auto& [row, column] = formula.cell->place;
        const Reference caller{firstId_ + formula.sheet - 1, {Area{{row, row, column, column}}}};
        const FunctionCaller call = [&](TextView function, std::span<const Value> arguments) {
            return host_.Call(function, arguments, caller);
        };
        return CalculateFormula(formula.cell->formula,
                                Cells(grids_, formula.sheet, formula.cell->place, namesInFormulas_), call);
    }

    void Set(const LocatedFormula& formula, Value value) {
        sheets_[formula.sheet - 1].sheet->Set(formula.cell->place, std::move(value));
    }
    void ShowSheet(IDSHEET sheet) {
        if (std::exchange(current_, sheet) != sheet) host_.SetCurrentSheet(firstId_ + sheet - 1);
    }

    std::span<const NamedSheet> sheets_;
    Host& host_;
    IDSHEET firstId_;
    std::vector<const Grid*> grids_;
    std::vector<Text> names_;  // as xlSheetNm gives them
    std::vector<Text> namesInFormulas_;
    std::vector<LocatedFormula> formulas_;
    KnownFunctions known_;
    std::vector<std::vector<CellFault>> faults_;  // by sheet
    IDSHEET current_ = 0;
};

}  // namespace

std::vector<CellFault> Sheet::Calculate(Host& host, IDSHEET id, TextView name) {
    const NamedSheet named{Text(name), this};
    return CalculateSheets({&named, 1}, host, id).front();
}

std::vector<std::vector<CellFault>> CalculateSheets(std::span<const NamedSheet> sheets, Host& host,
                                                    IDSHEET firstId, std::size_t threads,
                                                    const CalculationProgress& progress) {
    return SheetCalculation(sheets, host, firstId).Run(threads, progress);
}

}  // namespace excelhost
