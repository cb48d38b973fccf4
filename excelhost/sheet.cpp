#include "excelhost/sheet.h"

#include "excelhost/numbers.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace excelhost {
namespace {

CellFault FaultAt(Place place, const std::string& message) {
    return {static_cast<std::size_t>(place.row) + 1, static_cast<std::size_t>(place.column) + 1, message};
}

// UTF-16 by its byte-order mark, or by the zero bytes of the digits and commas that any sheet begins with.
bool LooksLikeUtf16(std::string_view text) {
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) return true;
    return text.size() > 3 && text.size() % 2 == 0 &&
           ((text[0] == 0 && text[2] == 0 && text[1] != 0) || (text[1] == 0 && text[3] == 0 && text[0] != 0));
}

// The first field that isn't UTF-8; the whole file is then in another encoding.
CellFault EncodingFault(const CsvTable& table) {
    for (std::size_t row = 0; row < table.size(); ++row) {
        for (std::size_t column = 0; column < table[row].size(); ++column) {
            const std::string& field = table[row][column];
            const std::size_t good = Utf8Prefix(field);
            if (good == field.size()) continue;
            const auto byte = static_cast<unsigned char>(field[good]);
            const std::string shown = {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 0xF]};
            const std::string where = "the text isn't UTF-8: byte " + shown + " behind '" +
                                      Excerpt(std::string_view(field).substr(0, good), 60) + "'";
            const bool isLatin1 = byte >= 0xA0;
            const std::string what = isLatin1 ? " is '" + Utf8(Text(1, WCHAR{byte})) + "' in Latin-1"
                                              : " is in Windows-1252, perhaps";
            return {row + 1, column + 1, where + what + "; save the sheet as UTF-8"};
        }
    }
    return {1, 1, "the text isn't UTF-8"};
}

Value FromField(const std::string& field, Text text) {
    double number = 0;
    if (ReadTypedNumber(field, number)) return number;
    if (SameName(text, TEXT("TRUE"))) return true;
    if (SameName(text, TEXT("FALSE"))) return false;
    if (const int error = ErrorNumber(field); error >= 0) return ErrorValue{error};
    return text;
}

// The text of a field that is one text in a formula, ="...".
std::optional<Text> TextFromFormula(TextView field) {
    if (!field.starts_with(TEXT("=\"")) || !field.ends_with('"') || field.size() < 3) return std::nullopt;
    field = field.substr(2, field.size() - 3);
    Text text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '"' && (++i == field.size() || field[i] != '"')) return std::nullopt;
        text += field[i];
    }
    return text;
}

std::string FieldText(const Value& value) {
    const Text* text = value.If<Text>();
    if (text == nullptr || text->size() < 2 || text->front() != '=') return CellText(value);
    std::string field = "=\"";
    for (const char c : Utf8(*text)) field.append(c == '"' ? 2 : 1, c);
    return field + "\"";
}

}  // namespace

CsvTable ReadTable(std::string_view csv, RowLength length) try {
    if (LooksLikeUtf16(csv)) throw CellFault(1, 1, "the text is UTF-16; save the sheet as UTF-8");
    CsvTable table = ParseCsv(csv, length);
    if (Utf8Prefix(csv) != csv.size()) throw EncodingFault(table);
    return table;
} catch (const CellFault& fault) {
    throw SheetFaults({fault});
}

Value ValueFromField(const std::string& field) {
    Text text = Wide(field);
    if (auto given = TextFromFormula(text)) return *std::move(given);
    return FromField(field, std::move(text));
}

Sheet::Sheet(std::string_view csv, std::span<const Text> names) {
    const CsvTable table = ReadTable(csv);
    const std::size_t columns = table.empty() ? 0 : table.front().size();
    if (table.size() > static_cast<std::size_t>(kRowLimit)) {
        throw SheetFaults({CellFault(kRowLimit + 1, 1, "a sheet has at most 1,048,576 rows")});
    }
    if (columns > static_cast<std::size_t>(kColumnLimit)) {
        throw SheetFaults({CellFault(1, kColumnLimit + 1, "a sheet has at most 16,384 columns")});
    }
    values_ = Grid(static_cast<RW>(table.size()), static_cast<COL>(columns));
    std::vector<CellFault> faults;
    for (Place place; place.row < values_.Rows(); ++place.row) {
        for (place.column = 0; place.column < values_.Columns(); ++place.column) {
            try {
                Read(place,
                     table[static_cast<std::size_t>(place.row)][static_cast<std::size_t>(place.column)],
                     names);
            } catch (const CellFault& fault) {
                faults.push_back(fault);
            }
        }
    }
    if (!faults.empty()) throw SheetFaults(std::move(faults));
}

void Sheet::Read(Place place, const std::string& field, std::span<const Text> names) {
    if (field.empty()) return;
    Text text = Wide(field);
    const bool isFormula = text.size() > 1 && text.front() == '=';
    auto given = isFormula ? TextFromFormula(text) : std::nullopt;
    if (isFormula && !given) {
        try {
            formulas_.push_back({place, ParseFormula(text, names)});
        } catch (const FormulaFault& fault) {
            throw FaultAt(place, "bad formula " + Excerpt(text) + ": at character " +
                                     std::to_string(fault.Position()) + ", " + fault.what());
        }
        return;
    }
    const std::size_t length = given ? given->size() : text.size();
    if (length > kTextLimit) throw FaultAt(place, "a text has at most 32,767 characters");
    values_.Set(place, given ? Value(std::move(*given)) : FromField(field, std::move(text)));
}

std::string CellText(const Value& value) {
    Text text;
    const auto error = ToText(value, text);
    return error ? ErrorName(error->number) : Utf8(text);
}

std::string Sheet::Csv() const {
    std::string csv;
    std::vector<std::string> line(static_cast<std::size_t>(values_.Columns()));
    for (Place place; place.row < values_.Rows(); ++place.row) {
        for (place.column = 0; place.column < values_.Columns(); ++place.column) {
            line[static_cast<std::size_t>(place.column)] = FieldText(values_.At(place));
        }
        csv += CsvLine(line);
    }
    return csv;
}

}  // namespace excelhost
