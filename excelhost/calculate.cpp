#include "excelhost/calculate.h"

#include "excelhost/functions/functions.h"
#include "excelhost/numbers.h"

#include <algorithm>
#include <array>
#include <span>
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
    return PowerOf(a, b);
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
    if (step >= Step::Equal && step <= Step::GreaterOrEqual) return Holds(step, CompareScalars(left, right));
    double a = 0;
    double b = 0;
    if (const auto error = ToNumber(left, a)) return *error;
    if (const auto error = ToNumber(right, b)) return *error;
    return Arithmetic(step, a, b);
}

// Arrays that are taken element by element. What has one row or column serves for all of them; elements that only
// another one has are #N/A.
template <class Map>
Value Mapped(std::span<const Value* const> operands, Map map) {
    Array result{1, 1, {}};
    for (const Value* operand : operands) {
        const Array* array = operand->If<Array>();
        if (array == nullptr) continue;
        result.rows = std::max(result.rows, array->rows);
        result.columns = std::max(result.columns, array->columns);
    }
    if (result.rows > kMaterialLimit / result.columns) return ErrorValue{xlerrValue};
    static const Value absent = ErrorValue{xlerrNA};
    const auto element = [](const Value& value, std::size_t row, std::size_t column) -> const Value& {
        const Array* array = value.If<Array>();
        if (array == nullptr) return value;
        if (array->rows == 1) row = 0;
        if (array->columns == 1) column = 0;
        return row < array->rows && column < array->columns ? array->At(row, column) : absent;
    };
    std::vector<const Value*> elements(operands.size());
    result.cells.reserve(result.rows * result.columns);
    for (std::size_t row = 0; row < result.rows; ++row) {
        for (std::size_t column = 0; column < result.columns; ++column) {
            for (std::size_t i = 0; i < operands.size(); ++i)
                elements[i] = &element(*operands[i], row, column);
            result.cells.push_back(map(elements));
        }
    }
    return result;
}

Value Elementwise(Step step, const Value& left, const Value& right) {
    if (!left.Is<Array>() && !right.Is<Array>()) return Binary(step, left, right);
    const std::array operands = {&left, &right};
    return Mapped(operands,
                  [&](std::span<const Value* const> pair) { return Binary(step, *pair[0], *pair[1]); });
}

Value Chosen(const Value& condition, const Value& then, const Value& otherwise) {
    const std::array operands = {&condition, &then, &otherwise};
    return Mapped(operands, [](std::span<const Value* const> three) {
        bool truth = false;
        if (const auto error = ToTruth(*three[0], truth)) return Value(*error);
        return *three[truth ? 1 : 2];
    });
}

class StackMachine {
  public:
    StackMachine(const Formula& formula, const Cells& cells, const FunctionCaller& call)
        : formula_(formula), cells_(cells), call_(call) {}

    // The one value that the cell shows.
    Value Run() {
        Do();
        return Shown(PopScalar());
    }

    // All that the formula gives.
    Value RunWhole() {
        Do();
        Value value = cells_.Read(stack_.back());
        if (!value.Is<Array>()) return Shown(cells_.Scalar(value));
        for (Value& cell : std::get<Array>(value).cells) cell = Shown(cell);
        return value;
    }

  private:
    void Do() {
        const std::size_t steps = formula_.steps.size() - (formula_.endsInSum ? 1 : 0);
        for (std::size_t next = 0; next < steps;) next = Do(formula_.steps[next], next + 1);
        if (formula_.endsInSum) FinalSum(formula_.steps.back());
    }

    // Gives the number of the step to go on with.
    std::size_t Do(const FormulaStep& step, std::size_t next) {
        switch (step.step) {
            case Step::Push:
                stack_.push_back(step.value);
                break;
            case Step::Negate:
                Change(step, [](double number) { return -number; });
                break;
            case Step::Percent:
                Change(step, [](double number) { return number / 100; });
                break;
            case Step::Call:
                Call(step);
                break;
            case Step::Jump:
                // Both values of an array condition are wanted.
                return !arrayIfs_.empty() && arrayIfs_.back() == step.count ? next : step.count;
            case Step::Branch:
                return Branch(step, next);
            case Step::Select:
                if (!arrayIfs_.empty() && arrayIfs_.back() == next - 1) Select();
                break;
            default: {
                const Value right = PopOperand(step);
                const Value left = PopOperand(step);
                stack_.push_back(Elementwise(step.step, left, right));
            }
        }
        return next;
    }

    void FinalSum(const FormulaStep& step) {
        const Value right = PopOperand(step);
        const Value left = PopOperand(step);
        if (left.Is<Array>() || right.Is<Array>()) {
            stack_.push_back(Elementwise(step.step, left, right));
            return;
        }
        double a = 0;
        double b = 0;
        std::optional<ErrorValue> error = ToNumber(left, a);
        if (!error) error = ToNumber(right, b);
        stack_.push_back(error ? Value(*error)
                               : FiniteNumber(FinalDifference(a, step.step == Step::Add ? -b : b)));
    }

    template <class Operation>
    void Change(const FormulaStep& step, Operation operation) {
        const auto changed = [&](const Value& value) {
            double number = 0;
            const auto error = ToNumber(value, number);
            return error ? Value(*error) : Value(operation(number));
        };
        Value operand = PopOperand(step);
        if (Array* array = std::get_if<Array>(&operand)) {
            std::transform(array->cells.begin(), array->cells.end(), array->cells.begin(), changed);
            stack_.push_back(std::move(operand));
        } else {
            stack_.push_back(changed(operand));
        }
    }

    void Call(const FormulaStep& step) {
        const std::span<Value> arguments(stack_.data() + (stack_.size() - step.count), step.count);
        Value result = step.builtin == nullptr      ? call_(*step.value.If<Text>(), arguments)
                       : IsForEach(step, arguments) ? CalledForEach(*step.builtin, arguments)
                                                    : CallBuiltin(*step.builtin, arguments, cells_);
        stack_.resize(stack_.size() - step.count);
        stack_.push_back(std::move(result));
    }

    // Whether the function is to be called for each element of an argument of which it takes one value.
    [[nodiscard]] bool IsForEach(const FormulaStep& step, std::span<const Value> arguments) const {
        if (!step.wholeArrays) return false;
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            if (!step.builtin->takes.Single(i)) continue;
            if (arguments[i].Is<Array>()) return true;
            const auto range = cells_.Find(arguments[i]);
            if (range && (range->area.Rows() > 1 || range->area.Columns() > 1)) return true;
        }
        return false;
    }

    // Uses the arguments up.
    Value CalledForEach(const Builtin& builtin, std::span<Value> arguments) const {
        std::vector<Value> given(arguments.size());
        std::vector<std::size_t> places;
        std::vector<const Value*> operands;
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            if (!builtin.takes.Single(i)) {
                given[i] = std::move(arguments[i]);
                continue;
            }
            if (IsReference(arguments[i])) arguments[i] = cells_.Read(arguments[i]);
            places.push_back(i);
            operands.push_back(&arguments[i]);
        }
        return Mapped(operands, [&](std::span<const Value* const> elements) {
            for (std::size_t i = 0; i < places.size(); ++i) given[places[i]] = *elements[i];
            return cells_.Scalar(CallBuiltin(builtin, given, cells_));
        });
    }

    void Select() {
        arrayIfs_.pop_back();
        const Value otherwise = PopWhole();
        const Value then = PopWhole();
        const Value condition = PopWhole();
        stack_.push_back(Chosen(condition, then, otherwise));
    }

    std::size_t Branch(const FormulaStep& step, std::size_t next) {
        if (step.wholeArrays) {
            Value condition = PopWhole();
            const bool isArray = condition.Is<Array>();
            stack_.push_back(std::move(condition));
            if (isArray) {
                arrayIfs_.push_back(step.end);
                return next;
            }
        }
        bool truth = false;
        if (const auto error = ToTruth(PopScalar(), truth)) {
            stack_.emplace_back(*error);
            return step.end;
        }
        return truth ? next : step.count;
    }

    Value PopScalar() {
        Value value = cells_.Scalar(stack_.back());
        stack_.pop_back();
        return value;
    }
    Value PopOperand(const FormulaStep& step) { return step.wholeArrays ? PopWhole() : PopScalar(); }
    Value PopWhole() {
        Value value = cells_.Read(stack_.back());
        stack_.pop_back();
        return value;
    }

    static Value Shown(const Value& value) {
        if (value.Is<Empty>()) return 0.0;
        if (const int* whole = value.If<int>()) return static_cast<double>(*whole);
        return value;
    }

    const Formula& formula_;
    const Cells& cells_;
    const FunctionCaller& call_;
    std::vector<Value> stack_;
    std::vector<std::size_t> arrayIfs_;  // the ends of those that are under way
};

}  // namespace

Value CalculateFormula(const Formula& formula, const Cells& cells, const FunctionCaller& call) {
    return StackMachine(formula, cells, call).Run();
}

Value CalculateWhole(const Formula& formula, const Cells& cells, const FunctionCaller& call) {
    return StackMachine(formula, cells, call).RunWhole();
}

std::partial_ordering CompareScalars(const Value& left, const Value& right) {
    const Value a = InsteadOfEmpty(left, right);
    const Value b = InsteadOfEmpty(right, left);
    if (Rank(a) != Rank(b)) return Rank(a) <=> Rank(b);
    if (const auto* text = a.If<Text>()) return CompareTexts(*text, *b.If<Text>());
    double x = 0;
    double y = 0;
    (void)ToNumber(a, x);
    (void)ToNumber(b, y);
    return SameNumber(x, y) ? std::partial_ordering::equivalent : x <=> y;
}

}  // namespace excelhost
