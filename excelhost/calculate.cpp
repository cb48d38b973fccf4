#include "excelhost/calculate.h"

#include "excelhost/builtins.h"

#include <algorithm>
#include <cmath>
#include <compare>
#include <utility>
#include <vector>

namespace excelhost {
namespace {

Value Arithmetic(Step step, double a, double b) {
    switch (step) {
        case Step::Add:
            return FiniteNumber(a + b);
        case Step::Subtract:
            return FiniteNumber(a - b);
        case Step::Multiply:
            return FiniteNumber(a * b);
        case Step::Divide:
            return b == 0 ? Value(ErrorValue{xlerrDiv0}) : FiniteNumber(a / b);
        default:
            break;
    }
    if (a == 0 && b == 0) return ErrorValue{xlerrNum};
    if (a == 0 && b < 0) return ErrorValue{xlerrDiv0};
    return FiniteNumber(std::pow(a, b));
}

constexpr WCHAR Folded(WCHAR unit) {
    return unit >= 'a' && unit <= 'z' ? static_cast<WCHAR>(unit - ('a' - 'A')) : unit;
}

// Numbers come before text, text before booleans.
int Rank(const Value& value) {
    return value.Is<bool>() ? 2 : value.Is<Text>() ? 1 : 0;
}

// An empty cell is the 0, the "" or the FALSE of what it is compared with.
Value InsteadOfEmpty(const Value& value, const Value& other) {
    if (!value.Is<Empty>()) return value;
    if (other.Is<Text>()) return Text();
    if (other.Is<bool>()) return false;
    return 0.0;
}

std::partial_ordering Compare(const Value& left, const Value& right) {
    const Value a = InsteadOfEmpty(left, right);
    const Value b = InsteadOfEmpty(right, left);
    if (Rank(a) != Rank(b)) return Rank(a) <=> Rank(b);
    if (const auto* text = a.If<Text>()) {
        const Text& other = *b.If<Text>();
        return std::lexicographical_compare_three_way(
            text->begin(), text->end(), other.begin(), other.end(),
            [](WCHAR x, WCHAR y) { return Folded(x) <=> Folded(y); });
    }
    double x = 0;
    double y = 0;
    (void)ToNumber(a, x);
    (void)ToNumber(b, y);
    return x <=> y;
}

bool Holds(Step step, std::partial_ordering order) {
    switch (step) {
        case Step::Equal:
            return std::is_eq(order);
        case Step::NotEqual:
            return std::is_neq(order);
        case Step::Less:
            return std::is_lt(order);
        case Step::LessOrEqual:
            return std::is_lteq(order);
        case Step::Greater:
            return std::is_gt(order);
        default:
            return std::is_gteq(order);
    }
}

Value Concatenated(const Value& left, const Value& right) {
    Text a;
    Text b;
    if (const auto error = ToText(left, a)) return *error;
    if (const auto error = ToText(right, b)) return *error;
    if (a.size() + b.size() > kTextLimit) return ErrorValue{xlerrValue};
    return a += b;
}

Value Binary(Step step, const Value& left, const Value& right) {
    if (left.Is<ErrorValue>()) return left;
    if (right.Is<ErrorValue>()) return right;
    if (step == Step::Concatenate) return Concatenated(left, right);
    if (step >= Step::Equal && step <= Step::GreaterOrEqual) return Holds(step, Compare(left, right));
    double a = 0;
    double b = 0;
    if (const auto error = ToNumber(left, a)) return *error;
    if (const auto error = ToNumber(right, b)) return *error;
    return Arithmetic(step, a, b);
}

class StackMachine {
  public:
    StackMachine(const Formula& formula, Place place, const Grid& grid, const FunctionCaller& call)
        : formula_(formula), place_(place), grid_(grid), call_(call) {}

    Value Run() {
        for (std::size_t next = 0; next < formula_.steps.size();) next = Do(formula_.steps[next], next + 1);
        return Shown(PopScalar());
    }

  private:
    // Gives the number of the step to go on with.
    std::size_t Do(const FormulaStep& step, std::size_t next) {
        switch (step.step) {
            case Step::Push:
                stack_.push_back(step.value);
                break;
            case Step::Negate:
                Change([](double number) { return -number; });
                break;
            case Step::Percent:
                Change([](double number) { return number / 100; });
                break;
            case Step::Call:
                Call(step);
                break;
            case Step::Jump:
                return step.count;
            case Step::Branch:
                return Branch(step, next);
            default: {
                const Value right = PopScalar();
                const Value left = PopScalar();
                stack_.push_back(Binary(step.step, left, right));
            }
        }
        return next;
    }

    template <class Operation>
    void Change(Operation operation) {
        double number = 0;
        const auto error = ToNumber(PopScalar(), number);
        stack_.push_back(error ? Value(*error) : Value(operation(number)));
    }

    void Call(const FormulaStep& step) {
        const std::span<const Value> arguments(stack_.data() + (stack_.size() - step.count), step.count);
        const Builtin* builtin = FindBuiltin(step.name);
        Value result =
            builtin != nullptr ? builtin->calculate(arguments, grid_, place_) : call_(step.name, arguments);
        stack_.resize(stack_.size() - step.count);
        stack_.push_back(std::move(result));
    }

    std::size_t Branch(const FormulaStep& step, std::size_t next) {
        bool truth = false;
        if (const auto error = ToTruth(PopScalar(), truth)) {
            stack_.emplace_back(*error);
            return step.end;
        }
        return truth ? next : step.count;
    }

    Value PopScalar() {
        Value value = grid_.Scalar(stack_.back(), place_);
        stack_.pop_back();
        return value;
    }

    static Value Shown(const Value& value) {
        if (value.Is<Empty>()) return 0.0;
        if (const int* whole = value.If<int>()) return static_cast<double>(*whole);
        return value;
    }

    const Formula& formula_;
    Place place_;
    const Grid& grid_;
    const FunctionCaller& call_;
    std::vector<Value> stack_;
};

}  // namespace

Value CalculateFormula(const Formula& formula, Place place, const Grid& grid, const FunctionCaller& call) {
    return StackMachine(formula, place, grid, call).Run();
}

}  // namespace excelhost
