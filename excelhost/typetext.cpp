#include "excelhost/typetext.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace excelhost {
namespace {

constexpr std::size_t kHighestInPlace = 9;

struct Letter {
    char letter;
    Passing passing;
    bool hasWideForm;
    bool isResult;  // may stand for a result
};
constexpr auto kLetters = std::to_array<Letter>({
    {'A', Passing::Short, false, true},          // BOOL as short
    {'B', Passing::Double, false, true},         // double
    {'C', Passing::Pointer, true, true},         // zero-ended text
    {'D', Passing::Pointer, true, true},         // counted text
    {'E', Passing::Pointer, false, true},        // double*
    {'F', Passing::Pointer, true, true},         // zero-ended text in a buffer that may be written
    {'G', Passing::Pointer, true, true},         // counted text in such a buffer
    {'H', Passing::UnsignedShort, false, true},  // unsigned short
    {'I', Passing::Short, false, true},          // short
    {'J', Passing::Long, false, true},           // 32 bits
    {'K', Passing::Pointer, true, true},         // FP*, FP12*
    {'L', Passing::Pointer, false, true},        // short*, a truth value
    {'M', Passing::Pointer, false, true},        // short*
    {'N', Passing::Pointer, false, true},        // 32 bits*
    {'O', Passing::Pointer, true, false},        // rows*, columns*, double*: three pointers
    {'P', Passing::Pointer, false, true},        // XLOPER*, a value
    {'Q', Passing::Pointer, false, true},        // XLOPER12*, a value
    {'R', Passing::Pointer, false, true},        // XLOPER*, a value or a reference
    {'U', Passing::Pointer, false, true},        // XLOPER12*, a value or a reference
});

const Letter* FindLetter(WCHAR unit) {
    const auto found = std::find_if(kLetters.begin(), kLetters.end(),
                                    [&](const Letter& l) { return static_cast<WCHAR>(l.letter) == unit; });
    return found != kLetters.end() ? &*found : nullptr;
}

std::string Quoted(WCHAR unit) {
    return "'" + Utf8({&unit, 1}) + "'";
}

class Reader {
  public:
    explicit Reader(TextView text) : rest_(text) {}

    TypeText Read() {
        const bool promisesNothing = ReadResult();
        while (!rest_.empty() && ReadArgument()) {
        }
        while (!rest_.empty()) ReadMark();
        Settle(promisesNothing);
        return std::move(type_);
    }

  private:
    [[nodiscard]] WCHAR Next() const { return rest_.front(); }
    void Skip() { rest_.remove_prefix(1); }

    ValueType Take(const Letter& letter) {
        Skip();
        ValueType type{letter.letter, false, letter.passing};
        if (!rest_.empty() && Next() == '%') {
            if (!letter.hasWideForm) throw TypeTextFault(Describe(type) + " has no form with '%'");
            type.wide = true;
            Skip();
        }
        return type;
    }

    // Whether no result is promised.
    bool ReadResult() {
        if (rest_.empty()) throw TypeTextFault("the type text is empty");
        if (Next() == '>') {
            Skip();
            return true;
        }
        if (Next() >= '1' && Next() <= '0' + static_cast<int>(kHighestInPlace)) {
            type_.inPlace = static_cast<std::size_t>(Next() - '0');
            Skip();
            return false;
        }
        const Letter* letter = FindLetter(Next());
        if (letter == nullptr || !letter->isResult) {
            throw TypeTextFault("the type text begins with " + Quoted(Next()) + ", which is no result");
        }
        type_.result = Take(*letter);
        return false;
    }

    bool ReadArgument() {
        if (Next() == 'X') {
            if (type_.asynchronous) throw TypeTextFault("the type text has a second handle 'X'");
            type_.asynchronous = true;
            type_.handle = type_.arguments.size();
            Skip();
            return true;
        }
        const Letter* letter = FindLetter(Next());
        if (letter == nullptr) return false;
        if (type_.arguments.size() == kArityLimit) {
            throw TypeTextFault("the type text has more than " + std::to_string(kArityLimit) + " arguments");
        }
        type_.arguments.push_back(Take(*letter));
        return true;
    }

    void ReadMark() {
        switch (Next()) {
            case '!':
                type_.recalculatesAlways = true;
                break;
            case '$':
                type_.threadSafe = true;
                break;
            case '#':
                type_.forMacroSheets = true;
                break;
            case '&':
                type_.clusterSafe = true;
                break;
            default:
                throw TypeTextFault("the type text has a " + Quoted(Next()) + ", which is no type there");
        }
        Skip();
    }

    void Settle(bool promisesNothing) {
        if (type_.forMacroSheets && (type_.threadSafe || type_.clusterSafe)) {
            throw TypeTextFault("the type text has '#' beside '$' or '&', which exclude each other");
        }
        if (type_.asynchronous) {
            if (!promisesNothing) throw TypeTextFault("a function with a handle 'X' must begin with '>'");
            return;
        }
        const auto& arguments = type_.arguments;
        if (promisesNothing) {
            const auto first = std::find_if(arguments.begin(), arguments.end(), CanBeChanged);
            type_.inPlace = static_cast<std::size_t>(first - arguments.begin()) + 1;
        }
        if (type_.inPlace == 0) return;
        if (type_.inPlace > arguments.size() || !CanBeChanged(arguments[type_.inPlace - 1])) {
            throw TypeTextFault(promisesNothing ? "no argument behind '>' can be changed"
                                                : "argument " + std::to_string(type_.inPlace) +
                                                      " isn't there or can't be changed");
        }
    }

    TextView rest_;
    TypeText type_;
};

}  // namespace

TypeText TypeTextFrom(TextView text) {
    return Reader(text).Read();
}

std::string Describe(ValueType type) {
    return std::string(1, type.letter) + (type.wide ? "%" : "");
}

std::string InWords(ValueType type) {
    static constexpr auto words = std::to_array<std::pair<char, const char*>>({
        {'A', "truth value"},
        {'B', "number"},
        {'C', "text, ended by a zero"},
        {'D', "text, counted"},
        {'E', "number, by its address"},
        {'F', "text to write into, ended by a zero"},
        {'G', "text to write into, counted"},
        {'H', "unsigned 16-bit integer"},
        {'I', "16-bit integer"},
        {'J', "32-bit integer"},
        {'K', "array of numbers"},
        {'L', "truth value, by its address"},
        {'M', "16-bit integer, by its address"},
        {'N', "32-bit integer, by its address"},
        {'O', "array of numbers, as rows, columns and numbers"},
        {'P', "value, as before Excel 2007"},
        {'Q', "value"},
        {'R', "value or reference, as before Excel 2007"},
        {'U', "value or reference"},
    });
    const auto found =
        std::find_if(words.begin(), words.end(), [&](const auto& row) { return row.first == type.letter; });
    if (found == words.end()) return "nothing";
    const bool isText = std::string_view("CDFG").find(type.letter) != std::string_view::npos;
    const char* const encoding = !isText ? "" : type.wide ? ", UTF-16" : ", in the ANSI code page";
    return std::string(found->second) + encoding + " (" + Describe(type) + ")";
}

bool CanBeChanged(ValueType type) noexcept {
    return std::string_view("EFGKLMNO").find(type.letter) != std::string_view::npos;
}

}  // namespace excelhost
