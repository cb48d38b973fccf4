#include "excelhost/csv.h"

namespace excelhost {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

class CsvReader {
  public:
    explicit CsvReader(std::string_view text) : text_(text) {
        if (text_.starts_with(kByteOrderMark)) text_.remove_prefix(kByteOrderMark.size());
    }

    CsvTable Read(RowLength length) {
        while (next_ < text_.size()) {
            ReadRow();
            const std::size_t width = table_.front().size();
            const std::size_t found = table_.back().size();
            if (found != width && length == RowLength::Equal) {
                throw CellFault(table_.size(), found < width ? found + 1 : width + 1,
                                "the row has " + std::to_string(found) + " fields, the first one has " +
                                    std::to_string(width));
            }
        }
        return std::move(table_);
    }

  private:
    void ReadRow() {
        table_.emplace_back();
        do {
            table_.back().emplace_back();
            if (Peek() == '"') {
                ReadQuoted();
            } else {
                ReadPlain();
            }
        } while (Take(','));
        if (next_ < text_.size() && !TakeLineEnd()) throw FaultHere("text stands behind the closing quote");
    }

    void ReadPlain() {
        const std::size_t end = std::min(text_.find_first_of(",\"\r\n", next_), text_.size());
        table_.back().back() = text_.substr(next_, end - next_);
        next_ = end;
        if (Peek() == '"') throw FaultHere("a quote stands inside a field that isn't quoted");
        if (Peek() == '\r' && !text_.substr(next_).starts_with("\r\n"))
            throw FaultHere("a carriage return stands alone");
    }

    void ReadQuoted() {
        std::string& field = table_.back().back();
        ++next_;
        for (;;) {
            const std::size_t end = text_.find('"', next_);
            if (end == std::string_view::npos) throw FaultHere("the quote isn't closed");
            field += text_.substr(next_, end - next_);
            next_ = end + 1;
            if (!Take('"')) return;
            field += '"';
        }
    }

    bool TakeLineEnd() { return text_.substr(next_).starts_with("\r\n") ? (next_ += 2, true) : Take('\n'); }
    bool Take(char wanted) { return Peek() == wanted && next_ < text_.size() ? (++next_, true) : false; }
    [[nodiscard]] char Peek() const { return next_ < text_.size() ? text_[next_] : '\0'; }
    [[nodiscard]] CellFault FaultHere(const char* message) const {
        return {table_.size(), table_.back().size(), message};
    }

    std::string_view text_;
    std::size_t next_ = 0;
    CsvTable table_;
};

}  // namespace

CsvTable ParseCsv(std::string_view text, RowLength length) {
    return CsvReader(text).Read(length);
}

std::string CsvLine(const std::vector<std::string>& fields) {
    std::string line;
    for (const std::string& field : fields) {
        if (&field != fields.data()) line += ',';
        // A byte-order mark in front of all would be skipped.
        if (field.find_first_of(",\"\r\n") == std::string::npos && !field.starts_with(kByteOrderMark)) {
            line += field;
            continue;
        }
        line += '"';
        for (const char c : field) line.append(c == '"' ? 2 : 1, c);
        line += '"';
    }
    return line += '\n';
}

}  // namespace excelhost
