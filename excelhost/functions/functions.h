// The worksheet functions that the simulated Excel calculates by itself: one file a family, each with its table
// at the end. A new function is one line there and the operation that it names.
#pragma once

#include "excelhost/grid.h"
#include "excelhost/value.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace excelhost {

// What a function is called with. Reading an argument as what it isn't ends the call with an error value, which
// travels as an ErrorFound.
struct ErrorFound {
    ErrorValue error;
};

class Given {
  public:
    Given(std::span<const Value> arguments, const Cells& cells) noexcept
        : arguments_(arguments), cells_(cells) {}

    [[nodiscard]] std::size_t Count() const noexcept { return arguments_.size(); }
    [[nodiscard]] bool Has(std::size_t i) const noexcept { return i < arguments_.size(); }
    // As it stands: references, arrays and missing ones among them.
    [[nodiscard]] const Value& Raw(std::size_t i) const noexcept { return arguments_[i]; }
    [[nodiscard]] std::span<const Value> All() const noexcept { return arguments_; }
    [[nodiscard]] const Cells& Sheets() const noexcept { return cells_; }

    // One value, an error perhaps; the value of a cell for a reference.
    [[nodiscard]] Value Any(std::size_t i) const { return cells_.Scalar(arguments_[i]); }
    // One value; an error ends the call.
    [[nodiscard]] Value Scalar(std::size_t i) const;
    [[nodiscard]] double Number(std::size_t i) const;
    [[nodiscard]] double Number(std::size_t i, double leftOut) const { return Has(i) ? Number(i) : leftOut; }
    [[nodiscard]] bool Truth(std::size_t i) const;
    [[nodiscard]] bool Truth(std::size_t i, bool leftOut) const { return Has(i) ? Truth(i) : leftOut; }
    [[nodiscard]] Text String(std::size_t i) const;
    // A number without its fraction; #VALUE! below `lowest`.
    [[nodiscard]] std::size_t Whole(std::size_t i, std::size_t lowest) const;
    [[nodiscard]] std::size_t Whole(std::size_t i, std::size_t lowest, std::size_t leftOut) const {
        return Has(i) ? Whole(i, lowest) : leftOut;
    }
    // A rectangle of cells; #VALUE! for anything else.
    [[nodiscard]] Cells::Range Range(std::size_t i) const;
    // A rectangle of values: the cells of a reference (of whole columns and rows those that Cells::Bounded gives),
    // the elements of an array, one value alone.
    [[nodiscard]] Array Table(std::size_t i) const;
    // Its rows and columns.
    struct Size {
        std::size_t rows = 1;
        std::size_t columns = 1;
        friend bool operator==(const Size&, const Size&) = default;
    };
    [[nodiscard]] Size SizeOf(std::size_t i) const;

    // Calls `use` with each number, by the rule that the aggregates share: cells and elements of arrays count
    // when they hold numbers, an argument given as itself counts when it can be read as one. Errors end the call.
    template <class Use>
    void EachNumber(std::size_t i, Use use) const {
        const auto take = [&](const Value& cell) {
            if (const auto* number = cell.If<double>()) {
                use(*number);
            } else if (const auto* error = cell.If<ErrorValue>()) {
                throw ErrorFound{*error};
            } else if (const auto* whole = cell.If<int>()) {
                use(static_cast<double>(*whole));
            }
            return true;
        };
        if (const Array* array = arguments_[i].If<Array>()) {
            for (const Value& cell : array->cells) take(cell);
        } else if (IsReference(arguments_[i])) {
            const Cells::Range range = Range(i);
            range.grid->Each(range.area, take);
        } else {
            use(Number(i));
        }
    }
    template <class Use>
    void EachNumber(Use use) const {
        for (std::size_t i = 0; i < Count(); ++i) EachNumber(i, use);
    }
    // Calls `use` with each cell of a reference up to the sheet's last, each element of an array, or the value.
    template <class Use>
    void EachValue(std::size_t i, Use use) const {
        const auto take = [&](const Value& cell) { return use(cell), true; };
        if (const Array* array = arguments_[i].If<Array>()) {
            for (const Value& cell : array->cells) use(cell);
        } else if (IsReference(arguments_[i])) {
            const Cells::Range range = Range(i);
            range.grid->Each(range.area, take);
        } else {
            use(Any(i));
        }
    }

  private:
    std::span<const Value> arguments_;
    const Cells& cells_;
};

[[noreturn]] inline void Fail(int error) {
    throw ErrorFound{ErrorValue{error}};
}

// How a function takes its arguments: by default one value of each.
struct TakesArguments {
    // A bit for each of which it takes one value, from the first on; the last two bits go on by turns. Among array
    // operators the function is called for each element of those. All others are handed on as they stand.
    std::uint32_t single = ~std::uint32_t{0};
    bool wholeArrays = false;  // operators in its arguments take arrays element by element

    [[nodiscard]] bool Single(std::size_t i) const noexcept {
        return (single >> (i < 32 ? i : 30 + i % 2) & 1) != 0;
    }
};
inline constexpr TakesArguments kSingleValues{};
inline constexpr TakesArguments kWholeArrays{0, true};
inline constexpr TakesArguments kReferences{0, false};

struct Builtin {
    std::string_view name;  // in upper case
    std::size_t fewest;
    std::size_t most;
    Value (*calculate)(const Given& given);
    TakesArguments takes = kSingleValues;
    bool looksFurther = false;  // at cells beside those that its arguments name
    bool findsCells = false;    // which ones shows in the calculation only
};

// The families.
[[nodiscard]] std::span<const Builtin> DateFunctions() noexcept;
[[nodiscard]] std::span<const Builtin> FinancialFunctions() noexcept;
[[nodiscard]] std::span<const Builtin> InformationFunctions() noexcept;
[[nodiscard]] std::span<const Builtin> LogicalFunctions() noexcept;
[[nodiscard]] std::span<const Builtin> LookupFunctions() noexcept;
[[nodiscard]] std::span<const Builtin> MathFunctions() noexcept;
[[nodiscard]] std::span<const Builtin> StatisticalFunctions() noexcept;
[[nodiscard]] std::span<const Builtin> TextFunctions() noexcept;

// Null for a name that none of them has, IF included, which is control flow. Case doesn't matter.
[[nodiscard]] const Builtin* FindBuiltin(TextView name);
// The names of all, IF included, in alphabetical order.
[[nodiscard]] std::vector<std::string_view> BuiltinNames();

// A call; what ends it early is its value.
[[nodiscard]] Value CallBuiltin(const Builtin& builtin, std::span<const Value> arguments, const Cells& cells);

}  // namespace excelhost
