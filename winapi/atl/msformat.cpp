#include "msformat.h"

#include "msformatfields.h"

#include <limits>

namespace {

using namespace msformat::fields;
using msformat::Argument;

// The arguments of a caller that tells nothing of their types. Passed on by reference: on some systems a
// va_list is an array, on others it isn't.
class ListedArguments {
  public:
    explicit ListedArguments(va_list list) { va_copy(list_, list); }
    ~ListedArguments() { va_end(list_); }
    ListedArguments(const ListedArguments&) = delete;
    ListedArguments& operator=(const ListedArguments&) = delete;

    template <typename Type>
    Type Next() {
        return va_arg(list_, Type);
    }
    int NextInt() { return Next<int>(); }

  private:
    va_list list_;
};

// Arguments that know their types.
class TypedArguments {
  public:
    explicit TypedArguments(std::span<const Argument> row) noexcept : row_(row) {}

    // Null when none is left.
    const Argument* Next() noexcept {
        if (row_.empty()) return nullptr;
        const Argument* const next = row_.data();
        row_ = row_.subspan(1);
        return next;
    }
    // A width or a precision.
    int NextInt() noexcept {
        const Argument* const next = Next();
        if (next == nullptr || next->kind != Argument::Kind::Whole) return 0;
        constexpr std::int64_t most = std::numeric_limits<int>::max();
        return static_cast<int>(std::clamp(next->whole, -most, most));
    }

  private:
    std::span<const Argument> row_;
};

template <typename Unit>
const Unit* ParseFlags(const Unit* at, Specification<Unit>& specification) noexcept {
    for (;; ++at) {
        switch (*at) {
            case '-':
                specification.left = true;
                break;
            case '+':
                specification.plus = true;
                break;
            case ' ':
                specification.blank = true;
                break;
            case '#':
                specification.alternate = true;
                break;
            case '0':
                specification.zeros = true;
                break;
            default:
                return at;
        }
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
            return at[1] == 'l' ? take(Size::bits64, 2) : take(Size::l, 1);
        case 'I':
            if (at[1] == '3' && at[2] == '2') return take(Size::bits32, 3);
            if (at[1] == '6' && at[2] == '4') return take(Size::bits64, 3);
            return take(Size::pointer, 1);
        case 'w':
            return take(Size::w, 1);
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

std::int64_t NextSigned(Size size, ListedArguments& arguments) {
    switch (size) {
        case Size::hh:
            return static_cast<signed char>(arguments.Next<int>());
        case Size::h:
            return static_cast<short>(arguments.Next<int>());
        case Size::bits64:  // NOLINT(bugprone-branch-clone): not where pointers are narrow
            return arguments.Next<std::int64_t>();
        case Size::pointer:
            return arguments.Next<std::intptr_t>();
        default:
            return arguments.Next<int>();
    }
}

std::uint64_t NextUnsigned(Size size, ListedArguments& arguments) {
    switch (size) {
        case Size::hh:
            return static_cast<unsigned char>(arguments.Next<int>());
        case Size::h:
            return static_cast<unsigned short>(arguments.Next<int>());
        case Size::bits64:  // NOLINT(bugprone-branch-clone): as above
            return arguments.Next<std::uint64_t>();
        case Size::pointer:
            return arguments.Next<std::uintptr_t>();
        default:
            return arguments.Next<unsigned>();
    }
}

template <typename Unit>
void Write(Output<Unit>& output, const Specification<Unit>& specification,
           ListedArguments& arguments) noexcept {
    switch (specification.conversion) {
        case 'd':
        case 'i':
            return WriteSigned(output, specification, NextSigned(specification.size, arguments));
        case 'u':
        case 'o':
        case 'x':
        case 'X':
            return WriteInteger(output, specification, NextUnsigned(specification.size, arguments), "");
        case 'a':
        case 'A':
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G':
            if (specification.size == Size::longDouble) {
                return WriteDouble(output, specification, static_cast<double>(arguments.Next<long double>()));
            }
            return WriteDouble(output, specification, arguments.Next<double>());
        case 's':
        case 'S':
            return TakesWide(specification) ? WriteText(output, specification, arguments.Next<const WCHAR*>())
                                            : WriteText(output, specification, arguments.Next<const char*>());
        case 'c':
        case 'C':
            return TakesWide(specification)
                       ? WriteCharacter(output, specification, static_cast<WCHAR>(arguments.Next<int>()))
                       : WriteCharacter(output, specification, static_cast<char>(arguments.Next<int>()));
        case 'p':
            return WritePointer(output, specification, arguments.Next<const void*>());
        case 'n':
            arguments.Next<void*>();
            return;
        default:
            output.Append(&specification.conversion, specification.conversion == 0 ? 0 : 1);
    }
}

// A whole number in the width of its type, unless the size cuts it or asks for 64 bits.
std::int64_t SignedOf(Size size, const Argument& argument) noexcept {
    switch (size) {
        case Size::hh:
            return static_cast<signed char>(argument.whole);
        case Size::h:
            return static_cast<short>(argument.whole);
        case Size::bits64:
            return argument.whole;
        default:
            return argument.isLong ? argument.whole : static_cast<std::int32_t>(argument.whole);
    }
}

std::uint64_t UnsignedOf(Size size, const Argument& argument) noexcept {
    switch (size) {
        case Size::hh:
            return static_cast<unsigned char>(argument.whole);
        case Size::h:
            return static_cast<unsigned short>(argument.whole);
        case Size::bits64:
            return static_cast<std::uint64_t>(argument.whole);
        default:
            return argument.isLong ? static_cast<std::uint64_t>(argument.whole)
                                   : static_cast<std::uint32_t>(argument.whole);
    }
}

double FloatingOf(const Argument& argument) noexcept {
    if (argument.kind == Argument::Kind::Floating) return argument.floating;
    return argument.isSigned ? static_cast<double>(argument.whole)
                             : static_cast<double>(static_cast<std::uint64_t>(argument.whole));
}

// The conversion that writes the argument: the one asked for, or, where that can't, the one of its own kind.
template <typename Unit>
char ConversionFor(Unit asked, const Argument& argument) noexcept {
    using Kind = Argument::Kind;
    constexpr char ofKind[] = {'d', 'g', 's', 's', 'p'};
    const bool isWhole = argument.kind == Kind::Whole;
    const bool isText = argument.kind == Kind::Narrow || argument.kind == Kind::Wide;
    bool fits = false;
    switch (asked) {
        case 'd':
        case 'i':
        case 'u':
        case 'o':
        case 'x':
        case 'X':
        case 'c':
        case 'C':
            fits = isWhole;
            break;
        case 'a':
        case 'A':
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G':
            fits = isWhole || argument.kind == Kind::Floating;
            break;
        case 's':
        case 'S':
            fits = isText || (argument.kind == Kind::Pointer && argument.pointer == nullptr);
            break;
        case 'p':
            fits = isText || argument.kind == Kind::Pointer;
            break;
        default:
            break;
    }
    if (fits) return static_cast<char>(asked);
    return isWhole && !argument.isSigned ? 'u' : ofKind[static_cast<int>(argument.kind)];
}

template <typename Unit>
void WriteArgument(Output<Unit>& output, const Specification<Unit>& specification,
                   const Argument& argument) noexcept {
    switch (specification.conversion) {
        case 'd':
        case 'i':
            return WriteSigned(output, specification, SignedOf(specification.size, argument));
        case 'u':
        case 'o':
        case 'x':
        case 'X':
            return WriteInteger(output, specification, UnsignedOf(specification.size, argument), "");
        case 'c':
        case 'C':
            return TakesWide(specification)
                       ? WriteCharacter(output, specification, static_cast<WCHAR>(argument.whole))
                       : WriteCharacter(output, specification, static_cast<char>(argument.whole));
        case 's':
        case 'S':
            return argument.kind == Argument::Kind::Wide
                       ? WriteText(output, specification, static_cast<const WCHAR*>(argument.pointer))
                       : WriteText(output, specification, static_cast<const char*>(argument.pointer));
        case 'p':
            return WritePointer(output, specification, argument.pointer);
        default:
            return WriteDouble(output, specification, FloatingOf(argument));
    }
}

template <typename Unit>
void Write(Output<Unit>& output, Specification<Unit> specification, TypedArguments& arguments) noexcept {
    constexpr std::string_view conversions = "diuoxXaAeEfFgGsScCpn";
    const Unit asked = specification.conversion;
    if (asked >= 0x80 || conversions.find(static_cast<char>(asked)) == conversions.npos) {
        return output.Append(&asked, asked == 0 ? 0 : 1);
    }
    const Argument* const argument = arguments.Next();
    if (argument == nullptr || asked == 'n') return;
    const char conversion = ConversionFor(asked, *argument);
    if (static_cast<Unit>(conversion) != asked) {
        specification.conversion = static_cast<Unit>(conversion);
        specification.size = Size::none;
        specification.precision = noPrecision;
    }
    WriteArgument(output, specification, *argument);
}

template <typename Unit, typename Arguments>
std::size_t Run(Unit* target, std::size_t capacity, const Unit* format, Arguments& arguments) noexcept {
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
    ListedArguments listed(arguments);
    return Run(target, capacity, format, listed);
}

std::size_t Fill(WCHAR* target, std::size_t capacity, const WCHAR* format, va_list arguments) noexcept {
    ListedArguments listed(arguments);
    return Run(target, capacity, format, listed);
}

std::size_t Fill(char* target, std::size_t capacity, const char* format,
                 std::span<const Argument> arguments) noexcept {
    TypedArguments typed(arguments);
    return Run(target, capacity, format, typed);
}

std::size_t Fill(WCHAR* target, std::size_t capacity, const WCHAR* format,
                 std::span<const Argument> arguments) noexcept {
    TypedArguments typed(arguments);
    return Run(target, capacity, format, typed);
}

}  // namespace msformat
