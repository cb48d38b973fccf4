// CSV in and out.
#include "excelhost/csv.h"

#include <gmock/gmock.h>

namespace excelhost {
namespace {

TEST(CsvTest, ReadsTables) {
    const std::pair<std::string, CsvTable> cases[] = {
        {"", {}},
        {"\n", {{""}}},
        {"a", {{"a"}}},
        {"a,b\nc,d", {{"a", "b"}, {"c", "d"}}},
        {"a,b\r\nc,d\r\n", {{"a", "b"}, {"c", "d"}}},
        {"\xEF\xBB\xBFx\n", {{"x"}}},
        {",\n,\n", {{"", ""}, {"", ""}}},
        {"\"\"", {{""}}},
        {"\"a,b\",\"c\"\"d\"\n\"line\r\nend\",\"\"\"\"", {{"a,b", "c\"d"}, {"line\r\nend", "\""}}},
        {" a , b\n", {{" a ", " b"}}},
        {std::string("a\0b,c", 5), {{std::string("a\0b", 3), "c"}}},
    };
    for (const auto& [text, table] : cases) EXPECT_EQ(ParseCsv(text), table) << text;
}

TEST(CsvTest, NamesThePlaceOfAFault) {
    const struct {
        const char* text;
        std::size_t row;
        std::size_t column;
        const char* message;
    } cases[] = {
        {"a,\"b", 1, 2, "the quote isn't closed"},
        {"a\n\"b\"\"", 2, 1, "the quote isn't closed"},
        {"a,b\"c", 1, 2, "a quote stands inside"},
        {"\"a\"b,c", 1, 1, "text stands behind"},
        {"a\rb", 1, 1, "a carriage return stands alone"},
        {"a,b\nc\n", 2, 2, "the row has 1 fields, the first one has 2"},
        {"a\nb\nc,d,e\n", 3, 2, "the row has 3 fields, the first one has 1"},
        {"a,b\n\nc,d\n", 2, 2, "the row has 1 fields"},
    };
    for (const auto& c : cases) {
        try {
            (void)ParseCsv(c.text);
            ADD_FAILURE() << "no fault in " << c.text;
        } catch (const CellFault& fault) {
            EXPECT_EQ(fault.Row(), c.row) << c.text;
            EXPECT_EQ(fault.Column(), c.column) << c.text;
            EXPECT_THAT(fault.what(), testing::StartsWith(c.message)) << c.text;
        }
    }
}

TEST(CsvTest, WhatItWritesReadsBack) {
    const CsvTable table = {
        {"plain", "a,b", "say \"so\""}, {"", "two\nlines", "cr\rcr"}, {" ", "\"", "\xC3\xA4"}};
    std::string text;
    for (const auto& row : table) text += CsvLine(row);
    EXPECT_EQ(ParseCsv(text), table);
    EXPECT_EQ(CsvLine(table[0]), "plain,\"a,b\",\"say \"\"so\"\"\"\n");
}

}  // namespace
}  // namespace excelhost
