#include <atlstr.h>

#include <climits>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

template <typename String>
struct Width {
    using Unit = typename String::XCHAR;
    using Other = typename String::YCHAR;

    // ASCII in the string's width, and in the other one.
    static std::basic_string<Unit> T(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }
    static std::basic_string<Other> O(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }
    static String S(std::string_view ascii) {
        return String(T(ascii).c_str(), static_cast<int>(ascii.size()));
    }
    static std::basic_string<Unit> Content(const String& text) {
        EXPECT_EQ(text.GetString()[text.GetLength()], Unit{0});
        return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
    }
    static std::string Ascii(const String& text) {
        const auto content = Content(text);
        std::string ascii;
        for (const Unit unit : content) ascii += static_cast<char>(unit);
        return ascii;
    }
};

// What both widths have in common is tested in both.
template <typename String>
class AtlString : public testing::Test {};
using BothWidths = testing::Types<CStringA, CStringW>;
TYPED_TEST_SUITE(AtlString, BothWidths);

TYPED_TEST(AtlString, Construction) {
    using Of = Width<TypeParam>;
    using Unit = typename Of::Unit;
    using Other = typename Of::Other;
    const auto own = Of::T("text");
    const auto other = Of::O("text");
    const Unit* const null = nullptr;
    const Other* const otherNull = nullptr;
    for (const TypeParam& text :
         {TypeParam(own.c_str()), TypeParam(other.c_str()), TypeParam(own.c_str(), 4),
          TypeParam(other.c_str(), 4), TypeParam(CStringA("text")), TypeParam(CStringW("text"))}) {
        EXPECT_EQ(Of::Ascii(text), "text");
    }
    for (const TypeParam& empty :
         {TypeParam(), TypeParam(null), TypeParam(otherNull), TypeParam(own.c_str(), 0),
          TypeParam(own.c_str(), -1), TypeParam(null, 3), TypeParam(otherNull, 3), TypeParam(Unit{'x'}, 0),
          TypeParam(Unit{'x'}, -1), TypeParam(Other{'x'}, -1)}) {
        EXPECT_TRUE(empty.IsEmpty());
        EXPECT_EQ(empty.GetAllocLength(), 0);
        EXPECT_EQ(Of::Ascii(empty), "");
    }
    EXPECT_EQ(Of::Ascii(TypeParam(Unit{'x'}, 3)), "xxx");
    EXPECT_EQ(Of::Ascii(TypeParam(Other{'x'}, 3)), "xxx");
    EXPECT_EQ(Of::Ascii(TypeParam(Of::T(std::string_view("a\0b", 3)).data(), 3)),
              std::string_view("a\0b", 3));
    static_assert(sizeof(TypeParam) == sizeof(void*));
    static_assert(std::is_nothrow_move_constructible_v<TypeParam> &&
                  std::is_nothrow_move_assignable_v<TypeParam>);
    static_assert(std::is_nothrow_copy_constructible_v<TypeParam> &&
                  std::is_nothrow_copy_assignable_v<TypeParam>);
}

TYPED_TEST(AtlString, CopiesShareUntilOneSideChanges) {
    using Of = Width<TypeParam>;
    const TypeParam original = Of::S("original");
    const auto expectUntouched = [&](auto change, const char* expected) {
        TypeParam copy = original;
        EXPECT_EQ(copy.GetString(), original.GetString());
        change(copy);
        EXPECT_EQ(Of::Ascii(copy), expected);
        EXPECT_EQ(Of::Ascii(original), "original");
    };
    const auto x = static_cast<typename Of::Unit>('x');
    expectUntouched([&](TypeParam& copy) { copy.SetAt(0, x); }, "xriginal");
    expectUntouched([&](TypeParam& copy) { copy.AppendChar(x); }, "originalx");
    expectUntouched([&](TypeParam& copy) { copy.Truncate(2); }, "or");
    expectUntouched([&](TypeParam& copy) { copy.Delete(0, 2); }, "iginal");
    expectUntouched([&](TypeParam& copy) { copy.Insert(1, x); }, "oxriginal");
    expectUntouched([&](TypeParam& copy) { copy.MakeUpper(); }, "ORIGINAL");
    expectUntouched([&](TypeParam& copy) { copy.GetBuffer()[0] = x; }, "xriginal");
    expectUntouched([&](TypeParam& copy) { copy.GetBufferSetLength(3)[0] = x; }, "xri");
    expectUntouched([&](TypeParam& copy) { copy.ReleaseBuffer(4); }, "orig");
    expectUntouched([&](TypeParam& copy) { copy.Empty(); }, "");
    expectUntouched([&](TypeParam& copy) { copy.Preallocate(100); }, "original");
    expectUntouched([&](TypeParam& copy) { copy = Of::T("y").c_str(); }, "y");
    expectUntouched(
        [&](TypeParam& copy) {
            const TypeParam moved = std::move(copy);
            copy = moved;
        },
        "original");
}

TYPED_TEST(AtlString, SelfAssignmentAndOwnTextAsArgument) {
    using Of = Width<TypeParam>;
    TypeParam text = Of::S("abcdef");
    const TypeParam& same = text;
    text = same;
    EXPECT_EQ(Of::Ascii(text), "abcdef");
    text = std::move(const_cast<TypeParam&>(same));
    EXPECT_EQ(Of::Ascii(text), "abcdef");
    text += text;
    EXPECT_EQ(Of::Ascii(text), "abcdefabcdef");
    text += text.GetString() + 10;
    EXPECT_EQ(Of::Ascii(text), "abcdefabcdefef");
    text = text.Mid(1);
    EXPECT_EQ(Of::Ascii(text), "bcdefabcdefef");
    text = text.GetString() + 5;
    EXPECT_EQ(Of::Ascii(text), "abcdefef");
    text.Insert(2, text.GetString() + 6);
    EXPECT_EQ(Of::Ascii(text), "abefcdefef");
    text.Preallocate(100);
    text.Insert(0, text.GetString());
    EXPECT_EQ(Of::Ascii(text), "abefcdefefabefcdefef");
    text.SetString(text.GetString() + 2, 6);
    text.Replace(text.GetString() + 4, text);
    EXPECT_EQ(Of::Ascii(text), "efcdefcdefcdef");
    text.Append(text.GetString(), 3);
    EXPECT_EQ(Of::Ascii(text), "efcdefcdefcdefefc");
}

TYPED_TEST(AtlString, PartsAreClamped) {
    using Of = Width<TypeParam>;
    const TypeParam text = Of::S("abcdef");
    const struct {
        TypeParam made;
        const char* expected;
    } rows[] = {
        {text.Left(2), "ab"},
        {text.Left(0), ""},
        {text.Left(-3), ""},
        {text.Left(7), "abcdef"},
        {text.Right(2), "ef"},
        {text.Right(0), ""},
        {text.Right(-3), ""},
        {text.Right(7), "abcdef"},
        {text.Mid(2), "cdef"},
        {text.Mid(6), ""},
        {text.Mid(9), ""},
        {text.Mid(-4), "abcdef"},
        {text.Mid(1, 2), "bc"},
        {text.Mid(4, 9), "ef"},
        {text.Mid(-1, 2), "ab"},
        {text.Mid(2, -1), ""},
        {text.Mid(5, INT_MAX), "f"},
        {text.Mid(7, 1), ""},
        {text.Mid(0, 6), "abcdef"},
        {text.Left(INT_MAX), "abcdef"},
        {text.Mid(INT_MAX, INT_MAX), ""},
        {text.Mid(INT_MIN), "abcdef"},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i)
        EXPECT_EQ(Of::Ascii(rows[i].made), rows[i].expected) << i;
    EXPECT_EQ(text.Left(6).GetString(), text.GetString());
}

TYPED_TEST(AtlString, UnitsByIndex) {
    using Of = Width<TypeParam>;
    TypeParam text = Of::S("abc");
    EXPECT_EQ(text.GetAt(0), 'a');
    EXPECT_EQ(text[2], 'c');
    for (const int outside : {-1, 3, 4, INT_MIN, INT_MAX}) {
        EXPECT_EQ(text[outside], 0);
        EXPECT_THROW(text.SetAt(outside, 'x'), std::out_of_range);
    }
    text.SetAt(1, 0);
    EXPECT_EQ(Of::Ascii(text), std::string_view("a\0c", 3));
}

TYPED_TEST(AtlString, Find) {
    using Of = Width<TypeParam>;
    using Unit = typename Of::Unit;
    const TypeParam text = Of::S("abcabc");
    const auto find = [&](const char* sought, int start) { return text.Find(Of::T(sought).c_str(), start); };
    EXPECT_THAT((std::vector{find("bc", 0), find("bc", 1), find("bc", 2), find("bc", 5), find("x", 0),
                             find("abcabcd", 0)}),
                ElementsAre(1, 1, 4, -1, -1, -1));
    EXPECT_THAT(
        (std::vector{find("", 0), find("", 3), find("", 6), find("", 7), find("a", -1), find("a", INT_MAX)}),
        ElementsAre(0, 3, 6, -1, -1, -1));
    EXPECT_THAT((std::vector{text.Find(Unit{'c'}), text.Find(Unit{'c'}, 3), text.Find(Unit{'c'}, 6),
                             text.Find(Unit{'x'})}),
                ElementsAre(2, 5, -1, -1));
    EXPECT_THAT(
        (std::vector{text.ReverseFind(Unit{'a'}), text.ReverseFind(Unit{'c'}), text.ReverseFind(Unit{'x'})}),
        ElementsAre(3, 5, -1));
    EXPECT_EQ(text.Find(static_cast<const Unit*>(nullptr)), -1);
    EXPECT_EQ(TypeParam().Find(Unit{'a'}), -1);
    EXPECT_EQ(TypeParam().ReverseFind(Unit{'a'}), -1);
    EXPECT_EQ(TypeParam().Find(Of::T("").c_str()), 0);
    // Zero units are text.
    const TypeParam zeros = Of::S(std::string_view("a\0b\0", 4));
    EXPECT_EQ(zeros.Find(Unit{'b'}), 2);
    EXPECT_EQ(zeros.Find(Unit{0}, 2), 3);
    EXPECT_EQ(zeros.ReverseFind(Unit{0}), 3);
}

// The tokens and the positions after each call, the last one -1.
template <typename String>
std::vector<std::pair<std::string, int>> Tokens(std::string_view text, const char* delimiters,
                                                int position = 0) {
    using Of = Width<String>;
    const String source = Of::S(text);
    const auto set = Of::T(delimiters);
    std::vector<std::pair<std::string, int>> tokens;
    do {
        const String token = source.Tokenize(set.c_str(), position);
        tokens.emplace_back(Of::Ascii(token), position);
    } while (position != -1 && tokens.size() < 20);
    return tokens;
}

TYPED_TEST(AtlString, Tokenize) {
    using Pairs = std::vector<std::pair<std::string, int>>;
    const struct {
        const char* text;
        const char* delimiters;
        int start;
        Pairs expected;
    } rows[] = {
        {"a,b;c", ",;", 0, {{"a", 2}, {"b", 4}, {"c", 6}, {"", -1}}},
        {",,a,,b,,", ",", 0, {{"a", 4}, {"b", 7}, {"", -1}}},
        {"a,", ",", 0, {{"a", 2}, {"", -1}}},
        {"abc", ",", 1, {{"bc", 4}, {"", -1}}},
        {"", ",", 0, {{"", -1}}},
        {",,,", ",", 0, {{"", -1}}},
        {"abc", ",", 3, {{"", -1}}},
        {"abc", ",", 99, {{"", -1}}},
        {"abc", ",", -1, {{"", -1}}},
        {"a b", "", 0, {{"a b", 4}, {"", -1}}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Tokens<TypeParam>(row.text, row.delimiters, row.start), row.expected) << row.text;
    EXPECT_EQ(Tokens<TypeParam>(std::string_view("a\0b,c", 5), ","),
              (Pairs{{std::string("a\0b", 3), 4}, {"c", 6}, {"", -1}}));
    int position = 0;
    EXPECT_EQ(Width<TypeParam>::Ascii(Width<TypeParam>::S("a,b").Tokenize(nullptr, position)), "a,b");
}

TYPED_TEST(AtlString, Trim) {
    using Of = Width<TypeParam>;
    using Unit = typename Of::Unit;
    EXPECT_EQ(Of::Ascii(Of::S(" \t\n\v\f\ra b \t\n").Trim()), "a b");
    EXPECT_EQ(Of::Ascii(Of::S("  a ").TrimLeft()), "a ");
    EXPECT_EQ(Of::Ascii(Of::S("  a ").TrimRight()), "  a");
    EXPECT_EQ(Of::Ascii(Of::S(" \t ").Trim()), "");
    EXPECT_EQ(Of::Ascii(Of::S("").Trim()), "");
    EXPECT_EQ(Of::Ascii(Of::S("xxaxx").Trim(Unit{'x'})), "a");
    EXPECT_EQ(Of::Ascii(Of::S("xyayx").Trim(Of::T("xy").c_str())), "a");
    EXPECT_EQ(Of::Ascii(Of::S("xyayx").Trim(Of::T("").c_str())), "xyayx");
    EXPECT_EQ(Of::Ascii(Of::S(std::string_view("\0 a\0", 4)).Trim()), std::string_view("\0 a\0", 4));
    // Nothing to trim, nothing to copy.
    const TypeParam text = Of::S("text");
    TypeParam copy = text;
    EXPECT_EQ(copy.Trim().GetString(), text.GetString());
}

TYPED_TEST(AtlString, ReplaceAndRemove) {
    using Of = Width<TypeParam>;
    using Unit = typename Of::Unit;
    const auto replaced = [](std::string_view text, const char* from, const char* to) {
        TypeParam changed = Of::S(text);
        const int count = changed.Replace(Of::T(from).c_str(), Of::T(to).c_str());
        return std::pair(Of::Ascii(changed), count);
    };
    EXPECT_EQ(replaced("a-b-c", "-", "--"), std::pair(std::string("a--b--c"), 2));
    EXPECT_EQ(replaced("a--b--c", "--", "-"), std::pair(std::string("a-b-c"), 2));
    EXPECT_EQ(replaced("aaaaa", "aa", "b"), std::pair(std::string("bba"), 2));
    EXPECT_EQ(replaced("abab", "ab", ""), std::pair(std::string(""), 2));
    EXPECT_EQ(replaced("abc", "", "x"), std::pair(std::string("abc"), 0));
    EXPECT_EQ(replaced("", "a", "x"), std::pair(std::string(""), 0));
    EXPECT_EQ(replaced(std::string_view("a\0a", 3), "a", "bc"), std::pair(std::string("bc\0bc", 5), 2));
    TypeParam text = Of::S("abca");
    EXPECT_EQ(text.Replace(nullptr, Of::T("x").c_str()), 0);
    EXPECT_EQ(text.Replace(Of::T("c").c_str(), nullptr), 1);
    EXPECT_EQ(text.Replace(Unit{'a'}, Unit{'z'}), 2);
    EXPECT_EQ(text.Replace(Unit{'z'}, Unit{'z'}), 0);
    EXPECT_EQ(Of::Ascii(text), "zbz");
    EXPECT_EQ(text.Remove(Unit{'z'}), 2);
    EXPECT_EQ(text.Remove(Unit{'z'}), 0);
    EXPECT_EQ(Of::Ascii(text), "b");
}

TYPED_TEST(AtlString, InsertAndDeleteAreClamped) {
    using Of = Width<TypeParam>;
    using Unit = typename Of::Unit;
    TypeParam text = Of::S("bc");
    EXPECT_EQ(text.Insert(-5, Unit{'a'}), 3);
    EXPECT_EQ(text.Insert(99, Of::T("de").c_str()), 5);
    EXPECT_EQ(text.Insert(1, Of::T("").c_str()), 5);
    EXPECT_EQ(Of::Ascii(text), "abcde");
    EXPECT_EQ(text.Delete(1), 4);
    EXPECT_EQ(text.Delete(-1, 1), 3);
    EXPECT_EQ(text.Delete(1, INT_MAX), 1);
    EXPECT_EQ(text.Delete(1, 1), 1);
    EXPECT_EQ(text.Delete(0, -1), 1);
    EXPECT_EQ(Of::Ascii(text), "c");
}

TYPED_TEST(AtlString, Comparisons) {
    using Of = Width<TypeParam>;
    const TypeParam a = Of::S("a");
    const TypeParam b = Of::S("b");
    const TypeParam high(typename Of::Unit(0xE9));
    EXPECT_TRUE(a == Of::S("a") && a == Of::T("a").c_str() && Of::T("a").c_str() == a);
    EXPECT_TRUE(a == Of::O("a").c_str() && a == typename Of::Unit('a') && a != b);
    EXPECT_TRUE(a < b && b > a && a <= a && a < high && a < Of::T("b").c_str() && TypeParam() < a);
    EXPECT_LT(a.Compare(b), 0);
    EXPECT_GT(high.Compare(b), 0);
    EXPECT_EQ(a.Compare(Of::T("a").c_str()), 0);
    EXPECT_GT(a.Compare(nullptr), 0);
    EXPECT_EQ(TypeParam().Compare(nullptr), 0);
    EXPECT_EQ(Of::S("HeLLo").CompareNoCase(Of::T("hEllO").c_str()), 0);
    EXPECT_LT(Of::S("hello").CompareNoCase(Of::T("HELLO1").c_str()), 0);
    // Lower case is compared: an underline stands before every letter.
    EXPECT_LT(Of::S("_").CompareNoCase(Of::T("A").c_str()), 0);
    EXPECT_GT(Of::S("z").CompareNoCase(nullptr), 0);
    // Pointers end at their first zero, strings don't.
    EXPECT_NE(Of::S(std::string_view("a\0x", 3)), Of::S(std::string_view("a\0y", 3)));
    EXPECT_EQ(Of::S(std::string_view("a\0x", 3)).Compare(a), 0);
    EXPECT_THAT((std::set<TypeParam>{b, a, high, a}), ElementsAre(a, b, high));
}

TYPED_TEST(AtlString, Concatenation) {
    using Of = Width<TypeParam>;
    using Unit = typename Of::Unit;
    using Other = typename Of::Other;
    const TypeParam a = Of::S("a");
    EXPECT_EQ(Of::Ascii(a + a + Of::T("b").c_str() + Unit{'c'} + Other{'d'} + Of::O("e").c_str()), "aabcde");
    EXPECT_EQ(Of::Ascii(Of::T("b").c_str() + a), "ba");
    EXPECT_EQ(Of::Ascii(Unit{'c'} + a), "ca");
    EXPECT_EQ(Of::Ascii(Other{'d'} + a), "da");
    EXPECT_EQ(Of::Ascii(a), "a");
    TypeParam sum;
    sum += CStringA("narrow ");
    sum += CStringW("wide");
    sum += Unit{'1'};
    sum += Other{'2'};
    sum += static_cast<const Unit*>(nullptr);
    EXPECT_EQ(Of::Ascii(sum), "narrow wide12");
    sum = Other{'x'};
    EXPECT_EQ(Of::Ascii(sum), "x");
    sum = Unit{'y'};
    sum = Of::O("other").c_str();
    EXPECT_EQ(Of::Ascii(sum), "other");
    sum = sum.GetString();
    EXPECT_EQ(Of::Ascii(sum), "other");
}

TYPED_TEST(AtlString, AppendingIsAmortised) {
    TypeParam text;
    int buffers = 0;
    for (int i = 0; i < 100'000; ++i) {
        const auto* const before = text.GetString();
        text += typename TypeParam::XCHAR('x');
        if (text.GetString() != before) ++buffers;
    }
    EXPECT_EQ(text.GetLength(), 100'000);
    EXPECT_LT(buffers, 40);
}

TYPED_TEST(AtlString, Buffers) {
    using Of = Width<TypeParam>;
    TypeParam text;
    auto* buffer = text.GetBuffer(5);
    EXPECT_GE(text.GetAllocLength(), 5);
    EXPECT_EQ(buffer[0], 0);
    const auto content = Of::T(std::string_view("ab\0cd", 6));
    std::copy(content.begin(), content.end(), buffer);
    text.ReleaseBuffer();
    EXPECT_EQ(Of::Ascii(text), "ab");
    buffer = text.GetBuffer(2);
    buffer[2] = 'z';
    text.ReleaseBuffer(5);
    EXPECT_EQ(Of::Ascii(text), "abzcd");
    text.ReleaseBufferSetLength(3);
    EXPECT_EQ(Of::Ascii(text), "abz");
    text.ReleaseBuffer(1'000'000);
    EXPECT_EQ(text.GetLength(), text.GetAllocLength());

    // No terminator anywhere in the room: the text ends with the room.
    text = Of::S("abc");
    std::fill_n(text.GetBuffer(), text.GetAllocLength() + 1, typename Of::Unit('f'));
    text.ReleaseBuffer();
    EXPECT_EQ(Of::Ascii(text), std::string(static_cast<std::size_t>(text.GetAllocLength()), 'f'));

    // The empty string's buffer is everybody's: a writer gets one of his own.
    TypeParam empty;
    empty.GetBuffer()[0] = 0;
    empty.ReleaseBuffer();
    EXPECT_NE(empty.GetString(), TypeParam().GetString());
    TypeParam never;
    never.ReleaseBuffer();
    never.ReleaseBuffer(3);
    EXPECT_TRUE(never.IsEmpty());
    EXPECT_EQ(never.GetBufferSetLength(-1)[0], 0);
}

TYPED_TEST(AtlString, TextsTooLongAreRefusedAndLeaveTheStringAsItWas) {
    using Of = Width<TypeParam>;
    TypeParam text = Of::S("abc");
    EXPECT_THROW(text.Append(text, INT_MAX - 3), std::length_error);
    EXPECT_THROW(text.Preallocate(INT_MAX), std::length_error);
    EXPECT_THROW(text.Format(Of::T("%2147483647d%d").c_str(), 1, 2), std::length_error);
    EXPECT_EQ(Of::Ascii(text), "abc");
}

TYPED_TEST(AtlString, Format) {
    using Of = Width<TypeParam>;
    TypeParam text = Of::S("n");
    text.Format(Of::T("%s=%d").c_str(), text.GetString(), 5);
    EXPECT_EQ(Of::Ascii(text), "n=5");
    text.AppendFormat(Of::T(" %s %I64d").c_str(), text.GetString(), std::int64_t{7});
    EXPECT_EQ(Of::Ascii(text), "n=5 n=5 7");
    text.AppendFormat(Of::T("").c_str());
    text.Format(Of::T("%c%c").c_str(), 'a', 0);
    EXPECT_EQ(Of::Ascii(text), std::string_view("a\0", 2));
    // Around the size up to which a text is formatted in one go.
    for (const int width : {255, 256, 257, 5000}) {
        text.Format(Of::T("%*d").c_str(), width, 7);
        EXPECT_EQ(Of::Ascii(text), std::string(static_cast<std::size_t>(width) - 1, ' ') + "7");
        text.AppendFormat(Of::T("%s").c_str(), text.GetString());
        EXPECT_EQ(text.GetLength(), 2 * width);
    }
    text.Format(nullptr);
    EXPECT_TRUE(text.IsEmpty());
}

// Four strings that share what they can, beside four of the standard library's that share nothing: whatever
// is done to one of them must show in that one alone.
TYPED_TEST(AtlString, RandomOperationsAsTheStandardString) {
    using Of = Width<TypeParam>;
    using Unit = typename Of::Unit;
    using Model = std::basic_string<Unit>;
    std::mt19937 random(4);
    const auto below = [&](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
    TypeParam texts[4];
    Model models[4];
    for (int step = 0; step < 20'000; ++step) {
        const int target = below(4);
        const int source = below(4);
        TypeParam& text = texts[target];
        Model& model = models[target];
        const TypeParam& other = texts[source];
        const Model otherModel = models[source];
        const int first = below(text.GetLength() + 1);
        const int count = below(8);
        const auto at = static_cast<std::size_t>(first);
        const auto otherAt = static_cast<std::size_t>(below(other.GetLength() + 1));
        const auto unit = static_cast<Unit>('a' + below(3));
        const int operation = below(15);
        switch (operation) {
            case 0:
                text = other;
                model = otherModel;
                break;
            case 1:
                text += other;
                model += otherModel;
                break;
            case 2:
                text = other.GetString() + otherAt;
                model = otherModel.substr(otherAt);
                break;
            case 3:
                text.Append(other.GetString() + otherAt);
                model += otherModel.substr(otherAt);
                break;
            case 4:
                text.Insert(first, other.GetString() + otherAt);
                model.insert(at, otherModel.substr(otherAt));
                break;
            case 5:
                text.Delete(first, count);
                model.erase(at, static_cast<std::size_t>(count));
                break;
            case 6:
                text = other.Mid(static_cast<int>(otherAt), count);
                model = otherModel.substr(otherAt, static_cast<std::size_t>(count));
                break;
            case 7:
                text += unit;
                model += unit;
                break;
            case 8:
                if (at < model.size()) {
                    text.SetAt(first, unit);
                    model[at] = unit;
                }
                break;
            case 9:
                text.Truncate(first);
                model.resize(at);
                break;
            case 10:
                text.Remove(unit);
                std::erase(model, unit);
                break;
            case 11:
                std::fill_n(text.GetBufferSetLength(count), count, unit);
                model.assign(static_cast<std::size_t>(count), unit);
                break;
            case 12:
                text.GetBuffer(first)[0] = 0;
                text.ReleaseBuffer();
                model.clear();
                break;
            case 13:
                text = other + text;
                model = otherModel + model;
                break;
            default:
                text.Swap(texts[source]);
                model.swap(models[source]);
                break;
        }
        if (text.GetLength() > 200) {
            text.Empty();
            model.clear();
        }
        for (int i = 0; i < 4; ++i)
            ASSERT_EQ(Of::Content(texts[i]), models[i]) << "step " << step << ", operation " << operation;
    }
}

TYPED_TEST(AtlString, CopiesOfOneStringOnManyThreads) {
    using Of = Width<TypeParam>;
    auto shared = std::make_unique<TypeParam>(Of::S("shared by all"));
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([own = *shared, thread] {
            for (int i = 0; i < 2000; ++i) {
                TypeParam copy = own;
                const TypeParam second = copy;
                if (i % 3 == thread % 3) copy.SetAt(0, typename Of::Unit('S'));
                copy += typename Of::Unit('!');
                ASSERT_EQ(copy.GetLength(), 14);
                ASSERT_EQ(second, own);
            }
        });
    }
    shared.reset();
    for (std::thread& thread : threads) thread.join();
}

TEST(AtlStringWidths, ConversionByTheAnsiCodePage) {
    EXPECT_EQ(CStringW("\xE9\x80"), TEXT("\x00E9\x20AC"));
    EXPECT_EQ(CStringA(TEXT("\x00E9\x20AC")), "\xE9\x80");
    EXPECT_EQ(CStringA(TEXT("\x4E00\x4E01x")), "??x");
    EXPECT_EQ(CStringA(TEXT("\xD83D\xDE00")), "??");
    EXPECT_EQ(CStringW("a\0\xE9", 3), CStringW(TEXT("a\0\x00E9"), 3));
    // What a pointer gives ends at its first zero, also where it comes from a string.
    EXPECT_EQ(CStringW(CStringA("a\0b", 3)), TEXT("a"));
    EXPECT_EQ(CStringA(WCHAR(0x4E00), 3), "???");
    CStringW text(TEXT("\x4E00"));
    text += "\x80";
    text += '\x80';
    EXPECT_EQ(text, TEXT("\x4E00\x20AC\x20AC"));
    CStringA narrow("\xE9");
    narrow += TEXT("\x20AC");
    narrow += WCHAR(0x20AC);
    EXPECT_EQ(narrow, "\xE9\x80\x80");
}

TEST(AtlStringWidths, Case) {
    EXPECT_EQ(CStringW(TEXT("a\x00E9\x0416\x03C9\x00FF\x00B5\x00DFz")).MakeUpper(),
              TEXT("A\x00C9\x0416\x03A9\x0178\x00B5\x00DFZ"));
    EXPECT_EQ(CStringW(TEXT("A\x00C9\x0416\x03A9\x0130Z")).MakeLower(), TEXT("a\x00E9\x0436\x03C9\x0130z"));
    EXPECT_EQ(CStringW(TEXT("a\0b"), 3).MakeUpper(), CStringW(TEXT("A\0B"), 3));
    // 1252: the upper case of \xFF is \x9F, and \xB5 has none there.
    EXPECT_EQ(CStringA("a\xE9\xFF\xB5\xDF\x9Cz").MakeUpper(), "A\xC9\x9F\xB5\xDF\x8CZ");
    EXPECT_EQ(CStringA("A\xC9\x9F\x8CZ").MakeLower(), "a\xE9\xFF\x9Cz");
    EXPECT_EQ(CStringW(TEXT("x\x00C9")).CompareNoCase(TEXT("X\x00E9")), 0);
    EXPECT_EQ(CStringA("x\xC9").CompareNoCase("X\xE9"), 0);
    EXPECT_LT(CStringW(TEXT("a")).CompareNoCase(TEXT("\x00C9")), 0);
    EXPECT_GT(CStringA("\xC9").CompareNoCase("Z"), 0);
    EXPECT_LT(CStringA("\xC9").CompareNoCase("\xE9z"), 0);
}

TEST(AtlStringWidths, WhiteSpace) {
    EXPECT_EQ(CStringW(TEXT("\x3000\x2003\x00A0\x0085 x\x2028\x202F\x205F\x1680\x2029")).Trim(), TEXT("x"));
    EXPECT_EQ(CStringW(TEXT("\x200Bx\xFEFF")).Trim(), TEXT("\x200Bx\xFEFF"));
    EXPECT_EQ(CStringA("\xA0x\x85").Trim(), "\xA0x\x85");
}

}  // namespace
