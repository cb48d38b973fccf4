#include "text/rendering.h"

#include "text/detail/bytecoding.h"
#include "text/detail/cstringlength.h"
#include "text/detail/digits.h"
#include "text/escapes.h"
#include "text/format.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace {

template <typename Text, typename Unit>
void Append(Text& text, const Unit* units, std::size_t count) {
    text.Append(units, kestrolumen::detail::CStringLength(count, "list as text: longer than 2^31 - 2 units"));
}

void Append(std::string& text, const char* units, std::size_t count) {
    text.append(units, count);
}

// Collects pieces of text on the stack, so that the result grows in a few large steps.
template <typename Text>
class Line {
  public:
    using Unit = std::remove_cvref_t<decltype(std::declval<Text&>()[0])>;
    using View = std::basic_string_view<Unit>;

    // A place for up to `most` units, which Advance takes up to its end.
    Unit* Room(std::size_t most) {
        if (static_cast<std::size_t>(std::end(units_) - end_) < most) Flush();
        return end_;
    }
    void Advance(Unit* end) noexcept { end_ = end; }

    void Put(View view) {
        if (view.size() > std::size(units_)) {
            Flush();
            Append(text_, view.data(), view.size());
        } else {
            Advance(std::copy(view.begin(), view.end(), Room(view.size())));
        }
    }
    void PutAscii(std::string_view ascii) {
        Advance(std::copy(ascii.begin(), ascii.end(), Room(ascii.size())));
    }
    void PutQuoted(View view) {
        PutAscii("\"");
        Put(view);
        PutAscii("\"");
    }

    Text Take() {
        Flush();
        return std::move(text_);
    }

  private:
    void Flush() {
        Append(text_, units_, static_cast<std::size_t>(end_ - units_));
        end_ = units_;
    }

    Text text_;
    Unit units_[2048];
    Unit* end_ = units_;
};

// The form of all lists. `put` puts the item of an index.
template <typename Text, typename Put>
void PutList(Line<Text>& line, std::size_t size, std::uint64_t head, std::uint64_t tail,
             std::string_view separator, Put put) {
    const auto putItems = [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            put(line, i);
            line.PutAscii(i + 1 < size ? separator : " ");
        }
    };
    const auto first = static_cast<std::size_t>(std::min<std::uint64_t>(head, size));
    const auto last = static_cast<std::size_t>(size - std::min<std::uint64_t>(tail, size));
    line.PutAscii("{ ");
    putItems(0, first);
    if (first < last) line.PutAscii("..., ");
    putItems(std::max(first, last), size);
    line.PutAscii("}");
}

template <typename Text, typename Put>
Text List(std::size_t size, Put put, std::string_view separator = ", ") {
    Line<Text> line;
    PutList(line, size, size, 0, separator, put);
    return line.Take();
}

template <typename Integer>
char* WriteInteger(Integer value, char* target) noexcept {
    return std::to_chars(target, target + 20, value).ptr;
}

// %g, six digits without trailing zeros: 13 characters at most, and 9 for what is no number.
constexpr std::size_t longestDouble = 16;

char* WriteDigits(const char* digits, int count, int point, char* target) noexcept {
    if (point <= 0) {
        *target++ = '0';
        *target++ = '.';
        return std::copy_n(digits, count, std::fill_n(target, -point, '0'));
    }
    const int whole = std::min(count, point);
    target = std::copy_n(digits, whole, target);
    if (count <= point) return std::fill_n(target, point - count, '0');
    *target++ = '.';
    return std::copy(digits + whole, digits + count, target);
}

char* WriteDouble(double value, char* target) noexcept {
    constexpr int precision = 6;
    if (std::signbit(value)) *target++ = '-';
    const double magnitude = std::fabs(value);
    if (magnitude == 0) {
        *target++ = '0';
        return target;
    }
    char digits[precision];
    const int point = kestrolumen::detail::SignificantDigits(magnitude, precision,
                                                             kestrolumen::detail::Ties::toEven, digits);
    int count = precision;
    while (digits[count - 1] == '0') --count;
    const int exponent = point - 1;
    if (exponent >= -4 && exponent < precision) return WriteDigits(digits, count, point, target);
    target = WriteDigits(digits, count, 1, target);
    *target++ = 'e';
    *target++ = exponent < 0 ? '-' : '+';
    const int power = std::abs(exponent);
    if (power < 10) *target++ = '0';
    return std::to_chars(target, target + 3, power).ptr;
}

template <typename Text>
void PutDouble(Line<Text>& line, double value) {
    if (std::isfinite(value)) {
        line.Advance(WriteDouble(value, line.Room(longestDouble)));
    } else {
        line.Put(StdStringFormat("%g", value));
    }
}

template <typename Text, typename Doubles>
Text DoubleList(const Doubles& values, std::uint64_t head, std::uint64_t tail) {
    Line<Text> line;
    PutList(line, values.size(), head, tail, ", ",
            [&values](Line<Text>& into, std::size_t i) { PutDouble(into, values[i]); });
    return line.Take();
}

template <typename Text, typename Integer>
void PutIntegers(Line<Text>& line, const std::vector<Integer>& values, std::uint64_t head,
                 std::uint64_t tail) {
    PutList(line, values.size(), head, tail, ", ", [&values](Line<Text>& into, std::size_t i) {
        into.Advance(WriteInteger(values[i], into.Room(20)));
    });
}

template <typename Text>
Text ByteList(const std::vector<std::uint8_t>& values, bool hex) {
    return List<Text>(values.size(), [&values, hex](Line<Text>& line, std::size_t i) {
        char* const target = line.Room(3);
        if (hex) kestrolumen::detail::EncodeHex(&values[i], 1, target);
        line.Advance(hex ? target + 2 : WriteInteger(values[i], target));
    });
}

// Up to its first zero unit.
template <typename Text>
auto* ZeroTerminated(const Text& text) noexcept {
    return text.GetString();
}
const char* ZeroTerminated(const std::string& text) noexcept {
    return text.c_str();
}

template <typename Text>
Text QuotedList(const std::vector<Text>& texts) {
    return List<Text>(texts.size(), [&texts](Line<Text>& line, std::size_t i) {
        line.PutQuoted(ZeroTerminated(texts[i]));
    });
}

}  // namespace

namespace kestrolumen::detail {

template <typename Text, typename Integer>
Text IntegerList(const std::vector<Integer>& values) {
    Line<Text> line;
    PutIntegers(line, values, values.size(), 0);
    return line.Take();
}

template CStringA IntegerList(const std::vector<short>&);
template CStringA IntegerList(const std::vector<unsigned short>&);
template CStringA IntegerList(const std::vector<int>&);
template CStringA IntegerList(const std::vector<unsigned>&);
template CStringA IntegerList(const std::vector<long>&);
template CStringA IntegerList(const std::vector<unsigned long>&);
template CStringA IntegerList(const std::vector<long long>&);
template CStringA IntegerList(const std::vector<unsigned long long>&);
template std::string IntegerList(const std::vector<short>&);

}  // namespace kestrolumen::detail

CStringA CStringAFromVectorBool(const std::vector<bool>& values) {
    return List<CStringA>(values.size(), [&values](Line<CStringA>& line, std::size_t i) {
        line.PutAscii(values[i] ? "T" : "F");
    });
}

CStringA CStringAFromVectorByte(const std::vector<std::uint8_t>& values, std::uint32_t head,
                                std::uint32_t tail) {
    Line<CStringA> line;
    PutIntegers(line, values, head, tail);
    return line.Take();
}

CStringA CStringAFromVectorUInt64Hex(const std::vector<std::uint64_t>& values) {
    return List<CStringA>(values.size(), [&values](Line<CStringA>& line, std::size_t i) {
        std::uint8_t bytes[8];
        for (unsigned at = 0; at < 8; ++at) {
            bytes[at] = static_cast<std::uint8_t>(values[i] >> (56 - 8 * at) & 0xFF);
        }
        char* const target = line.Room(16);
        kestrolumen::detail::EncodeHex(bytes, sizeof bytes, target);
        line.Advance(target + 16);
    });
}

CStringA CStringAFromVectorDouble(const std::vector<double>& values) {
    return DoubleList<CStringA>(values, values.size(), values.size());
}

CStringA CStringAFromVectorDouble(const std::vector<double>& values, std::uint32_t head, std::uint32_t tail) {
    return DoubleList<CStringA>(values, head, tail);
}

std::string StdStringFromVectorDouble(const std::vector<double>& values) {
    return DoubleList<std::string>(values, values.size(), values.size());
}

CStringA CStringAFromChunkedVectorDouble(const ChunkedVectorDouble& values) {
    return DoubleList<CStringA>(values, values.size(), values.size());
}

CStringA CStringAFromVectorCStringA(const std::vector<CStringA>& texts) {
    return QuotedList(texts);
}

CStringW CStringWFromVectorCStringW(const std::vector<CStringW>& texts) {
    return QuotedList(texts);
}

std::string StdStringFromVectorStdString(const std::vector<std::string>& texts) {
    return QuotedList(texts);
}

std::string StdStringFromVectorStdWString(const std::vector<StdWString>& texts) {
    return List<std::string>(texts.size(), [&texts](Line<std::string>& line, std::size_t i) {
        line.PutQuoted(EscapedTextW<std::string>(texts[i]));
    });
}

CStringW CStringWFromVectorPairCStringW(const std::vector<PairCStringW>& pairs) {
    return List<CStringW>(pairs.size(), [&pairs](Line<CStringW>& line, std::size_t i) {
        line.PutAscii("\"< ");
        line.PutQuoted(ZeroTerminated(pairs[i].first));
        line.PutAscii(", ");
        line.PutQuoted(ZeroTerminated(pairs[i].second));
        line.PutAscii(" >\"");
    });
}

CStringA CStringAFromVectorVectorInt32(const std::vector<std::vector<std::int32_t>>& lists) {
    return List<CStringA>(lists.size(), [&lists](Line<CStringA>& line, std::size_t i) {
        PutIntegers(line, lists[i], lists[i].size(), 0);
    });
}

CStringA CStringAFromSetCStringA(const std::set<CStringA>& texts) {
    auto next = texts.begin();
    return List<CStringA>(
        texts.size(), [&next](Line<CStringA>& line, std::size_t) { line.PutQuoted(ZeroTerminated(*next++)); },
        ",");
}

CStringA CStringAFromSetCStringW(const std::set<CStringW>& texts) {
    std::set<CStringA> narrow;
    for (const CStringW& text : texts) narrow.insert(CStringAFromWide(text));
    return CStringAFromSetCStringA(narrow);
}

CStringA CStringAFromSharedVectorDouble(std::shared_ptr<const std::vector<double>> values) {
    const auto released = std::move(values);
    return released == nullptr ? CStringA("N/A") : CStringAFromVectorDouble(*released);
}

CStringA CStringAFromSharedVectorInt32(std::shared_ptr<const std::vector<std::int32_t>> values) {
    const auto released = std::move(values);
    return released == nullptr ? CStringA("N/A") : CStringAFromVectorInt32(*released);
}

CStringA CStringAFromByteList(const std::vector<std::uint8_t>& values, bool hex) {
    return ByteList<CStringA>(values, hex);
}

std::string StdStringFromByteList(const std::vector<std::uint8_t>& values, bool hex) {
    return ByteList<std::string>(values, hex);
}
