#include "excelhost/order.h"

#include <algorithm>
#include <numeric>
#include <optional>

namespace excelhost {
namespace {

using Number = std::uint32_t;  // of a formula

// The formulas that aren't calculated yet, sorted so that those of one line of a sheet (a row or a column) stand
// side by side. Each place knows a place behind it that may still be waiting: a formula that is done is passed
// over at once, however often ranges lead over it.
class Waiting {
  public:
    enum class Lines { Rows, Columns };

    Waiting(std::span<const LocatedFormula> formulas, Lines lines)
        : lines_(lines), keys_(formulas.size()), numbers_(formulas.size()), places_(formulas.size()) {
        std::iota(numbers_.begin(), numbers_.end(), Number{0});
        const auto key = [&](Number number) {
            return Key(formulas[number].sheet, formulas[number].cell->place);
        };
        std::sort(numbers_.begin(), numbers_.end(), [&](Number a, Number b) { return key(a) < key(b); });
        for (std::size_t i = 0; i < numbers_.size(); ++i) {
            keys_[i] = key(numbers_[i]);
            places_[numbers_[i]] = static_cast<Number>(i);
        }
        next_.resize(formulas.size() + 1);
        std::iota(next_.begin(), next_.end(), Number{0});
    }

    // A formula between two cells of one line, both included.
    std::optional<Number> First(IDSHEET sheet, Place first, Place last) {
        const auto begin = std::lower_bound(keys_.begin(), keys_.end(), Key(sheet, first));
        const Number place = Follow(static_cast<Number>(begin - keys_.begin()));
        if (place == keys_.size() || keys_[place] > Key(sheet, last)) return std::nullopt;
        return numbers_[place];
    }

    void Remove(Number number) noexcept { next_[places_[number]] = places_[number] + 1; }

  private:
    [[nodiscard]] std::uint64_t Key(IDSHEET sheet, Place place) const noexcept {
        constexpr int bits = 20;  // the most that a row or a column needs
        const auto row = static_cast<std::uint64_t>(place.row);
        const auto column = static_cast<std::uint64_t>(place.column);
        const std::uint64_t within = lines_ == Lines::Rows ? row << bits | column : column << bits | row;
        return static_cast<std::uint64_t>(sheet) << 2 * bits | within;
    }

    Number Follow(Number place) noexcept {
        while (next_[place] != place) place = next_[place] = next_[next_[place]];
        return place;
    }

    Lines lines_;
    std::vector<std::uint64_t> keys_;
    std::vector<Number> numbers_;  // by place
    std::vector<Number> places_;   // by number
    std::vector<Number> next_;     // by place
};

class Orderer {
  public:
    Orderer(std::span<const LocatedFormula> formulas, std::span<const Grid* const> sheets,
            std::span<const Text> names)
        : formulas_(formulas),
          sheets_(sheets),
          names_(names),
          rows_(formulas, Waiting::Lines::Rows),
          columns_(formulas, Waiting::Lines::Columns),
          states_(formulas.size(), State::New) {
        order_.reserve(formulas.size());
    }

    // Depth first over a stack of our own, so that a chain of any length is followed.
    std::vector<Number> Order() {
        for (Number start = 0; start < formulas_.size(); ++start) {
            if (states_[start] == State::New) Open(start);
            while (!open_.empty()) {
                const auto needed = Needed(open_.back());
                if (!needed) {
                    Close();
                } else if (states_[*needed] == State::Open) {
                    ThrowCircle(*needed);
                } else {
                    Open(*needed);
                }
            }
        }
        return std::move(order_);
    }

  private:
    enum class State : unsigned char { New, Open, Done };
    struct OpenFormula {
        Number number = 0;
        Number step = 0;  // the references ahead of it are done
    };

    void Open(Number number) {
        states_[number] = State::Open;
        open_.push_back({number, 0});
    }

    void Close() {
        const Number number = open_.back().number;
        states_[number] = State::Done;
        rows_.Remove(number);
        columns_.Remove(number);
        order_.push_back(number);
        open_.pop_back();
    }

    // A formula that has to be done before this one can be.
    std::optional<Number> Needed(OpenFormula& open) {
        const LocatedFormula& formula = formulas_[open.number];
        const auto& steps = formula.cell->formula.steps;
        const Cells cells(sheets_, formula.sheet, formula.cell->place);
        for (; open.step < steps.size(); ++open.step) {
            const Value& value = steps[open.step].value;
            const auto range = cells.Find(value);
            if (!range) continue;
            const Reference* named = value.If<Reference>();
            const auto inside = range->grid->Inside(range->area);
            const IDSHEET sheet = named != nullptr ? named->sheet : formula.sheet;
            const auto found = inside ? First(sheet, *inside) : std::nullopt;
            if (found) return found;
        }
        return std::nullopt;
    }

    // Along the longer side of the area.
    std::optional<Number> First(IDSHEET sheet, const Area& area) {
        const XLREF12& r = area.rectangle;
        if (area.Rows() < area.Columns()) {
            for (RW row = r.rwFirst; row <= r.rwLast; ++row) {
                if (const auto found = rows_.First(sheet, {row, r.colFirst}, {row, r.colLast})) return found;
            }
            return std::nullopt;
        }
        for (COL column = r.colFirst; column <= r.colLast; ++column) {
            if (const auto found = columns_.First(sheet, {r.rwFirst, column}, {r.rwLast, column}))
                return found;
        }
        return std::nullopt;
    }

    [[nodiscard]] std::string Name(Number number) const {
        const LocatedFormula& formula = formulas_[number];
        const std::string cell = CellName(formula.cell->place.row, formula.cell->place.column);
        return sheets_.size() > 1 ? Excerpt(names_[formula.sheet - 1]) + "!" + cell : cell;
    }

    [[noreturn]] void ThrowCircle(Number closing) const {
        constexpr std::ptrdiff_t head = 6;
        constexpr std::ptrdiff_t tail = 3;
        const auto first = std::find_if(open_.begin(), open_.end(),
                                        [&](const OpenFormula& open) { return open.number == closing; });
        std::string path;
        const std::ptrdiff_t length = open_.end() - first;
        for (std::ptrdiff_t i = 0; i < length; ++i) {
            if (i == head && length > head + tail + 1) {
                path += "... " + std::to_string(length - head - tail) + " more cells ... -> ";
                i = length - tail;
            }
            path += Name(first[i].number) + " -> ";
        }
        throw CircularReference(formulas_[open_.back().number],
                                "circular reference: " + path + Name(closing));
    }

    std::span<const LocatedFormula> formulas_;
    std::span<const Grid* const> sheets_;
    std::span<const Text> names_;
    Waiting rows_;
    Waiting columns_;
    std::vector<State> states_;
    std::vector<OpenFormula> open_;
    std::vector<Number> order_;
};

}  // namespace

std::vector<std::uint32_t> CalculationOrder(std::span<const LocatedFormula> formulas,
                                            std::span<const Grid* const> sheets,
                                            std::span<const Text> names) {
    return Orderer(formulas, sheets, names).Order();
}

}  // namespace excelhost
