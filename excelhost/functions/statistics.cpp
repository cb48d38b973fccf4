#include "excelhost/functions/functions.h"

#include "excelhost/formula.h"
#include "excelhost/functions/criteria.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace excelhost {
namespace {

std::vector<double> Numbers(const Given& given) {
    std::vector<double> numbers;
    given.EachNumber([&](double number) { numbers.push_back(number); });
    return numbers;
}
std::vector<double> Numbers(const Given& given, std::size_t i) {
    std::vector<double> numbers;
    given.EachNumber(i, [&](double number) { numbers.push_back(number); });
    return numbers;
}

struct Tally {
    double sum = 0;
    double count = 0;
    void Add(double number) { sum += number, ++count; }
    [[nodiscard]] Value Mean() const {
        return count == 0 ? Value(ErrorValue{xlerrDiv0}) : FiniteNumber(sum / count);
    }
};

Value Average(const Given& given) {
    Tally tally;
    given.EachNumber([&](double number) { tally.Add(number); });
    return tally.Mean();
}

// The extreme of no numbers is 0.
template <class Better>
Value Extreme(const Given& given) {
    std::optional<double> best;
    given.EachNumber([&](double number) {
        if (!best || Better{}(number, *best)) best = number;
    });
    return best.value_or(0.0);
}

// Errors and text that is no number don't count and don't disturb.
Value Count(const Given& given) {
    double count = 0;
    for (std::size_t i = 0; i < given.Count(); ++i) {
        if (IsReference(given.Raw(i)) || given.Raw(i).Is<Array>()) {
            given.EachValue(i,
                            [&](const Value& cell) { count += cell.Is<double>() || cell.Is<int>() ? 1 : 0; });
        } else {
            double number = 0;
            count += ToNumber(given.Any(i), number) ? 0 : 1;
        }
    }
    return count;
}

Value CountAll(const Given& given) {
    double count = 0;
    for (std::size_t i = 0; i < given.Count(); ++i) {
        given.EachValue(i, [&](const Value& cell) { count += cell.Is<Empty>() ? 0 : 1; });
    }
    return count;
}

// Cells beyond the sheet's last are empty as well.
Value CountBlank(const Given& given) {
    const Cells::Range range = given.Range(0);
    double count = static_cast<double>(range.area.Rows()) * static_cast<double>(range.area.Columns());
    range.grid->Each(range.area, [&](const Value& cell) {
        const Text* text = cell.If<Text>();
        if (!cell.Is<Empty>() && (text == nullptr || !text->empty())) --count;
        return true;
    });
    return count;
}

// -- By conditions: pairs of a range and what its cells must meet, from the argument `first` on.

class Conditions {
  public:
    Conditions(const Given& given, std::size_t first, std::size_t end) {
        if ((end - first) % 2 != 0) Fail(xlerrValue);
        for (std::size_t i = first; i < end; i += 2) {
            pairs_.push_back({given.Range(i), Criterion(given.Any(i + 1))});
            Reach(pairs_.back().range);
            const Area& area = pairs_.back().range.area;
            if (area.Rows() != Shape().Rows() || area.Columns() != Shape().Columns()) Fail(xlerrValue);
        }
    }

    // How many cells meet all. Those beyond every sheet are empty: all of them do, or none.
    [[nodiscard]] double Count() const {
        double count = 0;
        EachMet([&](std::size_t, std::size_t) { ++count; });
        if (!Met([](const Cells::Range&) -> Value { return Empty{}; })) return count;
        const auto size = [](std::size_t rows, std::size_t columns) {
            return static_cast<double>(rows) * static_cast<double>(columns);
        };
        return count + size(Shape().Rows(), Shape().Columns()) - size(rows_, columns_);
    }

    // Calls `use` with each number of a range of the same shape that stands where all conditions are met; only
    // the range's first cell counts for its place.
    template <class Use>
    void EachNumber(const Cells::Range& numbers, Use use) {
        Reach({numbers.grid,
               {{numbers.area.rectangle.rwFirst,
                 numbers.area.rectangle.rwFirst + static_cast<RW>(Shape().Rows()) - 1,
                 numbers.area.rectangle.colFirst,
                 numbers.area.rectangle.colFirst + static_cast<COL>(Shape().Columns()) - 1}}});
        EachMet([&](std::size_t row, std::size_t column) {
            const Value& cell = CellOf(numbers, row, column);
            if (const auto* error = cell.If<ErrorValue>()) throw ErrorFound{*error};
            if (const auto* number = cell.If<double>()) use(*number);
        });
    }

  private:
    struct Pair {
        Cells::Range range;
        Criterion criterion;
    };

    [[nodiscard]] const Area& Shape() const { return pairs_.front().range.area; }

    static const Value& CellOf(const Cells::Range& range, std::size_t row, std::size_t column) {
        const XLREF12& r = range.area.rectangle;
        return range.grid->At({r.rwFirst + static_cast<RW>(row), r.colFirst + static_cast<COL>(column)});
    }

    // Makes the part that is looked at cover what the range's sheet has of it.
    void Reach(const Cells::Range& range) {
        const auto inside = range.grid->Inside(range.area);
        rows_ = std::max(rows_, inside ? inside->Rows() : 1);
        columns_ = std::max(columns_, inside ? inside->Columns() : 1);
    }

    template <class CellFrom>
    [[nodiscard]] bool Met(CellFrom cell) const {
        return std::all_of(pairs_.begin(), pairs_.end(),
                           [&](const Pair& pair) { return pair.criterion.Holds(cell(pair.range)); });
    }

    template <class Use>
    void EachMet(Use use) const {
        for (std::size_t row = 0; row < rows_; ++row) {
            for (std::size_t column = 0; column < columns_; ++column) {
                const auto cell = [&](const Cells::Range& range) -> const Value& {
                    return CellOf(range, row, column);
                };
                if (Met(cell)) use(row, column);
            }
        }
    }

    std::vector<Pair> pairs_;
    std::size_t rows_ = 1;
    std::size_t columns_ = 1;
};

Value CountIf(const Given& given) {
    return Conditions(given, 0, given.Count()).Count();
}

// SUMIF(range, condition, [numbers]) and SUMIFS(numbers, range, condition, ...).
Tally TallyIf(const Given& given) {
    Tally tally;
    Conditions(given, 0, 2).EachNumber(given.Range(given.Has(2) ? 2 : 0), [&](double number) {
        tally.Add(number);
    });
    return tally;
}
Tally TallyIfs(const Given& given) {
    Tally tally;
    Conditions(given, 1, given.Count()).EachNumber(given.Range(0), [&](double number) { tally.Add(number); });
    return tally;
}

template <class Better>
Value ExtremeIfs(const Given& given) {
    std::optional<double> best;
    Conditions(given, 1, given.Count()).EachNumber(given.Range(0), [&](double number) {
        if (!best || Better{}(number, *best)) best = number;
    });
    return best.value_or(0.0);
}

// -- By order.

Value Median(const Given& given) {
    std::vector<double> numbers = Numbers(given);
    if (numbers.empty()) return ErrorValue{xlerrNum};
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    if (numbers.size() % 2 != 0) return *middle;
    return (*std::max_element(numbers.begin(), middle) + *middle) / 2;
}

template <class Before>
Value Nth(const Given& given) {
    std::vector<double> numbers = Numbers(given, 0);
    const double n = std::ceil(given.Number(1));
    if (n < 1 || n > static_cast<double>(numbers.size())) return ErrorValue{xlerrNum};
    const auto place = numbers.begin() + static_cast<std::ptrdiff_t>(n) - 1;
    std::nth_element(numbers.begin(), place, numbers.end(), Before{});
    return *place;
}

// The number at a place among those in order, from 0 on; between two of them in proportion.
Value AtPlace(std::vector<double> numbers, double place) {
    if (!(place >= 0 && place <= static_cast<double>(numbers.size()) - 1)) return ErrorValue{xlerrNum};
    std::sort(numbers.begin(), numbers.end());
    const auto below = static_cast<std::size_t>(place);
    const double part = place - std::floor(place);
    const double number = numbers[below];
    return part == 0 ? number : number + part * (numbers[below + 1] - number);
}

// With the least and the greatest number as the parts 0 and 1, or at one place inside of those.
template <bool Inclusive>
Value Quantile(const Given& given, double part) {
    std::vector<double> numbers = Numbers(given, 0);
    const auto count = static_cast<double>(numbers.size());
    if (part < 0 || part > 1) return ErrorValue{xlerrNum};
    return AtPlace(std::move(numbers), Inclusive ? part * (count - 1) : part * (count + 1) - 1);
}
template <bool Inclusive>
Value Percentile(const Given& given) {
    return Quantile<Inclusive>(given, given.Number(1));
}
template <bool Inclusive>
Value Quartile(const Given& given) {
    return Quantile<Inclusive>(given, std::trunc(given.Number(1)) / 4);
}

// The number that is there most often, the first one of several; #N/A when none is there twice.
Value Mode(const Given& given) {
    const std::vector<double> numbers = Numbers(given);
    std::map<double, std::size_t> counts;
    for (const double number : numbers) ++counts[number];
    std::size_t most = 1;
    Value mode = ErrorValue{xlerrNA};
    for (const double number : numbers) {
        const std::size_t count = counts[number];
        if (count <= most) continue;
        most = count;
        mode = number;
    }
    return mode;
}

// One more than the numbers ahead; from the largest down unless the order isn't 0.
Value Rank(const Given& given) {
    const double number = given.Number(0);
    const bool ascending = given.Number(2, 0) != 0;
    double ahead = 0;
    bool found = false;
    given.EachNumber(1, [&](double other) {
        found = found || other == number;
        ahead += (ascending ? other < number : other > number) ? 1 : 0;
    });
    return found ? Value(ahead + 1) : Value(ErrorValue{xlerrNA});
}

// -- Spread, about the mean. `Fewer` is 1 for a sample, 0 for a whole population.

template <int Fewer>
Value Variance(const Given& given) {
    const std::vector<double> numbers = Numbers(given);
    const double count = static_cast<double>(numbers.size());
    if (count - Fewer < 1) return ErrorValue{xlerrDiv0};
    double sum = 0;
    for (const double number : numbers) sum += number;
    const double mean = sum / count;
    double squares = 0;
    for (const double number : numbers) squares += (number - mean) * (number - mean);
    return FiniteNumber(squares / (count - Fewer));
}

template <int Fewer>
Value Deviation(const Given& given) {
    const Value variance = Variance<Fewer>(given);
    const double* number = variance.If<double>();
    return number != nullptr ? Value(std::sqrt(*number)) : variance;
}

// -- Two lines of numbers, of which those places count where both have one.

struct Moments {
    double meanX = 0;
    double meanY = 0;
    double squaresX = 0;  // of the distances from the mean
    double squaresY = 0;
    double products = 0;
};

// The first argument has the numbers y, the second the x. #N/A for lines of two lengths, #DIV/0! for empty ones.
Moments MomentsOf(const Given& given) {
    const Array ys = given.Table(0);
    const Array xs = given.Table(1);
    if (xs.cells.size() != ys.cells.size()) Fail(xlerrNA);
    std::vector<std::pair<double, double>> pairs;
    Moments moments;
    for (std::size_t i = 0; i < xs.cells.size(); ++i) {
        for (const Array* line : {&ys, &xs}) {
            if (const auto* error = line->cells[i].If<ErrorValue>()) throw ErrorFound{*error};
        }
        const double* x = xs.cells[i].If<double>();
        const double* y = ys.cells[i].If<double>();
        if (x == nullptr || y == nullptr) continue;
        pairs.emplace_back(*x, *y);
        moments.meanX += *x;
        moments.meanY += *y;
    }
    if (pairs.empty()) Fail(xlerrDiv0);
    moments.meanX /= static_cast<double>(pairs.size());
    moments.meanY /= static_cast<double>(pairs.size());
    for (const auto& [x, y] : pairs) {
        moments.squaresX += (x - moments.meanX) * (x - moments.meanX);
        moments.squaresY += (y - moments.meanY) * (y - moments.meanY);
        moments.products += (x - moments.meanX) * (y - moments.meanY);
    }
    return moments;
}

double SlopeOf(const Moments& moments) {
    if (moments.squaresX == 0) Fail(xlerrDiv0);
    return moments.products / moments.squaresX;
}

Value Correlation(const Given& given) {
    const Moments moments = MomentsOf(given);
    if (moments.squaresX == 0 || moments.squaresY == 0) return ErrorValue{xlerrDiv0};
    return FiniteNumber(moments.products / std::sqrt(moments.squaresX) / std::sqrt(moments.squaresY));
}

Value Intercept(const Given& given) {
    const Moments moments = MomentsOf(given);
    return FiniteNumber(moments.meanY - SlopeOf(moments) * moments.meanX);
}

using Larger = std::greater<>;
using Smaller = std::less<>;

// Ranges and conditions by turns, behind the range of numbers.
constexpr TakesArguments kPairsBehindFirst{0x55555554};

constexpr auto kFunctions = std::to_array<Builtin>({
    {"AVERAGE", 1, kArgumentLimit, Average, kWholeArrays},
    {"AVERAGEIF", 2, 3, [](const Given& given) { return TallyIf(given).Mean(); }, {0b10}, true},
    {"AVERAGEIFS", 3, kArgumentLimit, [](const Given& given) { return TallyIfs(given).Mean(); },
     kPairsBehindFirst},
    {"CORREL", 2, 2, Correlation, kWholeArrays},
    {"COUNT", 1, kArgumentLimit, Count, kWholeArrays},
    {"COUNTA", 1, kArgumentLimit, CountAll, kWholeArrays},
    {"COUNTBLANK", 1, 1, CountBlank, kReferences},
    {"COUNTIF", 2, 2, CountIf, {0b10}},
    {"COUNTIFS", 2, kArgumentLimit, CountIf, {0xAAAAAAAA}},
    {"INTERCEPT", 2, 2, Intercept, kWholeArrays},
    {"LARGE", 2, 2, Nth<Larger>, {0b10, true}},
    {"MAX", 1, kArgumentLimit, Extreme<Larger>, kWholeArrays},
    {"MAXIFS", 3, kArgumentLimit, ExtremeIfs<Larger>, kPairsBehindFirst},
    {"MEDIAN", 1, kArgumentLimit, Median, kWholeArrays},
    {"MIN", 1, kArgumentLimit, Extreme<Smaller>, kWholeArrays},
    {"MINIFS", 3, kArgumentLimit, ExtremeIfs<Smaller>, kPairsBehindFirst},
    {"MODE", 1, kArgumentLimit, Mode, kWholeArrays},
    {"MODE.SNGL", 1, kArgumentLimit, Mode, kWholeArrays},
    {"PERCENTILE", 2, 2, Percentile<true>, {0b10, true}},
    {"PERCENTILE.EXC", 2, 2, Percentile<false>, {0b10, true}},
    {"PERCENTILE.INC", 2, 2, Percentile<true>, {0b10, true}},
    {"QUARTILE", 2, 2, Quartile<true>, {0b10, true}},
    {"QUARTILE.EXC", 2, 2, Quartile<false>, {0b10, true}},
    {"QUARTILE.INC", 2, 2, Quartile<true>, {0b10, true}},
    {"RANK", 2, 3, Rank, {0b101}},
    {"SLOPE", 2, 2, [](const Given& given) { return FiniteNumber(SlopeOf(MomentsOf(given))); }, kWholeArrays},
    {"SMALL", 2, 2, Nth<Smaller>, {0b10, true}},
    {"STDEV", 1, kArgumentLimit, Deviation<1>, kWholeArrays},
    {"STDEV.P", 1, kArgumentLimit, Deviation<0>, kWholeArrays},
    {"STDEV.S", 1, kArgumentLimit, Deviation<1>, kWholeArrays},
    {"SUMIF", 2, 3, [](const Given& given) { return FiniteNumber(TallyIf(given).sum); }, {0b10}, true},
    {"SUMIFS", 3, kArgumentLimit, [](const Given& given) { return FiniteNumber(TallyIfs(given).sum); },
     kPairsBehindFirst},
    {"VAR", 1, kArgumentLimit, Variance<1>, kWholeArrays},
    {"VAR.P", 1, kArgumentLimit, Variance<0>, kWholeArrays},
    {"VAR.S", 1, kArgumentLimit, Variance<1>, kWholeArrays},
});

}  // namespace

std::span<const Builtin> StatisticalFunctions() noexcept {
    return kFunctions;
}

}  // namespace excelhost
