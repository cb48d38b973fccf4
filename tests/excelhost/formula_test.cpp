// The language of formulas: what is accepted, where a fault is, and what each formula gives.
#include "excelhost/calculate.h"

#include <gmock/gmock.h>

namespace excelhost {
namespace {

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
    return Describe(CalculateFormula(ParseFormula(Wide(formula)), {1, 3}, grid, Tell));
}

TEST(FormulaTest, GivesWhatExcelGives) {
    const std::pair<std::string, const char*> cases[] = {
        // Literals and space.
        {"=1", "1"},
        {"= 1 ", "1"},
        {"=.5", "0.5"},
        {"=1.5E-3", "0.0015"},
        {"=2e+2", "200"},
        {"=\"a \"\"b\"\"\"", "\"a \"b\"\""},
        {"=TRUE", "TRUE"},
        {"=#N/A", "#N/A"},
        {"=#DIV/0!", "#DIV/0!"},
        {"=IFERROR(#GETTING_DATA,1)", "1"},
        // Order of operators.
        {"=1+2*3", "7"},
        {"=(1+2)*3", "9"},
        {"=-2^2", "4"},
        {"=2^-1", "0.5"},
        {"=2^3^2", "64"},
        {"=10-4-3", "3"},
        {"=100/10/5", "2"},
        {"=-50%", "-0.5"},
        {"=200%%", "0.02"},
        {"=1&2+3", "\"15\""},
        {"=1&2=12", "FALSE"},
        {"=\"12\"=1&2", "TRUE"},
        {"=1<2=TRUE", "TRUE"},
        {"=--\"3\"", "3"},
        {"=+\"3\"", "\"3\""},
        {"=-+-1", "1"},
        {"=5--3", "8"},
        // Values as numbers and as text.
        {"=A1+A2", "12"},
        {"=A3+1", "1"},
        {"=A3", "0"},
        {"=A3&\"x\"", "\"x\""},
        {"=B1+1", "2"},
        {"=B1&A1", "\"TRUE5\""},
        {"=B2+1", "#VALUE!"},
        {"=\" 3 \"+1", "4"},
        {"=\"3x\"+1", "#VALUE!"},
        {"=0.1+0.2&\"\"", "\"0.3\""},
        {"=Z99", "0"},
        // Errors.
        {"=1/0", "#DIV/0!"},
        {"=0/0", "#DIV/0!"},
        {"=1E300*1E300", "#NUM!"},
        {"=(-1)^0.5", "#NUM!"},
        {"=0^0", "#NUM!"},
        {"=0^-1", "#DIV/0!"},
        {"=B3+1/0", "#N/A"},
        {"=1/0+B3", "#DIV/0!"},
        {"=-B3", "#N/A"},
        {"=B3=B3", "#N/A"},
        {"=B3&\"\"", "#N/A"},
        {"=#NULL!", "#NULL!"},
        // Comparisons: numbers before text before booleans, without regard to case.
        {"=\"a\"=\"A\"", "TRUE"},
        {"=\"a\"<\"B\"", "TRUE"},
        {"=\"a\"<\"ab\"", "TRUE"},
        {"=99<\"1\"", "TRUE"},
        {"=\"z\"<FALSE", "TRUE"},
        {"=TRUE>1E300", "TRUE"},
        {"=A3=0", "TRUE"},
        {"=A3=\"\"", "TRUE"},
        {"=A3=FALSE", "TRUE"},
        {"=A3=A3", "TRUE"},
        {"=2<>2", "FALSE"},
        {"=2>=2", "TRUE"},
        {"=2<=1", "FALSE"},
        // References: single cells, implicit intersection, order of corners.
        {"=$A$1+A$1+$A1", "15"},
        {"=a1", "5"},
        {"=C1:C3", "2"},
        {"=C3:C1*10", "20"},
        {"=A1:C1", "#VALUE!"},
        {"=A1:B3", "#VALUE!"},
        {"=C9:C10", "#VALUE!"},
        // Conditions are lazy.
        {"=IF(A1>4,\"yes\",1/0)", "\"yes\""},
        {"=IF(0,1/0,\"no\")", "\"no\""},
        {"=IF(FALSE,1)", "FALSE"},
        {"=IF(TRUE,,2)", "0"},
        {"=IF(B3,1,2)", "#N/A"},
        {"=IF(\"true\",1,2)", "1"},
        {"=IF(\"x\",1,2)", "#VALUE!"},
        {"=IF(,1,2)", "2"},
        {"=if(1,if(0,1,2),3)+IF(1,10,20)", "12"},
        {"=SUM(IF(1,C1:C3,A1))", "6"},
        // Functions that are built in.
        {"=SUM(C1:C3,10)", "16"},
        {"=SUM(A1:A3)", "5"},
        {"=SUM(\"7\",TRUE,,1)", "9"},
        {"=SUM(\"x\")", "#VALUE!"},
        {"=SUM(A1:C3)", "#N/A"},
        {"=SUM(C1:XFD1048576)", "6"},
        {"=SUM(E5:F9)", "0"},
        {"=SUM(1E308,1E308)", "#NUM!"},
        {"=AVERAGE(C1:C3)", "2"},
        {"=AVERAGE(A3)", "#DIV/0!"},
        {"=AVERAGE(B3)", "#N/A"},
        {"=COUNT(A1:C3,1,\"2\",\"x\",TRUE,#N/A)", "7"},
        {"=MAX(C1:C3)", "3"},
        {"=MIN(C1:C3,-4)", "-4"},
        {"=MAX(A3)", "0"},
        {"=MAX(-3,-2)", "-2"},
        {"=ROUND(2.5,0)", "3"},
        {"=ROUND(-2.5,0)", "-3"},
        {"=ROUND(1.005,2)", "1.01"},
        {"=ROUND(1234.5,-2)", "1200"},
        {"=ROUND(1.25,1.9)", "1.3"},
        {"=ROUND(1E300,5)", "1E+300"},
        {"=ROUND(0.5,-400)", "0"},
        {"=ROUND(\"x\",1)", "#VALUE!"},
        {"=ABS(-3)", "3"},
        {"=EXACT(\"a\",\"A\")", "FALSE"},
        {"=EXACT(5,A1)", "TRUE"},
        {"=EXACT(B3,1)", "#N/A"},
        {"=IFERROR(1/0,\"none\")", "\"none\""},
        {"=IFERROR(A1,1/0)", "5"},
        {"=NA()", "#N/A"},
        // Other functions are handed on with their arguments as they are.
        {"=F()", "\"F()\""},
        {"=f.x_1( )", "\"f.x_1()\""},
        {"=F(A1,,2)", "\"F(A1;(missing);2;)\""},
        {"=F(,)", "\"F((missing);(missing);)\""},
        {"=F(A1:B2,\"x\",TRUE,A3+0)", "\"F(A1:B2;\"x\";TRUE;0;)\""},
        {"=LOG10(G(1),1/0)", "\"LOG10(\"G(1;)\";#DIV/0!;)\""},
        {"=SUM(1,2)&F(3)", "\"3F(3;)\""},
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
        {"=1+", 4, "an operand is expected"},
        {"=*2", 2, "an operand is expected, not '*'"},
        {"=1 2", 4, "an operator or the end"},
        {"=A1 B1", 5, "an operator or the end"},
        {"=(1", 2, "the parenthesis isn't closed"},
        {"=1)", 3, "an operator or the end"},
        {"=()", 3, "an operand is expected, not ')'"},
        {"=F(1", 2, "the parenthesis of 'F' isn't closed"},
        {"=F(1;2)", 2, "the parenthesis of 'F' isn't closed"},
        {"=\"abc", 2, "the text isn't closed"},
        {"=1+rate", 4, "'rate' is no cell of a sheet"},
        {"=A0", 2, "'A0' is no cell"},
        {"=A01048577", 2, "'A01048577' is no cell"},
        {"=XFE1", 2, "'XFE1' is no cell"},
        {"=A1048577", 2, "'A1048577' is no cell"},
        {"=AAAAAAAAAAAA99999999999", 2, "'AAAAAAAAAAAA99999999999' is no cell"},
        {"=A1$", 2, "'A1$' is no cell"},
        {"=A1:", 5, "a cell is expected behind ':'"},
        {"=A1:2", 5, "a cell is expected behind ':'"},
        {"=Sheet1!A1", 2, "'Sheet1' is no cell"},
        {"=#WRONG!", 2, "no error value has this name"},
        {"=1.2.3", 5, "an operator or the end"},
        {"=1E", 2, "a bad number"},
        {"=1E999", 2, "a bad number"},
        {"=.", 2, "a bad number"},
        {"={1,2}", 2, "an operand is expected, not '{'"},
        {"=IF(1)", 2, "'IF' takes at least 2 arguments"},
        {"=1+IF(1,2,3,4)", 4, "'IF' takes at most 3 arguments"},
        {"=ROUND(1)", 2, "'ROUND' takes at least 2"},
        {"=NA(1)", 2, "'NA' takes at most 0"},
        {"=F(" + Repeated("1,", 255) + "1)", 2, "'F' takes at most 255"},
        {"=" + Repeated("(", 65) + "1", 67, "the formula is nested deeper than 64 levels"},
        {"=" + Repeated("F(", 65) + "1", 132, "the formula is nested deeper than 64 levels"},
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

TEST(FormulaTest, TakesTheLongestFormulasWithoutDepth) {
    EXPECT_EQ(Result("=" + Repeated("(", 64) + "1" + Repeated(")", 64)), "1");
    EXPECT_EQ(Result("=" + Repeated("1+", 4095) + "1"), "4096");
    EXPECT_EQ(Result("=" + Repeated("-", 8190) + "1"), "1");
    EXPECT_EQ(Result("=1" + Repeated("%", 8000)), "0");
    EXPECT_EQ(Result("=\"" + Repeated("x", 8000) + "\"&\"\"").size(), std::string("\"…\"").size() + 60);
}

TEST(FormulaTest, ReadsNumbersAsTheyAreTyped) {
    for (const char* text : {"1", "+1", "-1.5", ".5", "5.", "1e3", "1E-3", "007"}) {
        double number = 0;
        EXPECT_TRUE(ReadNumber(text, number)) << text;
    }
    for (const char* text :
         {"", "+", "+-1", "--1", "1 ", "1,5", "0x10", "inf", "nan", "1e", "1e999", "1e-999", "TRUE"}) {
        double number = 0;
        EXPECT_FALSE(ReadNumber(text, number)) << text;
    }
}

}  // namespace
}  // namespace excelhost
