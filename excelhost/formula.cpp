#include "excelhost/formula.h"

#include "excelhost/builtins.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace excelhost {
namespace {

struct Operator {
    TextView sign;
    int rank;
    Step step;
};
// Longer signs first, so that "<=" isn't read as "<".
constexpr auto kOperators = std::to_array<Operator>({
    {TEXT("<="), 1, Step::LessOrEqual},
    {TEXT(">="), 1, Step::GreaterOrEqual},
    {TEXT("<>"), 1, Step::NotEqual},
    {TEXT("<"), 1, Step::Less},
    {TEXT(">"), 1, Step::Greater},
    {TEXT("="), 1, Step::Equal},
    {TEXT("&"), 2, Step::Concatenate},
    {TEXT("+"), 3, Step::Add},
    {TEXT("-"), 3, Step::Subtract},
    {TEXT("*"), 4, Step::Multiply},
    {TEXT("/"), 4, Step::Divide},
    {TEXT("^"), 5, Step::Power},
});

constexpr bool IsDigit(WCHAR unit) {
    return unit >= '0' && unit <= '9';
}
constexpr bool IsLetter(WCHAR unit) {
    return (unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z');
}
constexpr bool BeginsWord(WCHAR unit) {
    return IsLetter(unit) || unit == '_' || unit == '$' || unit >= 0x80;
}
constexpr bool ContinuesWord(WCHAR unit) {
    return BeginsWord(unit) || IsDigit(unit) || unit == '.';
}

// "A1" with or without "$" ahead of either part.
bool ReadCell(TextView word, Place& place) {
    const auto take = [&](WCHAR unit) {
        return word.starts_with(unit) ? (word.remove_prefix(1), true) : false;
    };
    take('$');
    COL column = 0;
    while (!word.empty() && IsLetter(word.front()) && column <= kColumnLimit) {
        column = column * 26 + ((word.front() | 0x20) - 'a') + 1;
        word.remove_prefix(1);
    }
    take('$');
    RW row = 0;
    while (!word.empty() && IsDigit(word.front()) && row <= kRowLimit) {
        row = row * 10 + (word.front() - '0');
        word.remove_prefix(1);
    }
    place = {row - 1, column - 1};
    return word.empty() && row >= 1 && row <= kRowLimit && column >= 1 && column <= kColumnLimit;
}

class FormulaParser {
  public:
    explicit FormulaParser(TextView text) : text_(text) {}

    Formula Parse() {
        if (text_.size() > kFormulaLimit)
            throw FaultAt(kFormulaLimit, "the formula has more than 8192 characters");
        if (!text_.starts_with(WCHAR{'='})) throw FaultAt(0, "a formula begins with '='");
        next_ = 1;
        Expression();
        if (!AtEnd()) throw FaultAt(next_, "an operator or the end of the formula is expected");
        return std::move(formula_);
    }

  private:
    static FormulaFault FaultAt(std::size_t index, const std::string& message) {
        return {index + 1, message};
    }

    void Expression() {
        if (++nesting_ > kNestingLimit + 1)
            throw FaultAt(next_, "the formula is nested deeper than 64 levels");
        Operators(1);
        --nesting_;
    }

    // Operators of at least this rank, between operands.
    void Operators(int lowest) {
        SignedOperand();
        for (const Operator* next = PeekOperator(); next != nullptr && next->rank >= lowest;
             next = PeekOperator()) {
            const std::size_t position = next_;
            next_ += next->sign.size();
            Operators(next->rank + 1);
            Emit(next->step, position);
        }
    }

    // Signs in front bind closer than the percent signs behind. A plus does nothing.
    void SignedOperand() {
        std::vector<std::size_t> minuses;
        for (;; ++next_) {
            SkipSpace();
            if (Peek() == '-') {
                minuses.push_back(next_);
            } else if (Peek() != '+') {
                break;
            }
        }
        Operand();
        for (const std::size_t position : minuses) Emit(Step::Negate, position);
        for (SkipSpace(); Peek() == '%'; SkipSpace()) Emit(Step::Percent, next_++);
    }

    void Operand() {
        const std::size_t position = next_;
        if (AtEnd()) throw FaultAt(next_, "an operand is expected");
        const WCHAR unit = Peek();
        if (unit == '"') return TextLiteral();
        if (unit == '#') return ErrorLiteral();
        if (IsDigit(unit) || unit == '.') return NumberLiteral();
        if (BeginsWord(unit)) return Word();
        if (!Take('('))
            throw FaultAt(next_, "an operand is expected, not '" + Utf8(text_.substr(next_, 1)) + "'");
        Expression();
        if (!Take(')')) throw FaultAt(position, "the parenthesis isn't closed");
    }

    void TextLiteral() {
        const std::size_t position = next_++;
        Text value;
        for (;;) {
            const std::size_t end = text_.find(WCHAR{'"'}, next_);
            if (end == TextView::npos) throw FaultAt(position, "the text isn't closed");
            value += text_.substr(next_, end - next_);
            next_ = end + 1;
            if (Peek() != '"') break;
            value += WCHAR{'"'};
            ++next_;
        }
        Push(std::move(value), position);
    }

    void ErrorLiteral() {
        constexpr std::size_t longest = 13;
        for (std::size_t length = longest; length > 1; --length) {
            const int number = ErrorNumber(Utf8(text_.substr(next_, length)));
            if (number < 0) continue;
            Push(ErrorValue{number}, next_);
            next_ += std::min(length, text_.size() - next_);
            return;
        }
        throw FaultAt(next_, "no error value has this name");
    }

    void NumberLiteral() {
        const std::size_t position = next_;
        const auto digits = [&] {
            while (IsDigit(Peek())) ++next_;
        };
        digits();
        if (Peek() == '.') ++next_;
        digits();
        if (Peek() == 'E' || Peek() == 'e') {
            ++next_;
            if (Peek() == '+' || Peek() == '-') ++next_;
            digits();
        }
        double number = 0;
        if (!ReadNumber(Utf8(text_.substr(position, next_ - position)), number))
            throw FaultAt(position, "a bad number");
        Push(number, position);
    }

    void Word() {
        const std::size_t position = next_;
        const TextView word = TakeWord();
        Place first;
        if (Take('(')) {
            Call(word, position);
        } else if (ReadCell(word, first)) {
            Push(AreaFrom(first), position);
        } else if (SameName(word, TEXT("TRUE")) || SameName(word, TEXT("FALSE"))) {
            Push(SameName(word, TEXT("TRUE")), position);
        } else {
            throw FaultAt(position, "'" + Utf8(word) + "' is no cell of a sheet");
        }
    }

    // The cell alone, or the area up to the cell behind a colon; corners may come in any order.
    Area AreaFrom(Place first) {
        Place last = first;
        if (Take(':')) {
            SkipSpace();
            const std::size_t position = next_;
            if (!ReadCell(TakeWord(), last)) throw FaultAt(position, "a cell is expected behind ':'");
        }
        return Area{{std::min(first.row, last.row), std::max(first.row, last.row),
                     std::min(first.column, last.column), std::max(first.column, last.column)}};
    }

    void Call(TextView name, std::size_t position) {
        const bool isIf = SameName(name, TEXT("IF"));
        std::size_t branch = 0;
        std::size_t jump = 0;
        std::size_t count = 0;
        if (!Take(')')) {
            do {
                Argument();
                if (isIf && count == 0) branch = Emit(Step::Branch, position);
                if (isIf && count == 1) {
                    jump = Emit(Step::Jump, position);
                    formula_.steps[branch].count = formula_.steps.size();
                }
                ++count;
            } while (Take(','));
            if (!Take(')')) throw FaultAt(position, "the parenthesis of '" + Utf8(name) + "' isn't closed");
        }
        CheckCount(name, count, position);
        if (!isIf) {
            FormulaStep& call = formula_.steps[Emit(Step::Call, position)];
            call.name = name;
            call.count = count;
            return;
        }
        if (count == 2) Push(false, position);
        formula_.steps[branch].end = formula_.steps.size();
        formula_.steps[jump].count = formula_.steps.size();
    }

    void Argument() {
        SkipSpace();
        if (Peek() == ',' || Peek() == ')') {
            Push(Missing{}, next_);
        } else {
            Expression();
        }
    }

    static void CheckCount(TextView name, std::size_t count, std::size_t position) {
        const Builtin* builtin = FindBuiltin(name);
        const bool isIf = SameName(name, TEXT("IF"));
        const std::size_t fewest = isIf ? 2 : builtin != nullptr ? builtin->fewest : 0;
        const std::size_t most = isIf ? 3 : builtin != nullptr ? builtin->most : kArgumentLimit;
        if (count < fewest)
            throw FaultAt(position,
                          "'" + Utf8(name) + "' takes at least " + std::to_string(fewest) + " arguments");
        if (count > most)
            throw FaultAt(position,
                          "'" + Utf8(name) + "' takes at most " + std::to_string(most) + " arguments");
    }

    std::size_t Emit(Step step, std::size_t position) {
        formula_.steps.push_back({step, {}, {}, 0, 0, position + 1});
        return formula_.steps.size() - 1;
    }
    void Push(Value value, std::size_t position) {
        formula_.steps[Emit(Step::Push, position)].value = std::move(value);
    }

    const Operator* PeekOperator() {
        SkipSpace();
        for (const Operator& candidate : kOperators) {
            if (text_.substr(next_).starts_with(candidate.sign)) return &candidate;
        }
        return nullptr;
    }
    TextView TakeWord() {
        const std::size_t begin = next_;
        while (!AtEndUnit() && ContinuesWord(Peek())) ++next_;
        return text_.substr(begin, next_ - begin);
    }
    bool Take(WCHAR wanted) {
        SkipSpace();
        return !AtEndUnit() && Peek() == wanted ? (++next_, true) : false;
    }
    void SkipSpace() {
        while (Peek() == ' ' || Peek() == '\t' || Peek() == '\r' || Peek() == '\n') ++next_;
    }
    [[nodiscard]] WCHAR Peek() const { return AtEndUnit() ? WCHAR{} : text_[next_]; }
    [[nodiscard]] bool AtEndUnit() const { return next_ >= text_.size(); }
    bool AtEnd() { return SkipSpace(), AtEndUnit(); }

    TextView text_;
    std::size_t next_ = 0;
    int nesting_ = 0;
    Formula formula_;
};

}  // namespace

Formula ParseFormula(TextView text) {
    return FormulaParser(text).Parse();
}

bool ReadNumber(std::string_view text, double& number) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    if (text.empty() || text.find_first_not_of("0123456789.eE+-") != std::string_view::npos) return false;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size();
}

}  // namespace excelhost
