#include "msformat.h"

#include "msformatfields.h"

#include <iterator>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

namespace {

using namespace msformat::fields;
using msformat::Argument;

// What a conversion takes.
enum class Takes { Nothing, Signed, Unsigned, Floating, Character, Text, Pointer, Ignored };

template <typename Unit>
Takes TakenBy(Unit conversion) noexcept {
    static constexpr std::pair<std::string_view, Takes> kinds[] = {
        {"di", Takes::Signed},    {"uoxX", Takes::Unsigned}, {"eEfFgGaA", Takes::Floating},
        {"cC", Takes::Character}, {"sS", Takes::Text},       {"p", Takes::Pointer},
        {"n", Takes::Ignored},
    };
    for (const auto& [letters, takes] : kinds) {
        if (std::find(letters.begin(), letters.end(), conversion) != letters.end()) return takes;
    }
    return Takes::Nothing;
}

// The arguments of a caller that tells nothing of their types. Passed on by reference: on some systems a
// va_list is an array, on others it isn't.
class ListedArguments {
  public:
    explicit ListedArguments(va_list list) { va_copy(list_, list); }
    ~ListedArguments() { va_end(list_); }
    ListedArguments(const ListedArguments&) = delete;
    ListedArguments& operator=(const ListedArguments&) = delete;

    int NextInt() noexcept { return Next<int>(); }

    template <typename Unit>
    std::optional<Argument> NextFor(const Specification<Unit>& specification, Takes takes) noexcept {
        const Size size = specification.size;
        const bool isLong = size == Size::bits64 || (size == Size::pointer && sizeof(void*) == 8);
        switch (takes) {
            case Takes::Signed:
                return isLong ? Argument(Next<std::int64_t>()) : Argument(Next<int>());
            case Takes::Unsigned:
                return isLong ? Argument(Next<std::uint64_t>()) : Argument(Next<unsigned>());
            case Takes::Floating:
                return size == Size::longDouble ? Argument(Next<long double>()) : Argument(Next<double>());
            case Takes::Character:
                return Next<int>();
            case Takes::Text:
                return TakesWide(specification) ? Argument(Next<const WCHAR*>())
                                                : Argument(Next<const char*>());
            default:
                return Next<const void*>();
        }
    }

  private:
    template <typename Type>
    Type Next() noexcept {
        return va_arg(list_, Type);
    }

    va_list list_;
};

bool CanTake(Takes takes, const Argument& argument) noexcept {
    using Kind = Argument::Kind;
    const bool isWhole = argument.kind == Kind::Whole, isPointer = argument.kind == Kind::Pointer;
    const bool isText = argument.kind == Kind::Narrow || argument.kind == Kind::Wide;
    switch (takes) {
        case Takes::Signed:
        case Takes::Unsigned:
        case Takes::Character:
            return isWhole;
        case Takes::Floating:
            return isWhole || argument.kind == Kind::Floating;
        case Takes::Text:
            return isText || (isPointer && argument.pointer == nullptr);
        case Takes::Pointer:
            return isText || isPointer;
        default:
            return true;
    }
}

// Arguments that know their types.
class TypedArguments {
  public:
    explicit TypedArguments(std::span<const Argument> row) noexcept : row_(row) {}

    // A width or a precision.
    int NextInt() noexcept {
        const std::optional<Argument> next = Next();
        if (!next || next->kind != Argument::Kind::Whole) return 0;
        constexpr std::int64_t most = std::numeric_limits<int>::max();
        return static_cast<int>(std::clamp(next->whole, -most, most));
    }

    // Where the conversion asked for can't take the argument, it becomes the one of the argument's own kind.
    template <typename Unit>
    std::optional<Argument> NextFor(Specification<Unit>& specification, Takes& takes) noexcept {
        const std::optional<Argument> next = Next();
        if (next && !CanTake(takes, *next)) {
            constexpr char ofKind[] = {'d', 'g', 's', 's', 'p'};
            const bool isUnsigned = next->kind == Argument::Kind::Whole && !next->isSigned;
            const char own = isUnsigned ? 'u' : ofKind[static_cast<int>(next->kind)];
            specification.conversion = static_cast<Unit>(own);
            specification.size = Size::none;
            specification.precision = noPrecision;
            takes = TakenBy(own);
        }
        return next;
    }

  private:
    std::optional<Argument> Next() noexcept {
        if (row_.empty()) return std::nullopt;
        const Argument next = row_.front();
        row_ = row_.subspan(1);
        return next;
    }

    std::span<const Argument> row_;
};

template <typename Unit>
const Unit* ParseFlags(const Unit* at, Specification<Unit>& specification) noexcept {
    constexpr char letters[] = {'-', '+', ' ', '#', '0'};
    bool* const flags[] = {&specification.left, &specification.plus, &specification.blank,
                           &specification.alternate, &specification.zeros};
    for (;; ++at) {
        const auto flag = std::find(std::begin(letters), std::end(letters), *at) - std::begin(letters);
        if (flag == std::ssize(letters)) return at;
        *flags[flag] = true;
    }
}

template <typename Unit>
const Unit* ParseNumber(const Unit* at, std::size_t& number) noexcept {
    constexpr std::size_t most = std::numeric_limits<int>::max();
    for (number = 0; *at >= '0' && *at <= '9'; ++at) {
        const std::uint64_t longer = std::uint64_t{number} * 10 + static_cast<std::uint64_t>(*at - '0');
        number = static_cast<std::size_t>(std::min<std::uint64_t>(longer, most));
    }
    return at;
}

template <typename Unit, typename Arguments>
const Unit* ParseWidth(const Unit* at, Specification<Unit>& specification, Arguments& arguments) noexcept {
    if (*at != '*') return ParseNumber(at, specification.width);
    const int width = arguments.NextInt();
    if (width < 0) specification.left = true;
    specification.width = static_cast<std::size_t>(std::abs(std::int64_t{width}));
    return at + 1;
}

template <typename Unit, typename Arguments>
const Unit* ParsePrecision(const Unit* at, Specification<Unit>& specification,
                           Arguments& arguments) noexcept {
    if (*at != '.') return at;
    ++at;
    if (*at != '*') return ParseNumber(at, specification.precision);
    const int precision = arguments.NextInt();
    if (precision >= 0) specification.precision = static_cast<std::size_t>(precision);
    return at + 1;
}

template <typename Unit>
const Unit* ParseSize(const Unit* at, Size& size) noexcept {
    const auto take = [&](Size taken, int units) {
        size = taken;
        return at + units;
    };
    switch (*at) {
        case 'h':
            return at[1] == 'h' ? take(Size::hh, 2) : take(Size::h, 1);
        case 'l':
            return at[1] == 'l' ? take(Size::bits64, 2) : take(Size::wide, 1);
        case 'I':
            if (at[1] == '3' && at[2] == '2') return take(Size::none, 3);
            if (at[1] == '6' && at[2] == '4') return take(Size::bits64, 3);
            return take(Size::pointer, 1);
        case 'w':
            return take(Size::wide, 1);
        case 'j':
            return take(Size::bits64, 1);
        case 'z':
        case 't':
            return take(Size::pointer, 1);
        case 'L':
            return take(Size::longDouble, 1);
        default:
            return at;
    }
}

// Reads what follows a percent sign and gives the place behind it.
template <typename Unit, typename Arguments>
const Unit* Parse(const Unit* at, Specification<Unit>& specification, Arguments& arguments) noexcept {
    at = ParseFlags(at, specification);
    at = ParseWidth(at, specification, arguments);
    at = ParsePrecision(at, specification, arguments);
    at = ParseSize(at, specification.size);
    specification.conversion = *at;
    return *at == 0 ? at : at + 1;
}

// The bits to the left of a whole number's own: those of its type, unless the size cuts it or asks for 64.
int BitsLeftOf(Size size, const Argument& argument) noexcept {
    switch (size) {
        case Size::hh:
            return 56;
        case Size::h:
            return 48;
        case Size::bits64:
            return 0;
        default:
            return argument.isLong ? 0 : 32;
    }
}

double FloatingOf(const Argument& argument) noexcept {
    if (argument.kind == Argument::Kind::Floating) return argument.floating;
    return argument.isSigned ? static_cast<double>(argument.whole)
                             : static_cast<double>(static_cast<std::uint64_t>(argument.whole));
}

template <typename Unit>
void WriteArgument(Output<Unit>& output, const Specification<Unit>& specification, Takes takes,
                   const Argument& argument) noexcept {
    switch (takes) {
        case Takes::Signed:
        case Takes::Unsigned: {
            const int left = BitsLeftOf(specification.size, argument);
            const std::uint64_t bits = static_cast<std::uint64_t>(argument.whole) << left;
            if (takes == Takes::Unsigned) return WriteInteger(output, specification, bits >> left, "");
            return WriteSigned(output, specification, static_cast<std::int64_t>(bits) >> left);
        }
        case Takes::Floating:
            return WriteDouble(output, specification, FloatingOf(argument));
        case Takes::Character:
            return TakesWide(specification)
                       ? WriteCharacter(output, specification, static_cast<WCHAR>(argument.whole))
                       : WriteCharacter(output, specification, static_cast<char>(argument.whole));
        case Takes::Text:
            return argument.kind == Argument::Kind::Wide
                       ? WriteText(output, specification, static_cast<const WCHAR*>(argument.pointer))
                       : WriteText(output, specification, static_cast<const char*>(argument.pointer));
        case Takes::Pointer:
            return WritePointer(output, specification, argument.pointer);
        default:
            return;
    }
}

template <typename Unit, typename Arguments>
void Write(Output<Unit>& output, Specification<Unit> specification, Arguments& arguments) noexcept {
    Takes takes = TakenBy(specification.conversion);
    if (takes == Takes::Nothing) {
        return output.Append(&specification.conversion, specification.conversion == 0 ? 0 : 1);
    }
    const std::optional<Argument> argument = arguments.NextFor(specification, takes);
    if (argument) WriteArgument(output, specification, takes, *argument);
}

template <typename Unit, typename Arguments>
std::size_t Run(Unit* target, std::size_t capacity, const Unit* format, Arguments arguments) noexcept {
    Output<Unit> output(target, capacity);
    while (format != nullptr && *format != 0) {
        const Unit* percent = format;
        while (*percent != 0 && *percent != '%') ++percent;
        output.Append(format, static_cast<std::size_t>(percent - format));
        format = percent;
        if (*percent == '%') {
            Specification<Unit> specification;
            format = Parse(percent + 1, specification, arguments);
            Write(output, specification, arguments);
        }
    }
    return output.Length();
}

}  // namespace

namespace msformat {

std::size_t Fill(char* target, std::size_t capacity, const char* format, va_list arguments) noexcept {
    return Run(target, capacity, format, ListedArguments(arguments));
}

std::size_t Fill(WCHAR* target, std::size_t capacity, const WCHAR* format, va_list arguments) noexcept {
    return Run(target, capacity, format, ListedArguments(arguments));
}

std::size_t Fill(char* target, std::size_t capacity, const char* format,
                 std::span<const Argument> arguments) noexcept {
    return Run(target, capacity, format, TypedArguments(arguments));
}

std::size_t Fill(WCHAR* target, std::size_t capacity, const WCHAR* format,
                 std::span<const Argument> arguments) noexcept {
    return Run(target, capacity, format, TypedArguments(arguments));
}

}  // namespace msformat
