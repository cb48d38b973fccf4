#include "excelhost/automation/address.h"

#include <algorithm>

namespace excelhost::automation {
namespace {

// 1 to 26 for a letter of either case, else 0.
LONG LetterValue(WCHAR unit) noexcept {
    if (unit >= TEXT('A') && unit <= TEXT('Z')) return static_cast<LONG>(unit - TEXT('A')) + 1;
    if (unit >= TEXT('a') && unit <= TEXT('z')) return static_cast<LONG>(unit - TEXT('a')) + 1;
    return 0;
}

bool Take(TextView& text, WCHAR unit) noexcept {
    if (text.empty() || text.front() != unit) return false;
    text.remove_prefix(1);
    return true;
}

LONG TakeColumn(TextView& text, LONG limit) noexcept {
    LONG column = 0;
    for (; !text.empty() && LetterValue(text.front()) != 0 && column <= limit; text.remove_prefix(1)) {
        column = column * 26 + LetterValue(text.front());
    }
    return column <= limit ? column : 0;
}

LONG TakeRow(TextView& text, LONG limit) noexcept {
    LONG row = 0;
    for (; !text.empty() && IsDigit(text.front()) && row <= limit; text.remove_prefix(1)) {
        row = row * 10 + static_cast<LONG>(text.front() - TEXT('0'));
    }
    return row <= limit ? row : 0;
}

// One end of an area: a cell, a column alone or a row alone; what is missing stays 0.
std::optional<CellReference> TakeEnd(TextView& text, const SheetLimits& limits) {
    CellReference end;
    end.columnAbsolute = Take(text, TEXT('$'));
    end.column = TakeColumn(text, limits.columns);
    if (end.column == 0) {
        end.rowAbsolute = end.columnAbsolute;
    } else {
        end.rowAbsolute = Take(text, TEXT('$'));
    }
    end.row = TakeRow(text, limits.rows);
    if (end.row == 0 && end.column == 0) return std::nullopt;
    return end;
}

std::optional<Rect> TakeArea(TextView& text, const SheetLimits& limits) {
    const auto first = TakeEnd(text, limits);
    if (!first) return std::nullopt;
    auto last = first;
    if (Take(text, TEXT(':'))) {
        last = TakeEnd(text, limits);
        if (!last || (first->row == 0) != (last->row == 0) || (first->column == 0) != (last->column == 0)) {
            return std::nullopt;
        }
    } else if (first->row == 0 || first->column == 0) {
        return std::nullopt;
    }
    Rect rect{std::min(first->row, last->row), std::min(first->column, last->column),
              std::max(first->row, last->row), std::max(first->column, last->column)};
    if (rect.row1 == 0) rect.row1 = 1, rect.row2 = limits.rows;
    if (rect.column1 == 0) rect.column1 = 1, rect.column2 = limits.columns;
    return rect;
}

// Takes "Sheet1!" or "'[Book.xlsx]My Sheet'!" off the front; false for a prefix without a sheet.
bool TakePrefix(TextView& text, Address& address) {
    const auto bang = text.rfind(TEXT('!'));
    if (bang == TextView::npos) return true;
    TextView prefix = text.substr(0, bang);
    text.remove_prefix(bang + 1);
    if (prefix.size() >= 2 && prefix.front() == TEXT('\'') && prefix.back() == TEXT('\'')) {
        prefix = prefix.substr(1, prefix.size() - 2);
    }
    if (const auto bracket = prefix.find(TEXT(']')); !prefix.empty() && prefix.front() == TEXT('[')) {
        if (bracket == TextView::npos) return false;
        address.workbook = prefix.substr(1, bracket - 1);
        prefix.remove_prefix(bracket + 1);
    }
    address.sheet = prefix;
    return !prefix.empty();
}

Text ColumnLetters(LONG column) {
    Text letters;
    for (; column > 0; column = (column - 1) / 26) {
        letters.insert(letters.begin(), static_cast<WCHAR>(TEXT('A') + (column - 1) % 26));
    }
    return letters;
}

}  // namespace

Text Decimal(LONG number) {
    const std::string digits = std::to_string(number);
    return Text(digits.begin(), digits.end());
}

std::optional<CellReference> TakeCell(TextView& text, const SheetLimits& limits) {
    TextView rest = text;
    const auto cell = TakeEnd(rest, limits);
    if (!cell || cell->row == 0 || cell->column == 0) return std::nullopt;
    text = rest;
    return cell;
}

std::optional<Address> ParseAddress(TextView text, const SheetLimits& limits) {
    Address address;
    if (!TakePrefix(text, address)) return std::nullopt;
    do {
        const auto area = TakeArea(text, limits);
        if (!area) return std::nullopt;
        address.areas.push_back(*area);
    } while (Take(text, TEXT(',')));
    if (!text.empty()) return std::nullopt;
    return address;
}

Text FormatA1(const Rect& rect, bool rowAbsolute, bool columnAbsolute, const SheetLimits& limits) {
    const Text rowMark = rowAbsolute ? TEXT("$") : TEXT("");
    const Text columnMark = columnAbsolute ? TEXT("$") : TEXT("");
    const Text row1 = rowMark + Decimal(rect.row1);
    const Text row2 = rowMark + Decimal(rect.row2);
    if (rect.Columns() == limits.columns) return row1 + TEXT(":") + row2;
    const Text column1 = columnMark + ColumnLetters(rect.column1);
    const Text column2 = columnMark + ColumnLetters(rect.column2);
    if (rect.Rows() == limits.rows) return column1 + TEXT(":") + column2;
    return rect.Cells() == 1 ? column1 + row1 : column1 + row1 + TEXT(":") + column2 + row2;
}

Text FormatR1C1(const CellReference& cell, const CellReference& base) {
    const auto part = [](const WCHAR* letter, bool absolute, LONG value, LONG origin) {
        if (absolute) return letter + Decimal(value);
        return value == origin ? Text(letter) : letter + (TEXT("[") + Decimal(value - origin)) + TEXT("]");
    };
    return part(TEXT("R"), cell.rowAbsolute, cell.row, base.row) +
           part(TEXT("C"), cell.columnAbsolute, cell.column, base.column);
}

Text SheetPrefix(TextView workbook, TextView sheet) {
    const auto plain = [](TextView name) {
        return !name.empty() && !IsDigit(name.front()) &&
               std::all_of(name.begin(), name.end(), [](WCHAR unit) {
                   return LetterValue(unit) != 0 || IsDigit(unit) || unit == TEXT('_') || unit == TEXT('.');
               });
    };
    Text inner;
    if (!workbook.empty()) inner = TEXT("[") + Text(workbook) + TEXT("]");
    inner += sheet;
    const bool quoted = !plain(sheet) || (!workbook.empty() && !plain(workbook));
    return quoted ? TEXT("'") + inner + TEXT("'!") : inner + TEXT("!");
}

}  // namespace excelhost::automation
