// A sheet from its CSV to its calculated cells: fields, the language of formulas, and the order of cells.
#include "excelhost/calculate.h"
#include "excelhost/csv.h"
#include "excelhost/host.h"
#include "excelhost/numbers.h"
#include "excelhost/sheet.h"

#include <gmock/gmock.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <memory>

namespace excelhost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(CsvTest, ReadsTables) {
    const std::pair<std::string, CsvTable> cases[] = {
        {"", {}},
        {"a,b\r\nc,d\r\n", {{"a", "b"}, {"c", "d"}}},
        {"\xEF\xBB\xBFx\n", {{"x"}}},
        {"\"\xEF\xBB\xBFx\"\n", {{"\xEF\xBB\xBFx"}}},
        {",\n,\n", {{"", ""}, {"", ""}}},
        {"\"a,b\",\"c\"\"d\"\n\"line\r\nend\",\"\"\"\"", {{"a,b", "c\"d"}, {"line\r\nend", "\""}}},
        {std::string("a\0b,c", 5), {{std::string("a\0b", 3), "c"}}},
    };
    for (const auto& [text, table] : cases) {
        EXPECT_EQ(ParseCsv(text), table) << text;
        std::string written;
        for (const auto& row : table) written += CsvLine(row);
        EXPECT_EQ(ParseCsv(written), table) << "what it writes reads back";
    }
}

std::string Repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

// A sheet for the formulas, three rows and three columns; row 3 of column A is empty.
Grid Sample() {
    Grid grid(3, 3);
    grid.Set({0, 0}, 5.0);
    grid.Set({1, 0}, Text(TEXT("7")));
    grid.Set({0, 1}, true);
    grid.Set({1, 1}, Text(TEXT("word")));
    grid.Set({2, 1}, ErrorValue{xlerrNA});
    grid.Set({0, 2}, 1.0);
    grid.Set({1, 2}, 2.0);
    grid.Set({2, 2}, 3.0);
    return grid;
}

// A function that tells what it was given.
Value Tell(TextView name, std::span<const Value> arguments) {
    std::string told = Utf8(name) + "(";
    for (const Value& argument : arguments) told += Describe(argument) + ";";
    return Wide(told + ")");
}

// The value of a formula that stands in D2, in words.
std::string Result(const std::string& formula) {
    static const Grid grid = Sample();
    static const Grid* const grids[] = {&grid};
    return Describe(CalculateFormula(ParseFormula(Wide(formula)), Cells(grids, 1, {1, 3}), Tell));
}

TEST(FormulaTest, GivesWhatExcelGives) {
    const std::pair<std::string, const char*> cases[] = {
        // Literals and space.
        {"=\"a \"\"b\"\"\"", "\"a \"b\"\""},
        {"=#DIV/0!", "#DIV/0!"},
        // Order of operators.
        {"=-2^2", "4"},
        {"=2^3^2", "64"},
        {"=1&2=12", "FALSE"},
        // Values as numbers and as text.
        {"=B1&A1", "\"TRUE5\""},
        {"=0.1+0.2&\"\"", "\"0.3\""},
        // Errors.
        {"=1E300*1E300", "#NUM!"},
        {"=0^0", "#NUM!"},
        {"=B3+1/0", "#N/A"},
        // Comparisons: numbers before text before booleans, without regard to case.
        {"=\"a\"=\"A\"", "TRUE"},
        // References: single cells, implicit intersection, order of corners.
        {"=$A$1+A$1+$A1", "15"},
        {"=C3:C1*10", "20"},
        // Conditions are lazy.
        {"=IF(A1>4,\"yes\",1/0)", "\"yes\""},
        {"=SUM(IF(1,C1:C3,A1))", "6"},
        // Functions that are built in.
        {"=SUM(\"7\",TRUE,,1)", "9"},
        {"=SUM(C1:XFD1048576)", "6"},
        {"=COUNT(A1:C3,1,\"2\",\"x\",TRUE,#N/A)", "7"},
        {"=SUMPRODUCT((C1:C3>1)*C1:C3,C1:C3)", "13"},
        {"=SUMPRODUCT(C1:C2,C2:C3)&SUMPRODUCT(C3:C4,C1:C2)&SUMPRODUCT((C:C>1)*C:C,C:C)", "\"8313\""},
        {"=SUMPRODUCT(C1:C2,C1:C3)", "#VALUE!"},
        // Arrays inside of functions that take them, as Excel has them since it spills.
        {"=SUM(C1:C3*2)&MAX(-C1:C3)&SUM((C1:C3>1)*(C1:C3<3))", "\"12-11\""},
        {"=SUM(IF(C1:C3>1,C1:C3*10,A1))&COUNT(IF(C1:C3>2,C1:C3))&SUM(IF(C1>5,1/0,C1:C3))", "\"5516\""},
        {"=SUM(IF(C1:C3>1,IF(C1:C3>2,100,10),1))&SUM(IF(TRUE,C1:C3*IF(C1:C3=2,1,0)))", "\"1112\""},
        {"=SUM(IF(B1:B3=TRUE,1,0))", "#N/A"},
        {"=INDEX(C1:C3*2,2)&MATCH(4,C1:C3*2,0)", "\"42\""},
        // There, functions of one value are called for each; elsewhere they take the cell of the formula's row.
        {"=LEN(C1:C3)&SUM(ROUND(C1:C3,0))&ROUND(C1:C3,0)", "\"162\""},
        {"=SUM(IFERROR(B1:B3,5),1)&AND(EXACT(C1:C3,C1:C3))&ISNA(SUM(C1:C3-ROUND(C2:C3,0)))", "\"6TRUETRUE\""},
        {"=TEXTJOIN(\"-\",TRUE,TEXT(C1:C3,\"00\"),COLUMN(A1:C1),ROW(A1:A3)*10)",
         "\"01-02-03-1-2-3-10-20-30\""},
        {"=SUM(INDEX(C1:C3*10,ROW(A2:A3)))&MATCH(TRUE,INDEX(C1:C3>1,0),0)&COUNT(INDEX(C1:C3*A1:B1,0,2))",
         "\"5023\""},
        {"=SUM(COUNTIFS(C1:C3,C1:C3,C1:C3,\">1\"),SUMIFS(C1:C3,C1:C3,C1:C3))", "8"},
        {"=SUM(OFFSET(C3,0,0,-2,1))&ISERROR(OFFSET(A1,-1,0))", "\"5TRUE\""},
        {"=INDIRECT(\"C2\")+1", "3"},
        {"=INDIRECT(\"C\"&2,FALSE)", "#REF!"},
        // Formats that aren't known, numbers that they leave out, and those that are too large for them.
        {"=TEXT(1,\"[Nocolour]0\")", "#VALUE!"},
        {"=TEXT(1,\"[>5]0\")", "#VALUE!"},
        {"=TEXT(-1,\"[h]:mm\")", "#VALUE!"},
        {"=TEXT(1E300,\"0%%%%%\")", "#VALUE!"},
        {"=TEXT(1E308,\"?/?\")", "#VALUE!"},
        {"=TEXT(0.5,\"ss.0000\")", "#VALUE!"},
        {"=TEXT(-6,\"[=5]0.0;0\")&TEXT(\"x\",\"[Red]\\<@\\>\")&TEXT(TRUE,\"@@\")", "\"-6<x>TRUE\""},
        {"=TEXT(TRUE,\"0\")&TEXT(-1,\"yyyy\")", "#VALUE!"},
        {"=TEXT(-0.001,\"0.00\")&TEXT(5,\"\")", "\"0.00\""},
        {"=AND(TODAY()=INT(NOW()),NOW()-TODAY()<1,YEAR(TODAY())>2020)", "TRUE"},
        // Where both spreadsheets of functions/README.md depart from Excel's help.
        {"=CEILING(-2.5,2)&FLOOR(-2.5,2)&SUM(\"3\",TRUE,2)&DAY(60)", "\"-2-4629\""},
        {"=RANK(8,C1:C3)", "#N/A"},
        {"=CORREL(C1:C3,C1:C2)", "#N/A"},
        {"=SLOPE(C1:C2,A1:A2)", "#DIV/0!"},
        {"=FACT(171)", "#NUM!"},
        {"=DATEDIF(1,2,\"X\")", "#NUM!"},
        {"=DATEVALUE(\"12\")", "#VALUE!"},
        {"=RATE(10,100,1000)", "#NUM!"},
        {"=WORKDAY(45000,1E308)", "#NUM!"},
        {"=SUM(PERCENTILE(C1:C3,(C1:C3-1)/2))&SUM(NETWORKDAYS(C1:C3*7,30,C1:C3+8))", "\"630\""},
        {"=UPPER(\"stra\xC3\x9F"
         "e\")",
         "\"STRA\xC3\x9F"
         "E\""},
        // Numbers of 15 digits: comparisons, the sum that ends a formula, digits that are typed, rounding.
        {"=0.1+0.2=0.3", "TRUE"},
        {"=123456789012345=123456789012346", "FALSE"},
        {"=0.5-0.4-0.1", "0"},
        {"=(0.5-0.4-0.1)=0", "FALSE"},
        {"=(0.5-0.4-0.1)", "-2.77555756156289E-17"},
        {"=1234567890123456789-1234567890123450000", "0"},
        {"=ROUND(1.005,2)", "1.01"},
        {"=ROUND(246913578024689/2,0)-123456789012344", "1"},
        {"=ROUND(-2.5,0)&ROUND(1250,-2)&ROUND(0.04,0)&ROUND(99.95,1)", "\"-313000100\""},
        {"=ROUNDUP(0.001,1)&ROUNDDOWN(-1.99,1)&ROUNDUP(0.1+0.2,1)", "\"0.1-1.90.3\""},
        {"=\" 1,234.5 \"+\"50%\"+\"(1)\"+\"$2\"", "1236"},
        {"=\"1,23\"+0", "#VALUE!"},
        {"=\"1/2/2024\"+0", "#VALUE!"},
        {"=\"\u00E4\"=\"\u00C4\"", "TRUE"},
        {"=EXACT(\"a\",\"A\")", "FALSE"},
        {"=IFERROR(1/0,\"none\")", "\"none\""},
        // Other functions are handed on with their arguments as they are.
        {"=F(A1,,2)", "\"F(A1;(missing);2;)\""},
        {"=F(A1:B2,\"x\",TRUE,A3+0)", "\"F(A1:B2;\"x\";TRUE;0;)\""},
    };
    for (const auto& [formula, result] : cases) EXPECT_EQ(Result(formula), result) << formula;
}

TEST(FormulaTest, NamesThePositionOfAFault) {
    const struct {
        std::string formula;
        std::size_t position;
        const char* message;
    } cases[] = {
        {"1", 1, "a formula begins with '='"},
        {"=", 2, "an operand is expected"},
        {"=1)", 3, "an operator or the end"},
        {"=F(1", 2, "the parenthesis of 'F' isn't closed"},
        {"=\"abc", 2, "the text isn't closed"},
        {"=1+rate", 4, "'rate' is no cell of a sheet"},
        {"=A1:", 5, "a cell is expected behind ':'"},
        {"=#WRONG!", 2, "no error value has this name"},
        {"=1E999", 2, "a bad number"},
        {"=IF(1)", 2, "'IF' takes at least 2 arguments"},
        {"=F(" + Repeated("1,", 255) + "1)", 2, "'F' takes at most 255"},
        {"=" + Repeated("(", 65) + "1", 67, "the formula is nested deeper than 64 levels"},
        {"=" + std::string(8192, '1'), 8193, "the formula has more than 8192"},
    };
    for (const auto& c : cases) {
        try {
            (void)ParseFormula(Wide(c.formula));
            ADD_FAILURE() << "no fault in " << c.formula;
        } catch (const FormulaFault& fault) {
            EXPECT_EQ(fault.Position(), c.position) << c.formula << ": " << fault.what();
            EXPECT_THAT(fault.what(), testing::StartsWith(c.message)) << c.formula;
        }
    }
}

std::vector<std::string> Words(const std::vector<CellFault>& faults) {
    std::vector<std::string> words;
    for (const CellFault& fault : faults) {
        words.push_back(std::to_string(fault.Row()) + "," + std::to_string(fault.Column()) + ": " +
                        fault.what());
    }
    return words;
}

// A worksheet function of two arguments, the first by reference.
XLOPER12 sum_result;
std::vector<std::string> sum_calls;
extern "C" LPXLOPER12 PASCAL SumOfTwo(LPXLOPER12 a, LPXLOPER12 b) {
    sum_calls.push_back(Describe(*a) + " " + Describe(*b));
    const Value first = Host::Current()->Dereference(ValueFrom(*a));
    sum_result.xltype = xltypeNum;
    sum_result.val.num =
        (first.Is<double>() ? *first.If<double>() : 0) + (TypeOf(*b) == xltypeNum ? b->val.num : 0);
    return &sum_result;
}

class SheetTest : public ::testing::Test {
  protected:
    SheetTest() {
        sum_calls.clear();
        host.AddModule(TEXT("m.xll"), [](const char*) {
            return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&SumOfTwo));
        });
        Blocks blocks;
        std::vector<XLOPER12> records;
        for (const WCHAR* text : {TEXT("m.xll"), TEXT("SumOfTwo"), TEXT("QUQ"), TEXT("SumOfTwo")}) {
            records.push_back(RecordFrom(Text(text), blocks));
        }
        LPXLOPER12 operands[] = {&records[0], &records[1], &records[2], &records[3]};
        EXPECT_EQ(host.CallBack(xlfRegister, 4, operands, nullptr), xlretSuccess);
    }

    // The calculated sheet as CSV; faults are kept.
    std::string Calculated(const std::string& csv) {
        sheets.push_back(std::make_unique<Sheet>(csv));
        faults = Words(sheets.back()->Calculate(host, 1, TEXT("[Test]Sheet")));
        return sheets.back()->Csv();
    }
    // The faults of a sheet that isn't accepted.
    std::vector<std::string> Refused(const std::string& csv) {
        try {
            Calculated(csv);
        } catch (const SheetFaults& refused) {
            return Words(refused.All());
        }
        return {};
    }

    std::vector<std::unique_ptr<Sheet>> sheets;  // outlive the host, which reads their cells
    Host host;
    std::vector<std::string> faults;
};

TEST_F(SheetTest, ReadsFieldsAsExcelDoes) {
    const Sheet sheet("1.50,-3e2,+7,true,#N/A,,text,=,1 000,0x10,inf,1e999,'x,#n/a,\xC3\xA4\n");
    std::string values;
    for (COL column = 0; column < 15; ++column) values += Describe(sheet.Values().At({0, column})) + " ";
    EXPECT_EQ(
        values,
        "1.5 -300 7 TRUE #N/A (empty) \"text\" \"=\" \"1 000\" \"0x10\" \"inf\" \"1e999\" \"'x\" \"#n/a\" "
        "\"\xC3\xA4\" ");
    EXPECT_EQ(sheet.Csv(), "1.5,-300,7,TRUE,#N/A,,text,=,1 000,0x10,inf,1e999,'x,#n/a,\xC3\xA4\n");
}

TEST_F(SheetTest, WritesTextsThatItReadsBack) {
    const std::string csv = Calculated("\"=\"\"=\"\"&\"\"1+1\"\"\",\"=\"\"=a\"\"\"\"b\"\"\",=\n");
    EXPECT_EQ(csv, "\"=\"\"=1+1\"\"\",\"=\"\"=a\"\"\"\"b\"\"\",=\n");
    EXPECT_EQ(Calculated(csv), csv);
    EXPECT_EQ(Describe(sheets.back()->Values().At({0, 1})), "\"=a\"b\"");
    const std::string text = "\"=\"\"" + Repeated("=", 32767) + "\"\"\"\n";
    EXPECT_EQ(Calculated(text), text) << "longer than any formula";
}

std::string FileText(const char* path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

// What two other spreadsheets give, see functions/README.md; one of the two at least is right.
TEST_F(SheetTest, FunctionsGiveWhatOtherSpreadsheetsGive) {
    const CsvTable data = ParseCsv(FileText(FUNCTIONS_FOLDER "/data.csv"));
    const CsvTable expected = ParseCsv(FileText(FUNCTIONS_FOLDER "/expected.csv"));
    std::string csv;
    for (std::size_t row = 0; row < expected.size(); ++row) {
        std::vector<std::string> fields = row < data.size() ? data[row] : std::vector<std::string>(4);
        fields.push_back(expected[row][0]);
        csv += CsvLine(fields);
    }
    const CsvTable calculated = ParseCsv(Calculated(csv));
    const auto isSame = [](const std::string& a, const std::string& b) {
        double x = 0;
        double y = 0;
        return a == b || (ReadNumber(a, x) && ReadNumber(b, y) && std::fabs(x - y) <= 1e-12 * std::fabs(x));
    };
    for (std::size_t row = 0; row < expected.size(); ++row) {
        const std::string& value = calculated[row][4];
        EXPECT_TRUE(isSame(value, expected[row][1]) || isSame(value, expected[row][2]))
            << expected[row][0] << " gives " << value;
    }
}

TEST_F(SheetTest, CalculatesByNeedWhateverTheOrderOfCells) {
    EXPECT_EQ(Calculated("=B1+1,=C1+1,=A2*2\n=A3,=SUM(A1:C1),5\n10,=A1:A3,=C2\n"),
              "22,21,20\n10,63,5\n10,10,5\n");
}

TEST_F(SheetTest, CalculatesWhatFindsItsCellsBehindThem) {
    EXPECT_EQ(Calculated("\"=INDIRECT(\"\"C1\"\")+1\",=A1*2,=5*A2\n2,=SUM(B1:B1),\"=OFFSET(A1,0,2)\"\n"),
              "11,22,10\n2,22,10\n");
}

TEST_F(SheetTest, FollowsChainsOfAnyLength) {
    std::string csv;
    constexpr int rows = 20000;
    for (int row = 1; row < rows; ++row) csv += "=A" + std::to_string(row + 1) + "+1\n";
    EXPECT_THAT(Calculated(csv + "1\n"), testing::StartsWith(std::to_string(rows) + "\n"));
    EXPECT_THAT(
        Refused(csv + "=A1\n"),
        ElementsAre(
            "20000,1: circular reference: A1 -> A2 -> A3 -> A4 -> A5 -> A6 -> ... 19991 more cells ... "
            "-> A19998 -> A19999 -> A20000 -> A1"));
}

TEST_F(SheetTest, NamesTheCellsOfACircle) {
    EXPECT_THAT(Refused("=B1+B1,=C1+D1,=5,=B1\n"), ElementsAre("1,4: circular reference: B1 -> D1 -> B1"));
    EXPECT_THAT(Refused("1\n=SUM(A1:A3)\n3\n"), ElementsAre("2,1: circular reference: A2 -> A2"));
    EXPECT_THAT(Refused("\"=IF(TRUE,1,A1)\"\n"), ElementsAre(HasSubstr("A1 -> A1")))
        << "in a branch not taken, too";
    EXPECT_EQ(Calculated("=SUM(A2:B9),=SUM(A2:A9)\n1,=A2\n"), "2,1\n1,1\n")
        << "the same cells twice are no circle";
}

TEST_F(SheetTest, ReportsEveryBadCell) {
    EXPECT_THAT(Refused("=1+,2\n=A1,=(3\n"),
                ElementsAre("1,1: bad formula =1+: at character 4, an operand is expected",
                            "2,2: bad formula =(3: at character 2, the parenthesis isn't closed"));
    const std::pair<std::string, const char*> badSheets[] = {
        {"a,\"b", "1,2: the quote isn't closed"},
        {"a,b\"c", "1,2: a quote stands inside"},
        {"\"a\"b,c", "1,1: text stands behind"},
        {"a\rb", "1,1: a carriage return stands alone"},
        {"a,b\nc\n", "2,2: the row has 1 fields, the first one has 2"},
        {"a,\xFF\n", "1,2: the text isn't UTF-8"},
        {std::string(32768, 'x'), "1,1: a text has at most 32,767 characters"},
        {std::string(16384, ','), "1,16385: a sheet has at most 16,384 columns"},
        {std::string(1048577, '\n'), "1048577,1: a sheet has at most 1,048,576 rows"},
    };
    for (const auto& [csv, fault] : badSheets)
        EXPECT_THAT(Refused(csv), ElementsAre(testing::StartsWith(fault)));
}

TEST_F(SheetTest, CallsRegisteredFunctionsOnceEach) {
    EXPECT_EQ(Calculated("\"=SumOfTwo(B1,C1)\",\"=sumoftwo(C1,2)\",40\n"), "82,42,40\n");
    EXPECT_THAT(sum_calls, ElementsAre("C1 2", "B1 40"));
    EXPECT_TRUE(faults.empty());
    EXPECT_EQ(Calculated("\"=SumOfTwo(A2:B3,A2:B3)\",=SumOfTwo(A2)\n1,2\n3,4\n"), "0,1\n1,2\n3,4\n");
    EXPECT_THAT(sum_calls, ElementsAre("C1 2", "B1 40", "A2:B3 2x2 array", "A2 (missing)"));
}

TEST_F(SheetTest, TellsOfFunctionsItCannotCallAndGoesOn) {
    EXPECT_EQ(Calculated("=Foo(1),\"=IFERROR(A1,0)\",\"=SumOfTwo(1,2,3)\",=1\n"), "#NAME?,0,#VALUE!,1\n");
    EXPECT_THAT(faults,
                ElementsAre("1,1: unknown function 'Foo'", "1,3: 'SumOfTwo' takes 2 arguments, not 3"));
}

}  // namespace
}  // namespace excelhost
