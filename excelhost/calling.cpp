#include "excelhost/calling.h"

#include "excelhost/grid.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

namespace excelhost {
namespace {

constexpr std::size_t kNarrowLimit = 255;  // bytes
// A buffer that a function may write a text into (F and G): the longest one, and its end or count.
constexpr std::size_t kNarrowBuffer = kNarrowLimit + 1;
constexpr std::size_t kWideBuffer = (kTextLimit + 1) * sizeof(XCHAR);

bool IsOneOf(ValueType type, std::string_view letters) noexcept {
    return letters.find(type.letter) != std::string_view::npos;
}

// An array gives its first element, a missing argument is an empty cell.
Value OneValue(const Value& value) {
    if (const Array* array = value.If<Array>()) return array->cells.front();
    if (value.Is<Missing>()) return Empty{};
    if (value.Is<Area>() || value.Is<Reference>()) return ErrorValue{xlerrValue};
    return value;
}

// A number without its fraction, within the limits of a type.
template <class Integer>
std::optional<ErrorValue> Whole(double number, std::int64_t& whole) {
    const double cut = std::trunc(number);
    if (!(cut >= static_cast<double>(std::numeric_limits<Integer>::min()) &&
          cut <= static_cast<double>(std::numeric_limits<Integer>::max()))) {
        return ErrorValue{xlerrNum};
    }
    whole = static_cast<std::int64_t>(cut);
    return std::nullopt;
}

template <class T>
T Read(const void* place) {
    T value;
    std::memcpy(&value, place, sizeof value);
    return value;
}

Value ArrayFrom(std::size_t rows, std::size_t columns, const std::byte* numbers) {
    if (rows == 0 || columns == 0 || rows > static_cast<std::size_t>(kRowLimit) ||
        columns > static_cast<std::size_t>(kColumnLimit)) {
        return ErrorValue{xlerrValue};
    }
    Array array{rows, columns, {}};
    array.cells.reserve(rows * columns);
    for (std::size_t i = 0; i < rows * columns; ++i) {
        array.cells.push_back(FiniteNumber(Read<double>(numbers + i * sizeof(double))));
    }
    return array;
}

// Rows and columns in front of type K's numbers; negative ones are none.
std::pair<std::size_t, std::size_t> Shape(ValueType type, const void* rows, const void* columns) {
    const auto size = [&](const void* place) -> std::size_t {
        if (!type.wide) return Read<WORD>(place);
        return static_cast<std::size_t>(std::max(Read<std::int32_t>(place), std::int32_t{0}));
    };
    return {size(rows), size(columns)};
}
constexpr std::size_t kArrayHead = offsetof(FP12, array);

Value NumbersFrom(ValueType type, const std::byte* place) {
    const auto [rows, columns] = Shape(type, place, place + (type.wide ? 4 : 2));
    return ArrayFrom(rows, columns, place + kArrayHead);
}

// At most `room` bytes are looked at.
Value TextFrom(ValueType type, const std::byte* place, std::size_t room) {
    const bool counted = IsOneOf(type, "DG");
    if (type.wide) {
        const auto* units = reinterpret_cast<const XCHAR*>(place);
        const std::size_t most = std::min(room / sizeof(XCHAR) - 1, kTextLimit);
        if (counted) return units[0] <= most ? Value(Text(units + 1, units[0])) : ErrorValue{xlerrValue};
        std::size_t length = 0;
        while (length < most && units[length] != 0) ++length;
        return Text(units, length);
    }
    const auto* bytes = reinterpret_cast<const char*>(place);
    const std::size_t most = std::min(room - 1, kNarrowLimit);
    if (counted) {
        const auto count = static_cast<unsigned char>(bytes[0]);
        return count <= most ? Value(TextFromAnsi({bytes + 1, count})) : ErrorValue{xlerrValue};
    }
    std::size_t length = 0;
    while (length < most && bytes[length] != 0) ++length;
    return TextFromAnsi({bytes, length});
}

}  // namespace

Signature SignatureOf(const TypeText& type) {
    std::vector<Passing> arguments;
    for (std::size_t i = 0; i <= type.arguments.size(); ++i) {
        if (type.asynchronous && i == type.handle) arguments.push_back(Passing::Pointer);
        if (i == type.arguments.size()) break;
        const std::size_t words = type.arguments[i].letter == 'O' ? 3 : 1;
        arguments.insert(arguments.end(), words, type.arguments[i].passing);
    }
    return {type.result.passing, arguments};
}

bool TakesOneValue(ValueType type) noexcept {
    return !IsOneOf(type, "KOPQRU");
}

LentArguments::LentArguments(const TypeText& type) : type_(type) {
    std::size_t records = 0;
    for (const ValueType& argument : type.arguments) {
        if (IsOneOf(argument, "PR")) records += sizeof(XLOPER);
        if (IsOneOf(argument, "QU")) records += sizeof(XLOPER12);
    }
    words_.reserve(type.arguments.size() + 1);
    pieces_.reserve(type.arguments.size());
    // New records first: the size of an old one is a multiple of 8 as well.
    if (records != 0) NewBlock(records);
}

std::byte* LentArguments::NewBlock(std::size_t size) {
    return blocks_.emplace_back(size).Payload();
}

template <class T>
void LentArguments::AddCell(T content) {
    std::byte* place = NewBlock(sizeof content);
    std::memcpy(place, &content, sizeof content);
    words_.push_back(WordFrom(static_cast<const void*>(place)));
}

std::optional<ErrorValue> LentArguments::Add(const Value& value) {
    if (type_.asynchronous && type_.handle == next_) words_.push_back(WordFrom(handle_));
    const ValueType type = type_.arguments[next_];
    ++next_;
    pieces_.push_back({words_.size(), blocks_.size()});
    std::optional<ErrorValue> error;
    if (TakesOneValue(type)) {
        error = AddOneValue(type, OneValue(value));
    } else if (IsOneOf(type, "KO")) {
        error = AddNumbers(type, value);
    } else {
        AddRecord(type, value);
    }
    // F and G are lent to be written into; anything else only where the type text says so.
    mayChange_.resize(blocks_.size(), IsOneOf(type, "FG") || type_.inPlace == next_);
    return error;
}

std::optional<ErrorValue> LentArguments::AddOneValue(ValueType type, const Value& value) {
    if (IsOneOf(type, "CDFG")) {
        Text text;
        if (const auto error = ToText(value, text)) return error;
        AddText(type, text);
        return std::nullopt;
    }
    if (IsOneOf(type, "AL")) {
        bool truth = false;
        if (const auto error = ToTruth(value, truth)) return error;
        if (type.letter == 'A') {
            words_.push_back(WordFrom(std::int64_t{truth}));
        } else {
            AddCell(static_cast<std::int16_t>(truth));
        }
        return std::nullopt;
    }
    double number = 0;
    if (const auto error = ToNumber(value, number)) return error;
    std::int64_t whole = 0;
    std::optional<ErrorValue> error;
    switch (type.letter) {
        case 'B':
            words_.push_back(WordFrom(number));
            break;
        case 'E':
            AddCell(number);
            break;
        case 'H':
            error = Whole<WORD>(number, whole);
            words_.push_back(WordFrom(whole));
            break;
        case 'I':
            error = Whole<std::int16_t>(number, whole);
            words_.push_back(WordFrom(whole));
            break;
        case 'J':
            error = Whole<std::int32_t>(number, whole);
            words_.push_back(WordFrom(whole));
            break;
        case 'M':
            error = Whole<std::int16_t>(number, whole);
            AddCell(static_cast<std::int16_t>(whole));
            break;
        default:  // N
            error = Whole<std::int32_t>(number, whole);
            AddCell(static_cast<std::int32_t>(whole));
    }
    return error;
}

void LentArguments::AddText(ValueType type, TextView text) {
    const bool isBuffer = IsOneOf(type, "FG");
    const std::size_t skipped = IsOneOf(type, "DG") ? 1 : 0;  // for the count
    if (type.wide) {
        const std::size_t length = std::min(text.size(), kTextLimit);
        auto* units =
            reinterpret_cast<XCHAR*>(NewBlock(isBuffer ? kWideBuffer : (length + 1) * sizeof(XCHAR)));
        if (skipped != 0) units[0] = static_cast<XCHAR>(length);
        std::copy_n(text.data(), length, units + skipped);
        words_.push_back(WordFrom(static_cast<const void*>(units)));
        return;
    }
    const std::string ansi = AnsiFrom(text, kNarrowLimit);
    std::byte* bytes = NewBlock(isBuffer ? kNarrowBuffer : ansi.size() + 1);
    if (skipped != 0) bytes[0] = static_cast<std::byte>(ansi.size());
    std::memcpy(bytes + skipped, ansi.data(), ansi.size());
    words_.push_back(WordFrom(static_cast<const void*>(bytes)));
}

std::optional<ErrorValue> LentArguments::AddNumbers(ValueType type, const Value& value) {
    const Array* array = value.If<Array>();
    const Value single = array != nullptr ? Value() : OneValue(value);
    const std::span<const Value> cells =
        array != nullptr ? std::span<const Value>(array->cells) : std::span<const Value>(&single, 1);
    const std::size_t rows = array != nullptr ? array->rows : 1;
    const std::size_t columns = array != nullptr ? array->columns : 1;
    if (!type.wide && rows > std::numeric_limits<WORD>::max()) return ErrorValue{xlerrValue};
    std::vector<double> numbers;
    numbers.reserve(cells.size());
    for (const Value& cell : cells) {
        // Text isn't read as a number here.
        if (cell.Is<Text>()) return ErrorValue{xlerrValue};
        double number = 0;
        if (const auto error = ToNumber(cell, number)) return error;
        numbers.push_back(number);
    }
    AddArray(type, rows, columns, numbers);
    return std::nullopt;
}

void LentArguments::AddArray(ValueType type, std::size_t rows, std::size_t columns,
                             std::span<const double> numbers) {
    const auto setSize = [&](std::byte* place, std::size_t size) {
        const auto wide = static_cast<std::int32_t>(size);
        const auto narrow = static_cast<WORD>(size);
        if (type.wide) {
            std::memcpy(place, &wide, sizeof wide);
        } else {
            std::memcpy(place, &narrow, sizeof narrow);
        }
    };
    const std::size_t sizeBytes = type.wide ? sizeof(std::int32_t) : sizeof(WORD);
    if (type.letter == 'K') {
        std::byte* place = NewBlock(kArrayHead + numbers.size_bytes());
        setSize(place, rows);
        setSize(place + sizeBytes, columns);
        std::memcpy(place + kArrayHead, numbers.data(), numbers.size_bytes());
        words_.push_back(WordFrom(static_cast<const void*>(place)));
        return;
    }
    for (const std::size_t size : {rows, columns}) {
        std::byte* place = NewBlock(sizeBytes);
        setSize(place, size);
        words_.push_back(WordFrom(static_cast<const void*>(place)));
    }
    std::byte* place = NewBlock(numbers.size_bytes());
    std::memcpy(place, numbers.data(), numbers.size_bytes());
    words_.push_back(WordFrom(static_cast<const void*>(place)));
}

void LentArguments::AddRecord(ValueType type, const Value& value) {
    const auto place = [&](const auto& record) {
        std::byte* bytes = blocks_.front().Payload() + records_;
        std::memcpy(bytes, &record, sizeof record);
        records_ += sizeof record;
        words_.push_back(WordFrom(static_cast<const void*>(bytes)));
    };
    if (IsOneOf(type, "PR")) {
        place(OldRecordFrom(value, blocks_));
    } else {
        place(RecordFrom(value, blocks_));
    }
}

std::span<Word> LentArguments::Seal() {
    if (type_.asynchronous && type_.handle == next_) words_.push_back(WordFrom(handle_));
    mayChange_.resize(blocks_.size(), false);
    std::size_t size = 0;
    for (std::size_t i = 0; i < blocks_.size(); ++i) {
        if (!mayChange_[i]) size += blocks_[i].All().size();
    }
    before_.reserve(size);
    for (std::size_t i = 0; i < blocks_.size(); ++i) {
        const auto bytes = blocks_[i].All();
        if (!mayChange_[i]) before_.insert(before_.end(), bytes.begin(), bytes.end());
    }
    return words_;
}

LentArguments::Harm LentArguments::Inspect() const {
    Harm harm = Harm::None;
    const std::byte* before = before_.data();
    for (std::size_t i = 0; i < blocks_.size(); ++i) {
        if (!blocks_[i].GuardsAreIntact()) return Harm::Overrun;
        if (mayChange_[i]) continue;
        const auto bytes = blocks_[i].All();
        if (std::memcmp(before, bytes.data(), bytes.size()) != 0) harm = Harm::Changed;
        before += bytes.size();
    }
    return harm;
}

Value LentArguments::Changed(std::size_t argument) const {
    const ValueType type = type_.arguments[argument - 1];
    const Piece piece = pieces_[argument - 1];
    const auto* place = static_cast<const std::byte*>(words_[piece.word].pointer);
    const std::size_t room = blocks_[piece.block].Size();
    if (IsOneOf(type, "FG")) return TextFrom(type, place, room);
    if (type.letter == 'K') {
        const auto [rows, columns] = Shape(type, place, place + (type.wide ? 4 : 2));
        if (rows > (room - kArrayHead) / sizeof(double) / std::max<std::size_t>(columns, 1)) {
            return ErrorValue{xlerrValue};
        }
        return ArrayFrom(rows, columns, place + kArrayHead);
    }
    if (type.letter == 'O') {
        const auto [rows, columns] = Shape(type, place, words_[piece.word + 1].pointer);
        const std::size_t numbers = blocks_[piece.block + 2].Size() / sizeof(double);
        if (rows > numbers / std::max<std::size_t>(columns, 1)) return ErrorValue{xlerrValue};
        return ArrayFrom(rows, columns, static_cast<const std::byte*>(words_[piece.word + 2].pointer));
    }
    return ResultFrom(type, words_[piece.word]);
}

Value ResultFrom(ValueType type, Word result) {
    switch (type.passing) {
        case Passing::Short: {
            const auto number = static_cast<std::int16_t>(result.integer);
            return type.letter == 'A' ? Value(number != 0) : Value(static_cast<double>(number));
        }
        case Passing::UnsignedShort:
            return static_cast<double>(static_cast<WORD>(result.integer));
        case Passing::Long:
            return static_cast<double>(static_cast<std::int32_t>(result.integer));
        case Passing::Double:
            return FiniteNumber(result.number);
        case Passing::Nothing:
            return Empty{};
        case Passing::Pointer:
            break;
    }
    if (result.pointer == nullptr) return ErrorValue{xlerrNum};
    const auto* place = static_cast<const std::byte*>(result.pointer);
    switch (type.letter) {
        case 'E':
            return FiniteNumber(Read<double>(place));
        case 'L':
            return Read<std::int16_t>(place) != 0;
        case 'M':
            return static_cast<double>(Read<std::int16_t>(place));
        case 'N':
            return static_cast<double>(Read<std::int32_t>(place));
        case 'K':
            return NumbersFrom(type, place);
        case 'P':
        case 'R':
            return ValueFrom(*static_cast<const XLOPER*>(result.pointer));
        case 'Q':
        case 'U':
            return ValueFrom(*static_cast<const XLOPER12*>(result.pointer));
        default:
            return TextFrom(type, place, std::numeric_limits<std::size_t>::max());
    }
}

}  // namespace excelhost
