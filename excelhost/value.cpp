#include "excelhost/value.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <limits>
#include <ostream>
#include <utility>

namespace excelhost {
namespace {

constexpr int kDeepestArray = 8;
constexpr std::size_t kLongestShownText = 60;

std::byte* NewBlock(std::size_t bytes, Blocks& blocks) {
    return blocks.emplace_back(bytes).Payload();
}

XLOPER12 OfType(DWORD type) {
    XLOPER12 record{};
    record.xltype = type;
    return record;
}

// Fills a record from each kind of value.
struct RecordMaker {
    Blocks& blocks;

    XLOPER12 operator()(Empty) const { return OfType(xltypeNil); }
    XLOPER12 operator()(Missing) const { return OfType(xltypeMissing); }
    XLOPER12 operator()(double number) const {
        XLOPER12 record = OfType(xltypeNum);
        record.val.num = number;
        return record;
    }
    XLOPER12 operator()(int number) const {
        XLOPER12 record = OfType(xltypeInt);
        record.val.w = number;
        return record;
    }
    XLOPER12 operator()(bool truth) const {
        XLOPER12 record = OfType(xltypeBool);
        record.val.xbool = truth ? 1 : 0;
        return record;
    }
    XLOPER12 operator()(ErrorValue error) const {
        XLOPER12 record = OfType(xltypeErr);
        record.val.err = error.number;
        return record;
    }
    XLOPER12 operator()(const Text& text) const {
        const std::size_t length = std::min(text.size(), kTextLimit);
        auto* units = reinterpret_cast<XCHAR*>(NewBlock((length + 1) * sizeof(XCHAR), blocks));
        units[0] = static_cast<XCHAR>(length);
        std::copy_n(text.data(), length, units + 1);
        XLOPER12 record = OfType(xltypeStr);
        record.val.str = units;
        return record;
    }
    XLOPER12 operator()(const Area& area) const {
        XLOPER12 record = OfType(xltypeSRef);
        record.val.sref.count = 1;
        record.val.sref.ref = area.rectangle;
        return record;
    }
    XLOPER12 operator()(const Reference& reference) const {
        const std::size_t count =
            std::min<std::size_t>(reference.areas.size(), std::numeric_limits<WORD>::max());
        const std::size_t bytes = sizeof(XLMREF12) + (count > 1 ? count - 1 : 0) * sizeof(XLREF12);
        std::byte* block = NewBlock(bytes, blocks);
        const auto count16 = static_cast<WORD>(count);
        std::memcpy(block, &count16, sizeof count16);
        for (std::size_t i = 0; i < count; ++i) {
            std::memcpy(block + offsetof(XLMREF12, reflref) + i * sizeof(XLREF12),
                        &reference.areas[i].rectangle, sizeof(XLREF12));
        }
        XLOPER12 record = OfType(xltypeRef);
        record.val.mref.lpmref = reinterpret_cast<XLMREF12*>(block);
        record.val.mref.idSheet = reference.sheet;
        return record;
    }
    XLOPER12 operator()(BigData big) const {
        XLOPER12 record = OfType(xltypeBigData);
        record.val.bigdata.h.hdata = const_cast<void*>(big.data);
        record.val.bigdata.cbData = big.size;
        return record;
    }
    XLOPER12 operator()(const Array& array) const {
        std::vector<XLOPER12> elements;
        elements.reserve(array.cells.size());
        for (const Value& cell : array.cells) elements.push_back(RecordFrom(cell, blocks));
        std::byte* block = NewBlock(elements.size() * sizeof(XLOPER12), blocks);
        if (!elements.empty()) std::memcpy(block, elements.data(), elements.size() * sizeof(XLOPER12));
        XLOPER12 record = OfType(xltypeMulti);
        record.val.array.lparray = reinterpret_cast<XLOPER12*>(block);
        record.val.array.rows = static_cast<RW>(array.rows);
        record.val.array.columns = static_cast<COL>(array.columns);
        return record;
    }
};

bool InsideSheet(const XLREF12& r) noexcept {
    return r.rwFirst >= 0 && r.rwFirst <= r.rwLast && r.rwLast < kRowLimit && r.colFirst >= 0 &&
           r.colFirst <= r.colLast && r.colLast < kColumnLimit;
}

Value ReferenceFrom(const XLOPER12& record) {
    Reference reference;
    reference.sheet = record.val.mref.idSheet;
    if (const XLMREF12* block = record.val.mref.lpmref) {
        const auto* bytes = reinterpret_cast<const std::byte*>(block) + offsetof(XLMREF12, reflref);
        for (std::size_t i = 0; i < block->count; ++i) {
            Area area;
            std::memcpy(&area.rectangle, bytes + i * sizeof(XLREF12), sizeof(XLREF12));
            if (!InsideSheet(area.rectangle)) return ErrorValue{xlerrRef};
            reference.areas.push_back(area);
        }
    }
    return reference;
}

// The shape of an array record; nothing for one that can't be read.
bool ArrayShape(const XLOPER12& record, std::size_t& rows, std::size_t& columns) noexcept {
    const auto& array = record.val.array;
    const auto width = static_cast<std::int16_t>(array.columns & 0xFFFF);
    if (array.lparray == nullptr || array.rows < 1 || array.rows > kRowLimit || width < 1) return false;
    rows = static_cast<std::size_t>(array.rows);
    columns = static_cast<std::size_t>(width);
    return true;
}

Value ValueFrom(const XLOPER12& record, int depth) {
    switch (TypeOf(record)) {
        case xltypeNum:
            return record.val.num;
        case xltypeInt:
            return static_cast<int>(record.val.w);
        case xltypeBool:
            return record.val.xbool != 0;
        case xltypeErr:
            return ErrorValue{record.val.err};
        case xltypeMissing:
            return Missing{};
        case xltypeNil:
            return Empty{};
        case xltypeRef:
            return ReferenceFrom(record);
        case xltypeSRef:
            if (record.val.sref.count != 1 || !InsideSheet(record.val.sref.ref)) return ErrorValue{xlerrRef};
            return Area{record.val.sref.ref};
        case xltypeStr:
            if (record.val.str == nullptr || record.val.str[0] > kTextLimit) return ErrorValue{xlerrValue};
            return Text(record.val.str + 1, record.val.str[0]);
        case xltypeMulti: {
            Array array;
            if (depth == kDeepestArray || !ArrayShape(record, array.rows, array.columns)) break;
            const std::size_t count = array.rows * array.columns;
            array.cells.reserve(count);
            for (std::size_t i = 0; i < count; ++i) {
                array.cells.push_back(ValueFrom(record.val.array.lparray[i], depth + 1));
            }
            return array;
        }
        default:
            break;
    }
    return ErrorValue{xlerrValue};
}

std::string QuotedText(TextView text) {
    return "\"" + Excerpt(text, kLongestShownText) + "\"";
}

struct Describer {
    std::string operator()(Empty) const { return "(empty)"; }
    std::string operator()(Missing) const { return "(missing)"; }
    std::string operator()(double number) const { return NumberText(number); }
    std::string operator()(int number) const { return "int " + std::to_string(number); }
    std::string operator()(bool truth) const { return truth ? "TRUE" : "FALSE"; }
    std::string operator()(const Text& text) const { return QuotedText(text); }
    std::string operator()(ErrorValue error) const { return ErrorName(error.number); }
    std::string operator()(const Area& area) const { return AreaName(area); }
    std::string operator()(const Reference& reference) const {
        std::string text = "sheet " + std::to_string(reference.sheet);
        for (const Area& area : reference.areas) text += " " + AreaName(area);
        return text;
    }
    std::string operator()(BigData) const { return "(big data)"; }
    std::string operator()(const Array& array) const {
        return std::to_string(array.rows) + "x" + std::to_string(array.columns) + " array";
    }
};

struct NamedError {
    int number;
    std::string_view name;
};
constexpr std::array kErrors = {
    NamedError{xlerrNull, "#NULL!"},   NamedError{xlerrDiv0, "#DIV/0!"},
    NamedError{xlerrValue, "#VALUE!"}, NamedError{xlerrRef, "#REF!"},
    NamedError{xlerrName, "#NAME?"},   NamedError{xlerrNum, "#NUM!"},
    NamedError{xlerrNA, "#N/A"},       NamedError{xlerrGettingData, "#GETTING_DATA"},
};

}  // namespace

bool operator==(const Area& a, const Area& b) noexcept {
    return a.rectangle.rwFirst == b.rectangle.rwFirst && a.rectangle.rwLast == b.rectangle.rwLast &&
           a.rectangle.colFirst == b.rectangle.colFirst && a.rectangle.colLast == b.rectangle.colLast;
}

bool operator==(const Array& a, const Array& b) {
    return a.rows == b.rows && a.columns == b.columns && a.cells == b.cells;
}

XLOPER12 RecordFrom(const Value& value, Blocks& blocks) {
    return std::visit(RecordMaker{blocks}, value);
}

Value ValueFrom(const XLOPER12& record) {
    return ValueFrom(record, 0);
}

std::optional<Text> TextOf(const XLOPER12& record) {
    if (TypeOf(record) != xltypeStr) return std::nullopt;
    const Value value = ValueFrom(record);
    const Text* text = value.If<Text>();
    return text != nullptr ? std::optional(*text) : std::nullopt;
}

const void* PayloadOf(const XLOPER12& record) noexcept {
    switch (TypeOf(record)) {
        case xltypeStr:
            return record.val.str;
        case xltypeRef:
            return record.val.mref.lpmref;
        case xltypeMulti:
            return record.val.array.lparray;
        default:
            return nullptr;
    }
}

// Arrays are described by their shape alone: a trace must not copy a large one.
std::string Describe(const XLOPER12& record) {
    switch (TypeOf(record)) {
        case xltypeMulti: {
            std::size_t rows = 0;
            std::size_t columns = 0;
            if (!ArrayShape(record, rows, columns)) return "(bad array)";
            return std::to_string(rows) + "x" + std::to_string(columns) + " array";
        }
        case xltypeFlow:
            return "(flow)";
        case xltypeBigData:
            return "(big data)";
        default:
            return Describe(ValueFrom(record));
    }
}

std::string Describe(const Value& value) {
    return std::visit(Describer{}, value);
}

std::ostream& operator<<(std::ostream& out, const Value& value) {
    const Array* array = value.If<Array>();
    if (array == nullptr) return out << Describe(value);
    for (std::size_t i = 0; i < array->cells.size(); ++i) {
        out << (i == 0 ? "{" : i % array->columns == 0 ? ";" : ",") << array->cells[i];
    }
    return out << '}';
}

std::string CellName(RW row, COL column) {
    std::string letters;
    for (int rest = column + 1; rest > 0; rest = (rest - 1) / 26) {
        letters.insert(letters.begin(), static_cast<char>('A' + (rest - 1) % 26));
    }
    return letters + std::to_string(row + 1);
}

std::string AreaName(const Area& area) {
    const XLREF12& r = area.rectangle;
    std::string name = CellName(r.rwFirst, r.colFirst);
    if (r.rwFirst != r.rwLast || r.colFirst != r.colLast) name += ":" + CellName(r.rwLast, r.colLast);
    return name;
}

std::string ErrorName(int number) {
    for (const NamedError& error : kErrors) {
        if (error.number == number) return std::string(error.name);
    }
    return "#ERROR " + std::to_string(number);
}

int ErrorNumber(std::string_view name) noexcept {
    for (const NamedError& error : kErrors) {
        if (error.name == name) return error.number;
    }
    return -1;
}

}  // namespace excelhost
