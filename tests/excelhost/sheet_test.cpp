// Sheets: reading cells, order of calculation, circles, and functions of an add-in.
#include "excelhost/sheet.h"

#include <gmock/gmock.h>

namespace excelhost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

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
    const Sheet sheet("1.50,-3e2,true,FALSE,#N/A,,text,\"=\",+7,1 000,\"2\",'x,#n/a,\xC3\xA4\n");
    const Value expected[] = {1.5,
                              -300.0,
                              true,
                              false,
                              ErrorValue{xlerrNA},
                              Empty{},
                              Text(TEXT("text")),
                              Text(TEXT("=")),
                              7.0,
                              Text(TEXT("1 000")),
                              2.0,
                              Text(TEXT("'x")),
                              Text(TEXT("#n/a")),
                              Text(1, WCHAR{0xE4})};
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(sheet.Values().At({0, static_cast<COL>(i)}), expected[i]) << i;
    }
    EXPECT_EQ(sheet.Csv(), "1.5,-300,TRUE,FALSE,#N/A,,text,=,7,1 000,2,'x,#n/a,\xC3\xA4\n");
    EXPECT_EQ(Sheet("").Csv(), "");
}

TEST_F(SheetTest, CalculatesByNeedWhateverTheOrderOfCells) {
    EXPECT_EQ(Calculated("=B1+1,=C1+1,=A2*2\n=A3,=SUM(A1:C1),5\n10,=A1:A3,=C2\n"),
              "22,21,20\n10,63,5\n10,10,5\n");
}

TEST_F(SheetTest, FollowsChainsOfAnyLength) {
    std::string csv;
    constexpr int rows = 20000;
    for (int row = 1; row < rows; ++row) csv += "=A" + std::to_string(row + 1) + "+1\n";
    EXPECT_THAT(Calculated(csv + "1\n"), testing::StartsWith(std::to_string(rows) + "\n"));
    EXPECT_THAT(Refused(csv + "=A1\n"), ElementsAre(HasSubstr("circular reference: A1 -> A2 -> A3 -> ")));
}

TEST_F(SheetTest, NamesTheCellsOfACircle) {
    EXPECT_THAT(Refused("=A1\n"), ElementsAre("1,1: circular reference: A1 -> A1"));
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
    EXPECT_THAT(Refused("a,b\nc\n"), ElementsAre("2,2: the row has 1 fields, the first one has 2"));
    EXPECT_THAT(Refused("a,\xFF\n"), ElementsAre("1,2: the text isn't UTF-8"));
    EXPECT_THAT(Refused(std::string(32768, 'x')), ElementsAre("1,1: a text has at most 32,767 characters"));
    EXPECT_THAT(Refused(std::string(16384, ',')), ElementsAre("1,16385: a sheet has at most 16,384 columns"));
    EXPECT_THAT(Refused(std::string(1048577, '\n')),
                ElementsAre("1048577,1: a sheet has at most 1,048,576 rows"));
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

TEST_F(SheetTest, ServesTheHostsReferences) {
    Calculated("1,2\n3,4\n");
    EXPECT_EQ(host.Dereference(Area{{0, 0, 1, 1}}), Value(2.0));
    EXPECT_EQ(host.Dereference(Reference{1, {Area{{1, 2, 1, 1}}}}), Value(Array{2, 1, {4.0, Empty{}}}));
    EXPECT_EQ(host.Dereference(Area{{0, kRowLimit - 1, 0, kColumnLimit - 1}}), Value(ErrorValue{xlerrValue}))
        << "too large to be given by value";
}

}  // namespace
}  // namespace excelhost
