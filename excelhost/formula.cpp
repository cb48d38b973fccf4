#include "excelhost/formula.h"

#include "excelhost/functions/functions.h"
#include "excelhost/numbers.h"

#include <algorithm>
#include <array>
#include <optional>
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

constexpr bool BeginsWord(WCHAR unit) {
    return IsLetter(unit) || unit == '_' || unit == '$' || unit >= 0x80;
}
constexpr bool ContinuesWord(WCHAR unit) {
    return BeginsWord(unit) || IsDigit(unit) || unit == '.';
}

// A corner of an area: "A1", or "A" or "1" for a whole column or row, with or without "$" ahead of each part.
struct Corner {
    RW row = -1;
    COL column = -1;
    [[nodiscard]] bool IsCell() const { return row >= 0 && column >= 0; }
};
std::optional<Corner> ReadCorner(TextView word) {
    const auto take = [&](WCHAR unit) {
        return word.starts_with(unit) ? (word.remove_prefix(1), true) : false;
    };
    const bool marked = take('$');
    COL column = 0;
    while (!word.empty() && IsLetter(word.front()) && column <= kColumnLimit) {
        column = column * 26 + ((word.front() | 0x20) - 'a') + 1;
        word.remove_prefix(1);
    }
    if ((column > 0 || !marked) && take('$') && (word.empty() || !IsDigit(word.front()))) return std::nullopt;
    RW row = 0;
    const bool hasRow = !word.empty();
    while (!word.empty() && IsDigit(word.front()) && row <= kRowLimit) {
        row = row * 10 + (word.front() - '0');
        word.remove_prefix(1);
    }
    const bool good = word.empty() && row <= kRowLimit && column <= kColumnLimit && (row > 0) == hasRow &&
                      (row > 0 || column > 0);
    return good ? std::optional(Corner{row - 1, column - 1}) : std::nullopt;
}

class FormulaParser {
  public:
    FormulaParser(TextView text, std::span<const Text> sheets, ArrayRule rule)
        : text_(text), sheets_(sheets), wholeArrays_(rule == ArrayRule::Whole) {}

    Formula Parse() {
        if (text_.size() > kFormulaLimit)
            throw FaultAt(kFormulaLimit, "the formula has more than 8192 characters");
        if (!text_.starts_with(WCHAR{'='})) throw FaultAt(0, "a formula begins with '='");
        next_ = 1;
        Expression();
        if (!AtEnd()) throw FaultAt(next_, "an operator or the end of the formula is expected");
        const Step last = formula_.steps.back().step;
        formula_.endsInSum =
            outermost_ == formula_.steps.size() && (last == Step::Add || last == Step::Subtract);
        formula_.steps.shrink_to_fit();
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
            next_ += next->sign.size();
            Operators(next->rank + 1);
            Emit(next->step);
            if (nesting_ == 1) outermost_ = formula_.steps.size();
        }
    }

    // Signs in front bind closer than the percent signs behind. A plus does nothing.
    void SignedOperand() {
        std::size_t minuses = 0;
        for (;; ++next_) {
            SkipSpace();
            if (Peek() == '-') {
                ++minuses;
            } else if (Peek() != '+') {
                break;
            }
        }
        Operand();
        for (; minuses > 0; --minuses) Emit(Step::Negate);
        for (SkipSpace(); Peek() == '%'; SkipSpace(), ++next_) Emit(Step::Percent);
    }

    void Operand() {
        const std::size_t position = next_;
        if (AtEnd()) throw FaultAt(next_, "an operand is expected");
        const WCHAR unit = Peek();
        if (unit == '"') return TextLiteral();
        if (unit == '#') return ErrorLiteral();
        if (unit == '\'') return QuotedSheet();
        if (IsDigit(unit) &&
            text_[std::min(text_.find_first_not_of(TEXT("0123456789"), next_), text_.size() - 1)] == ':')
            return Word();
        if (IsDigit(unit) || unit == '.') return NumberLiteral();
        if (BeginsWord(unit)) return Word();
        if (!Take('('))
            throw FaultAt(next_, "an operand is expected, not '" + Excerpt(text_.substr(next_, 1)) + "'");
        Expression();
        if (!Take(')')) throw FaultAt(position, "the parenthesis isn't closed");
    }

    void TextLiteral() {
        const std::size_t position = next_++;
        Push(TakeQuoted('"', position, "the text isn't closed"));
    }

    // What stands ahead of the closing quote; two quotes are one.
    Text TakeQuoted(WCHAR quote, std::size_t position, const char* unclosed) {
        Text value;
        for (;;) {
            const std::size_t end = text_.find(quote, next_);
            if (end == TextView::npos) throw FaultAt(position, unclosed);
            value += text_.substr(next_, end - next_);
            next_ = end + 1;
            if (Peek() != quote) return value;
            value += quote;
            ++next_;
        }
    }

    void ErrorLiteral() {
        constexpr std::size_t longest = 13;
        for (std::size_t length = longest; length > 1; --length) {
            const int number = ErrorNumber(Utf8(text_.substr(next_, length)));
            if (number < 0) continue;
            Push(ErrorValue{number});
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
        Push(number);
    }

    void Word() {
        const std::size_t position = next_;
        const TextView word = TakeWord();
        if (Take('(')) {
            Call(word, position);
        } else if (Take('!')) {
            OnSheet(word, position);
        } else if (SameName(word, TEXT("TRUE")) || SameName(word, TEXT("FALSE"))) {
            Push(SameName(word, TEXT("TRUE")));
        } else {
            Push(AreaFrom(word, position));
        }
    }

    void QuotedSheet() {
        const std::size_t position = next_++;
        const Text name = TakeQuoted('\'', position, "the name of the sheet isn't closed");
        if (!Take('!')) throw FaultAt(next_, "'!' is expected behind the name of a sheet");
        OnSheet(name, position);
    }

    void OnSheet(TextView name, std::size_t position) {
        const auto found = std::find_if(sheets_.begin(), sheets_.end(),
                                        [&](const Text& sheet) { return SameName(sheet, name); });
        if (found == sheets_.end()) throw FaultAt(position, "there is no sheet '" + Excerpt(name) + "'");
        SkipSpace();
        const std::size_t begin = next_;
        const Area area = AreaFrom(TakeWord(), begin);
        Push(Reference{static_cast<IDSHEET>(found - sheets_.begin()) + 1, {area}});
    }

    // The cell alone, or the area up to the corner behind a colon; corners may come in any order.
    Area AreaFrom(TextView word, std::size_t position) {
        const auto first = ReadCorner(word);
        auto last = first;
        if (first && Take(':')) {
            SkipSpace();
            const std::size_t begin = next_;
            last = ReadCorner(TakeWord());
            if (!last || (last->row < 0) != (first->row < 0) || (last->column < 0) != (first->column < 0))
                throw FaultAt(begin, "a cell is expected behind ':'");
        } else if (!first || !first->IsCell()) {
            throw FaultAt(position, "'" + Excerpt(word) + "' is no cell of a sheet");
        }
        Area area{{std::min(first->row, last->row), std::max(first->row, last->row),
                   std::min(first->column, last->column), std::max(first->column, last->column)}};
        XLREF12& r = area.rectangle;
        if (r.rwFirst < 0) r.rwFirst = 0, r.rwLast = kRowLimit - 1;
        if (r.colFirst < 0) r.colFirst = 0, r.colLast = kColumnLimit - 1;
        return area;
    }

    void Call(TextView name, std::size_t position) {
        const bool isIf = SameName(name, TEXT("IF"));
        const Builtin* builtin = isIf ? nullptr : FindBuiltin(name);
        const bool outerArrays =
            std::exchange(wholeArrays_, wholeArrays_ || (builtin && builtin->takes.wholeArrays));
        std::size_t branch = 0;
        std::size_t jump = 0;
        std::size_t count = 0;
        if (!Take(')')) {
            do {
                Argument();
                if (isIf && count == 0) branch = Emit(Step::Branch);
                if (isIf && count == 1) {
                    jump = Emit(Step::Jump);
                    formula_.steps[branch].count = Here();
                }
                ++count;
            } while (Take(','));
            if (!Take(')'))
                throw FaultAt(position, "the parenthesis of '" + Excerpt(name) + "' isn't closed");
        }
        const bool inArrays = std::exchange(wholeArrays_, outerArrays);
        const std::size_t fewest = isIf ? 2 : builtin != nullptr ? builtin->fewest : 0;
        const std::size_t most = isIf ? 3 : builtin != nullptr ? builtin->most : kArgumentLimit;
        CheckCount(name, count, fewest, most, position);
        if (!isIf) {
            FormulaStep& call = formula_.steps[Emit(Step::Call)];
            call.builtin = builtin;
            if (builtin == nullptr) call.value = Text(name);
            call.count = static_cast<std::uint16_t>(count);
            return;
        }
        if (count == 2) Push(false);
        formula_.steps[branch].end = Here();
        formula_.steps[jump].count = Here();
        if (inArrays) Emit(Step::Select);
    }

    void Argument() {
        SkipSpace();
        if (Peek() == ',' || Peek() == ')') {
            Push(Missing{});
        } else {
            Expression();
        }
    }

    static void CheckCount(TextView name, std::size_t count, std::size_t fewest, std::size_t most,
                           std::size_t position) {
        if (count >= fewest && count <= most) return;
        const std::size_t limit = count < fewest ? fewest : most;
        throw FaultAt(position, "'" + Excerpt(name) + "' takes " +
                                    (count < fewest ? "at least " : "at most ") + std::to_string(limit) +
                                    (limit == 1 ? " argument" : " arguments"));
    }

    std::size_t Emit(Step step) {
        FormulaStep emitted;
        emitted.step = step;
        emitted.wholeArrays = wholeArrays_;
        formula_.steps.push_back(std::move(emitted));
        return formula_.steps.size() - 1;
    }
    void Push(Value value) { formula_.steps[Emit(Step::Push)].value = std::move(value); }
    [[nodiscard]] std::uint16_t Here() const { return static_cast<std::uint16_t>(formula_.steps.size()); }

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
    std::span<const Text> sheets_;
    std::size_t next_ = 0;
    int nesting_ = 0;
    bool wholeArrays_;
    std::size_t outermost_ = 0;  // the number of steps behind the last operator outside of parentheses
    Formula formula_;
};

}  // namespace

Formula ParseFormula(TextView text, std::span<const Text> sheets, ArrayRule rule) {
    return FormulaParser(text, sheets, rule).Parse();
}

}  // namespace excelhost
