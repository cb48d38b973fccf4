#include "excelhost/oldvalues.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace excelhost {
namespace {

constexpr std::size_t kOldTextLimit = 255;
constexpr RW kOldRowLimit = 65536;
constexpr COL kOldColumnLimit = 256;
constexpr int kDeepestArray = 8;

XLOPER OfType(DWORD type) {
    XLOPER record{};
    record.xltype = static_cast<WORD>(type);
    return record;
}

XLOPER OldError(int number) {
    XLOPER record = OfType(xltypeErr);
    record.val.err = static_cast<WORD>(number);
    return record;
}

bool FitsOldSheet(const XLREF12& r) {
    return r.rwLast < kOldRowLimit && r.colLast < kOldColumnLimit;
}

XLREF OldRectangle(const XLREF12& r) {
    return {static_cast<WORD>(r.rwFirst), static_cast<WORD>(r.rwLast), static_cast<BYTE>(r.colFirst),
            static_cast<BYTE>(r.colLast)};
}

Area AreaFrom(const XLREF& r) {
    return Area{{r.rwFirst, r.rwLast, r.colFirst, r.colLast}};
}

struct OldRecordMaker {
    Blocks& blocks;

    XLOPER operator()(Empty) const { return OfType(xltypeNil); }
    XLOPER operator()(Missing) const { return OfType(xltypeMissing); }
    XLOPER operator()(double number) const {
        XLOPER record = OfType(xltypeNum);
        record.val.num = number;
        return record;
    }
    // A whole number beyond 16 bits goes as a double.
    XLOPER operator()(int number) const {
        if (number != static_cast<std::int16_t>(number)) return (*this)(static_cast<double>(number));
        XLOPER record = OfType(xltypeInt);
        record.val.w = static_cast<std::int16_t>(number);
        return record;
    }
    XLOPER operator()(bool truth) const {
        XLOPER record = OfType(xltypeBool);
        record.val.xbool = truth ? 1 : 0;
        return record;
    }
    XLOPER operator()(ErrorValue error) const { return OldError(error.number); }
    XLOPER operator()(const Text& text) const {
        const std::string ansi = AnsiFrom(text, kOldTextLimit);
        auto* bytes = reinterpret_cast<BYTE*>(blocks.emplace_back(ansi.size() + 2).Payload());
        bytes[0] = static_cast<BYTE>(ansi.size());
        std::copy(ansi.begin(), ansi.end(), bytes + 1);
        XLOPER record = OfType(xltypeStr);
        record.val.str = bytes;
        return record;
    }
    XLOPER operator()(const Area& area) const {
        if (!FitsOldSheet(area.rectangle)) return OldError(xlerrRef);
        XLOPER record = OfType(xltypeSRef);
        record.val.sref.count = 1;
        record.val.sref.ref = OldRectangle(area.rectangle);
        return record;
    }
    XLOPER operator()(const Reference& reference) const {
        for (const Area& area : reference.areas) {
            if (!FitsOldSheet(area.rectangle)) return OldError(xlerrRef);
        }
        const std::size_t count =
            std::min<std::size_t>(reference.areas.size(), std::numeric_limits<WORD>::max());
        std::byte* block =
            blocks.emplace_back(sizeof(XLMREF) + (count > 1 ? count - 1 : 0) * sizeof(XLREF)).Payload();
        const auto count16 = static_cast<WORD>(count);
        std::memcpy(block, &count16, sizeof count16);
        for (std::size_t i = 0; i < count; ++i) {
            const XLREF rectangle = OldRectangle(reference.areas[i].rectangle);
            std::memcpy(block + offsetof(XLMREF, reflref) + i * sizeof(XLREF), &rectangle, sizeof rectangle);
        }
        XLOPER record = OfType(xltypeRef);
        record.val.mref.lpmref = reinterpret_cast<XLMREF*>(block);
        record.val.mref.idSheet = reference.sheet;
        return record;
    }
    XLOPER operator()(BigData) const { return OldError(xlerrValue); }
    XLOPER operator()(const Array& array) const {
        const std::size_t most = std::numeric_limits<WORD>::max();
        const std::size_t rows = std::min(array.rows, most);
        auto* elements =
            reinterpret_cast<XLOPER*>(blocks.emplace_back(rows * array.columns * sizeof(XLOPER)).Payload());
        for (std::size_t i = 0; i < rows * array.columns; ++i) {
            elements[i] = std::visit(OldRecordMaker{blocks}, array.cells[i]);
        }
        XLOPER record = OfType(xltypeMulti);
        record.val.array.lparray = elements;
        record.val.array.rows = static_cast<WORD>(rows);
        record.val.array.columns = static_cast<WORD>(array.columns);
        return record;
    }
};

Value OldReferenceFrom(const XLOPER& record) {
    Reference reference;
    reference.sheet = record.val.mref.idSheet;
    if (const XLMREF* block = record.val.mref.lpmref) {
        const auto* bytes = reinterpret_cast<const std::byte*>(block) + offsetof(XLMREF, reflref);
        for (std::size_t i = 0; i < block->count; ++i) {
            XLREF rectangle;
            std::memcpy(&rectangle, bytes + i * sizeof(XLREF), sizeof rectangle);
            if (rectangle.rwFirst > rectangle.rwLast || rectangle.colFirst > rectangle.colLast) {
                return ErrorValue{xlerrRef};
            }
            reference.areas.push_back(AreaFrom(rectangle));
        }
    }
    return reference;
}

Value ValueFrom(const XLOPER& record, int depth) {
    switch (record.xltype & 0xFFF) {
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
            return OldReferenceFrom(record);
        case xltypeSRef: {
            const XLREF& r = record.val.sref.ref;
            if (record.val.sref.count != 1 || r.rwFirst > r.rwLast || r.colFirst > r.colLast) {
                return ErrorValue{xlerrRef};
            }
            return AreaFrom(r);
        }
        case xltypeStr: {
            const BYTE* bytes = record.val.str;
            if (bytes == nullptr) break;
            return TextFromAnsi({reinterpret_cast<const char*>(bytes) + 1, bytes[0]});
        }
        case xltypeMulti: {
            const auto& given = record.val.array;
            if (depth == kDeepestArray || given.lparray == nullptr || given.rows == 0 || given.columns == 0)
                break;
            Array array{given.rows, given.columns, {}};
            array.cells.reserve(array.rows * array.columns);
            for (std::size_t i = 0; i < array.rows * array.columns; ++i) {
                array.cells.push_back(ValueFrom(given.lparray[i], depth + 1));
            }
            return array;
        }
        default:
            break;
    }
    return ErrorValue{xlerrValue};
}

}  // namespace

XLOPER OldRecordFrom(const Value& value, Blocks& blocks) {
    return std::visit(OldRecordMaker{blocks}, value);
}

Value ValueFrom(const XLOPER& record) {
    return ValueFrom(record, 0);
}

std::string AnsiFrom(TextView text, std::size_t most) {
    if (text.empty()) return {};
    const int units = static_cast<int>(text.size());
    const int bytes = WideCharToMultiByte(CP_ACP, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string ansi(static_cast<std::size_t>(bytes), char{});
    WideCharToMultiByte(CP_ACP, 0, text.data(), units, ansi.data(), bytes, nullptr, nullptr);
    if (ansi.size() > most) ansi.resize(most);
    return ansi;
}

Text TextFromAnsi(std::string_view ansi) {
    if (ansi.empty()) return {};
    const int bytes = static_cast<int>(ansi.size());
    const int units = MultiByteToWideChar(CP_ACP, 0, ansi.data(), bytes, nullptr, 0);
    Text text(static_cast<std::size_t>(units), WCHAR{});
    MultiByteToWideChar(CP_ACP, 0, ansi.data(), bytes, text.data(), units);
    return text;
}

}  // namespace excelhost
