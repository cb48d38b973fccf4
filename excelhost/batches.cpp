#include "excelhost/batches.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace excelhost {
namespace {

bool IsInside(const XLREF12& r, Place place) noexcept {
    return place.row >= r.rwFirst && place.row <= r.rwLast && place.column >= r.colFirst &&
           place.column <= r.colLast;
}

// Gives each formula of the stretch a level above those that it refers to.
class Levels {
  public:
    Levels(std::span<const LocatedFormula> formulas, std::span<const Grid* const> sheets)
        : formulas_(formulas), sheets_(sheets) {}

    std::size_t Add(std::uint32_t number, bool isShared) {
        const LocatedFormula& formula = formulas_[number];
        std::size_t level = isShared ? 0 : highest_;
        const Cells cells(sheets_, formula.sheet, formula.cell->place);
        for (const FormulaStep& step : formula.cell->formula.steps) {
            const auto range = cells.Find(step.value);
            if (!range) continue;
            const Reference* named = step.value.If<Reference>();
            level = std::max(level, Above(named != nullptr ? named->sheet : formula.sheet, range->area));
        }
        highest_ = std::max(highest_, level);
        known_[formula.sheet].push_back({formula.cell->place, level});
        return level;
    }

  private:
    struct Known {
        Place place;
        std::size_t level = 0;
    };

    [[nodiscard]] std::size_t Above(IDSHEET sheet, const Area& area) const {
        std::size_t level = 0;
        const auto known = known_.find(sheet);
        if (known == known_.end()) return level;
        for (const Known& formula : known->second) {
            if (formula.level >= level && IsInside(area.rectangle, formula.place)) level = formula.level + 1;
        }
        return level;
    }

    std::span<const LocatedFormula> formulas_;
    std::span<const Grid* const> sheets_;
    std::map<IDSHEET, std::vector<Known>> known_;
    std::size_t highest_ = 0;
};

}  // namespace

std::vector<Batch> BatchesOf(std::span<const std::uint32_t> stretch, std::span<const LocatedFormula> formulas,
                             std::span<const Grid* const> sheets,
                             const std::function<bool(const Formula&)>& canBeShared) {
    struct Planned {
        std::size_t level;
        bool isAlone;
        std::uint32_t number;
    };
    std::vector<Planned> planned;
    Levels levels(formulas, sheets);
    for (const std::uint32_t number : stretch) {
        const bool isShared = canBeShared(formulas[number].cell->formula);
        planned.push_back({levels.Add(number, isShared), !isShared, number});
    }
    // Within a level those that can be shared come first, sheet by sheet.
    const auto key = [&](const Planned& p) {
        return std::tuple(p.level, p.isAlone, p.isAlone ? 0 : formulas[p.number].sheet);
    };
    std::stable_sort(planned.begin(), planned.end(),
                     [&](const Planned& a, const Planned& b) { return key(a) < key(b); });
    std::vector<Batch> batches;
    std::size_t level = 0;
    for (const Planned& p : planned) {
        const IDSHEET sheet = formulas[p.number].sheet;
        const bool goesOn = !batches.empty() && level == p.level && batches.back().sheet == sheet &&
                            batches.back().isShared != p.isAlone;
        if (!goesOn) batches.push_back({sheet, !p.isAlone, {}});
        batches.back().formulas.push_back(p.number);
        level = p.level;
    }
    return batches;
}

}  // namespace excelhost
