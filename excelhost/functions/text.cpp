#include "excelhost/functions/functions.h"

#include "excelhost/formula.h"
#include "excelhost/functions/criteria.h"
#include "excelhost/functions/numberformat.h"
#include "excelhost/numbers.h"

#include <algorithm>
#include <array>

// Lengths and places count UTF-16 units, as Excel's do; places count from 1.

namespace excelhost {
namespace {

Value Limited(Text text) {
    return text.size() <= kTextLimit ? Value(std::move(text)) : Value(ErrorValue{xlerrValue});
}

Value Left(const Given& given) {
    return given.String(0).substr(0, given.Whole(1, 0, 1));
}

Value Right(const Given& given) {
    const Text text = given.String(0);
    return text.substr(text.size() - std::min(text.size(), given.Whole(1, 0, 1)));
}

Value Middle(const Given& given) {
    const Text text = given.String(0);
    const std::size_t first = given.Whole(1, 1) - 1;
    const std::size_t count = given.Whole(2, 0);
    return first < text.size() ? text.substr(first, count) : Text();
}

// One space between words, none around them.
Value Trim(const Given& given) {
    Text trimmed;
    for (const WCHAR unit : given.String(0)) {
        if (unit != ' ' || (!trimmed.empty() && trimmed.back() != ' ')) trimmed += unit;
    }
    if (trimmed.ends_with(' ')) trimmed.pop_back();
    return trimmed;
}

// A letter behind anything that is no letter is upper case, all others are lower.
Value Proper(const Given& given) {
    const Text text = given.String(0);
    const Text upper = UpperCase(text);
    Text proper = LowerCase(text);
    bool behindLetter = false;
    for (std::size_t i = 0; i < proper.size(); ++i) {
        const bool isLetter = upper[i] != proper[i];
        if (isLetter && !behindLetter) proper[i] = upper[i];
        behindLetter = isLetter;
    }
    return proper;
}

// The texts of all arguments, those of every cell and element among them.
template <class Use>
void EachText(const Given& given, std::size_t first, Use use) {
    for (std::size_t i = first; i < given.Count(); ++i) {
        given.EachValue(i, [&](const Value& value) {
            Text text;
            if (const auto error = ToText(value, text)) throw ErrorFound{*error};
            use(text);
        });
    }
}

Value Concatenate(const Given& given) {
    Text all;
    for (std::size_t i = 0; i < given.Count(); ++i) all += given.String(i);
    return Limited(std::move(all));
}

Value ConcatenateRanges(const Given& given) {
    Text all;
    EachText(given, 0, [&](const Text& text) {
        all += text;
        if (all.size() > kTextLimit) Fail(xlerrValue);
    });
    return all;
}

// TEXTJOIN(between, leave out empty ones, text, ...)
Value Join(const Given& given) {
    const Text between = given.String(0);
    const bool leaveOutEmpty = given.Truth(1);
    Text all;
    bool first = true;
    EachText(given, 2, [&](const Text& text) {
        if (leaveOutEmpty && text.empty()) return;
        if (!first) all += between;
        first = false;
        all += text;
        if (all.size() > kTextLimit) Fail(xlerrValue);
    });
    return all;
}

// FIND(text, within, [start]), to the letter.
Value Find(const Given& given) {
    const Text wanted = given.String(0);
    const Text within = given.String(1);
    const std::size_t start = given.Whole(2, 1, 1) - 1;
    const std::size_t found = start <= within.size() ? within.find(wanted, start) : Text::npos;
    return found != Text::npos ? Value(static_cast<double>(found + 1)) : Value(ErrorValue{xlerrValue});
}

// SEARCH, the same without regard to case and with wildcards.
Value Search(const Given& given) {
    const Text pattern = given.String(0) + TEXT("*");
    const Text within = given.String(1);
    for (std::size_t place = given.Whole(2, 1, 1) - 1; place <= within.size(); ++place) {
        if (MatchesPattern(TextView(within).substr(place), pattern)) return static_cast<double>(place + 1);
    }
    return ErrorValue{xlerrValue};
}

// SUBSTITUTE(text, old, new, [the how manieth]), all of them if left out.
Value Substitute(const Given& given) {
    const Text text = given.String(0);
    const Text old = given.String(1);
    const Text with = given.String(2);
    const std::size_t only = given.Whole(3, 1, 0);
    if (old.empty()) return text;
    Text result;
    std::size_t next = 0;
    std::size_t count = 0;
    for (std::size_t found = text.find(old); found != Text::npos; found = text.find(old, next)) {
        result += text.substr(next, found - next);
        result += only == 0 || ++count == only ? with : old;
        next = found + old.size();
        if (result.size() > kTextLimit) return ErrorValue{xlerrValue};
    }
    return Limited(result += text.substr(next));
}

// REPLACE(text, start, length, new)
Value Replace(const Given& given) {
    Text text = given.String(0);
    const std::size_t start = std::min(given.Whole(1, 1) - 1, text.size());
    return Limited(text.replace(start, given.Whole(2, 0), given.String(3)));
}

Value Repeat(const Given& given) {
    const Text text = given.String(0);
    const std::size_t times = given.Whole(1, 0);
    if (!text.empty() && times > kTextLimit / text.size()) return ErrorValue{xlerrValue};
    Text all;
    for (std::size_t i = 0; i < times && !text.empty(); ++i) all += text;
    return all;
}

// CHAR and CODE, in the ANSI code page of Western Windows.
Value Character(const Given& given) {
    const std::size_t code = given.Whole(0, 1);
    if (code > 255) return ErrorValue{xlerrValue};
    const char byte = static_cast<char>(code);
    WCHAR unit = 0;
    MultiByteToWideChar(1252, 0, &byte, 1, &unit, 1);
    return Text(1, unit);
}

Value Code(const Given& given) {
    const Text text = given.String(0);
    if (text.empty()) return ErrorValue{xlerrValue};
    char byte = 0;
    WideCharToMultiByte(1252, 0, text.data(), 1, &byte, 1, nullptr, nullptr);
    return static_cast<double>(static_cast<unsigned char>(byte));
}

// A truth value stays as it is.
Value TextInFormat(const Given& given) {
    const Value value = given.Scalar(0);
    const Text format = given.String(1);
    double number = 0;
    if (value.Is<bool>()) return given.String(0);
    const bool isText = ToNumber(value, number).has_value();
    if (format.empty()) return isText ? value : Value(Text());
    auto text = isText ? FormattedText(*value.If<Text>(), format) : FormattedNumber(number, format);
    return text ? Limited(*std::move(text)) : Value(ErrorValue{xlerrValue});
}

// Without control characters.
Value Clean(const Given& given) {
    Text text = given.String(0);
    std::erase_if(text, [](WCHAR unit) { return unit < 0x20; });
    return text;
}

constexpr auto kFunctions = std::to_array<Builtin>({
    {"CHAR", 1, 1, Character},
    {"CLEAN", 1, 1, Clean},
    {"CODE", 1, 1, Code},
    {"CONCAT", 1, kArgumentLimit, ConcatenateRanges, kWholeArrays},
    {"CONCATENATE", 1, kArgumentLimit, Concatenate},
    {"EXACT", 2, 2, [](const Given& given) { return Value(given.String(0) == given.String(1)); }},
    {"FIND", 2, 3, Find},
    {"LEFT", 1, 2, Left},
    {"LEN", 1, 1, [](const Given& given) { return Value(static_cast<double>(given.String(0).size())); }},
    {"LOWER", 1, 1, [](const Given& given) { return Value(LowerCase(given.String(0))); }},
    {"MID", 3, 3, Middle},
    {"PROPER", 1, 1, Proper},
    {"REPLACE", 4, 4, Replace},
    {"REPT", 2, 2, Repeat},
    {"RIGHT", 1, 2, Right},
    {"SEARCH", 2, 3, Search},
    {"SUBSTITUTE", 3, 4, Substitute},
    {"TEXT", 2, 2, TextInFormat},
    {"TEXTJOIN", 3, kArgumentLimit, Join, kWholeArrays},
    {"TRIM", 1, 1, Trim},
    {"UPPER", 1, 1, [](const Given& given) { return Value(UpperCase(given.String(0))); }},
    {"VALUE", 1, 1, [](const Given& given) { return Value(given.Number(0)); }},
});

}  // namespace

std::span<const Builtin> TextFunctions() noexcept {
    return kFunctions;
}

}  // namespace excelhost
