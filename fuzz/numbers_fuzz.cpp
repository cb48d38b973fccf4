// Column letters in any text; doubles of any bits with any count of digits, read back.
#include "fuzz.h"

#include "text/numbers.h"

#include <charconv>
#include <cmath>
#include <cstring>

using fuzz::Check;

namespace {

template <typename Unit>
void CheckColumn(const CStringT<Unit>& text) {
    const Unit* cursor = text;
    const std::uint16_t column = ColumnIndexFromLetters(&cursor);
    const auto moved = static_cast<int>(cursor - text.GetString());
    Check(moved <= 3 && (column == noColumn) == (moved == 0), "a column has one to three letters");
    if (moved > 0) {
        Check(CStringW(text.Left(moved)).MakeUpper() == ColumnLettersFromIndex(column),
              "its letters give it");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CheckColumn(fuzz::Narrow({data, size}));
    CheckColumn(fuzz::Wide({data, size}));
    if (size < 10) return 0;

    double value = 0;
    std::int64_t whole = 0;
    std::int16_t digits = 0;
    std::memcpy(&value, data, 8);
    std::memcpy(&whole, data, 8);
    std::memcpy(&digits, data + 8, 2);
    CStringA grouped = CStringAFromInt64Grouped(whole);
    grouped.Replace(",", "");
    Check(grouped == std::to_string(whole).c_str(), "grouped digits are those of the number");

    const CStringA text(CStringWFromDouble(value, digits, '.'));
    if (!std::isfinite(value)) return 0;
    double back = 0;
    const char* const end = text.GetString() + text.GetLength();
    const auto read = std::from_chars(text, end, back);
    if (read.ec == std::errc::result_out_of_range) return 0;  // rounded to above the largest
    Check(read.ec == std::errc() && read.ptr == end, "the text is a number");
    Check(digits < 17 || back == value, "17 digits give the number back");
    return 0;
}
