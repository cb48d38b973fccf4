// Values, records and the words for them.
#include "excelhost/value.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace excelhost {
namespace {

XLOPER12 Typed(DWORD type) {
    XLOPER12 record{};
    record.xltype = type;
    return record;
}

TEST(ValueTest, SurvivesTheWayThroughARecord) {
    const Value values[] = {
        Empty{},
        Missing{},
        -0.5,
        42,
        true,
        Text(TEXT("text")),
        Text(),
        Text(TEXT("nul\0inside"), 10),
        ErrorValue{xlerrNA},
        Area{{1, 2, 3, 4}},
        Reference{9, {}},
        Reference{9, {Area{{0, 0, 0, 0}}, Area{{1, 1048575, 2, 16383}}}},
        Array{2, 2, {1.0, Text(TEXT("a")), Empty{}, Array{1, 1, {Text(TEXT("deep"))}}}},
    };
    for (const Value& value : values) {
        Blocks blocks;
        EXPECT_EQ(ValueFrom(RecordFrom(value, blocks)), value) << Describe(value);
        XLOPER12 flagged = RecordFrom(value, blocks);
        flagged.xltype |= xlbitXLFree | xlbitDLLFree;
        EXPECT_EQ(ValueFrom(flagged), value) << "flags aside: " << Describe(value);
    }
    EXPECT_NE(Value(1), Value(1.0)) << "another type";
    Blocks blocks;
    EXPECT_EQ(RecordFrom(Text(kTextLimit + 5, WCHAR{'x'}), blocks).val.str[0], kTextLimit);
}

TEST(ValueTest, RecordsThatCannotBeReadAreErrors) {
    const ErrorValue bad{xlerrValue};
    EXPECT_EQ(ValueFrom(Typed(0)), Value(bad));
    EXPECT_EQ(ValueFrom(Typed(xltypeStr)), Value(bad)) << "a null string";
    EXPECT_EQ(ValueFrom(Typed(xltypeFlow)), Value(bad));
    EXPECT_EQ(ValueFrom(Typed(xltypeBigData)), Value(bad));
    EXPECT_EQ(ValueFrom(Typed(xltypeSRef)), Value(ErrorValue{xlerrRef})) << "a count of 0";
    EXPECT_EQ(ValueFrom(Typed(xltypeRef)), Value(Reference{})) << "a null block";

    XLOPER12 element = Typed(xltypeNil);
    XLOPER12 array = Typed(xltypeMulti);
    array.val.array = {&element, 1, 1};
    EXPECT_EQ(ValueFrom(array), Value(Array{1, 1, {Empty{}}}));
    array.val.array.columns = 0x10001;
    EXPECT_EQ(ValueFrom(array), Value(Array{1, 1, {Empty{}}})) << "16 bits of the columns count";
    for (const auto& [rows, columns] :
         {std::pair{0, 1}, {-1, 1}, {kRowLimit + 1, 1}, {1, 0}, {1, -1}, {1, 0x8000}}) {
        array.val.array = {&element, rows, columns};
        EXPECT_EQ(ValueFrom(array), Value(bad)) << rows << "x" << columns;
        EXPECT_EQ(Describe(array), "(bad array)");
    }
    array.val.array = {&array, 1, 1};  // holds itself
    Value value = ValueFrom(array);
    int depth = 0;
    for (; value.Is<Array>(); ++depth) value = Value(value.If<Array>()->cells.front());
    EXPECT_EQ(depth, 8);
    EXPECT_EQ(value, Value(bad));

    XLOPER12 reference = Typed(xltypeSRef);
    reference.val.sref.count = 1;
    reference.val.sref.ref = {0, 0, 5, 4};
    EXPECT_EQ(ValueFrom(reference), Value(ErrorValue{xlerrRef})) << "columns the wrong way round";
    reference.val.sref.ref = {0, kRowLimit, 0, 0};
    EXPECT_EQ(ValueFrom(reference), Value(ErrorValue{xlerrRef})) << "beyond the last row";
}

TEST(ValueTest, NamesCellsAndErrors) {
    const std::pair<std::pair<RW, COL>, const char*> cells[] = {
        {{0, 0}, "A1"},   {{8, 25}, "Z9"},   {{0, 26}, "AA1"},   {{0, 51}, "AZ1"},
        {{0, 52}, "BA1"}, {{0, 701}, "ZZ1"}, {{0, 702}, "AAA1"}, {{1048575, 16383}, "XFD1048576"},
    };
    for (const auto& [place, name] : cells) EXPECT_EQ(CellName(place.first, place.second), name);
    EXPECT_EQ(AreaName({{0, 0, 0, 1}}), "A1:B1");
    for (const int error : {0, 7, 15, 23, 29, 36, 42, 43}) EXPECT_EQ(ErrorNumber(ErrorName(error)), error);
    EXPECT_EQ(ErrorName(99), "#ERROR 99");
    EXPECT_EQ(ErrorNumber("#ERROR 99"), -1);
    EXPECT_EQ(ErrorNumber("#n/a"), -1);
}

TEST(ValueTest, WritesNumbersInFifteenDigits) {
    const std::pair<double, const char*> numbers[] = {
        {0, "0"},
        {-0.0, "0"},
        {0.1 + 0.2, "0.3"},
        {1.0 / 3, "0.333333333333333"},
        {1e15, "1E+15"},
        {123456789012345, "123456789012345"},
        {-2.5e-7, "-2.5E-07"},
        {1e300, "1E+300"},
        {5.1, "5.1"},
        {999999999999999.9, "1E+15"},
        {std::nan(""), "NaN"},
    };
    for (const auto& [number, text] : numbers) EXPECT_EQ(NumberText(number), text);
}

TEST(ValueTest, ConvertsUtf8BothWays) {
    const std::string text = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8C\xB7";  // one to four bytes
    EXPECT_EQ(Wide(text).size(), 5U) << "the last one is a pair";
    EXPECT_EQ(Utf8(Wide(text)), text);
    EXPECT_EQ(Wide(""), Text());
    EXPECT_EQ(Utf8(Wide("a\xFFz")), "a\xEF\xBF\xBDz");
    EXPECT_TRUE(SameName(TEXT("Book.XLA"), TEXT("bOOK.xla")));
    EXPECT_FALSE(SameName(TEXT("Book"), TEXT("Books")));
    EXPECT_FALSE(SameName(TEXT("["), TEXT("{"))) << "letters alone have a case";
}

}  // namespace
}  // namespace excelhost
