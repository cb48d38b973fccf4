// Tests of an add-in by what Excel would see of it: its functions' results, and what became of each value that
// crossed the border.
#include "excelhost/host.h"
#include "excelhost/report/report.h"
#include "excelhost/session.h"
#include "excelhost/sheet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <initializer_list>
#include <vector>

using namespace excelhost;

namespace {

// Of Excel's published numbers.
constexpr int xlCoerce = xlSpecial | 2;

// An Excel with the add-in loaded. When a test is over, whatever it was, the add-in is closed and its account read.
class OwnAddIn : public testing::Test {
  protected:
    void TearDown() override {
        addIn.Close();
        for (const Finding& finding : excel.Findings()) ADD_FAILURE() << Describe(finding);
        EXPECT_TRUE(excel.GetAccount().Balanced()) << Describe(excel.GetAccount());
    }

    Value Call(const WCHAR* function, std::initializer_list<Value> arguments) {
        return excel.Call(function, arguments);
    }

    Host excel;
    Session addIn{excel, OWN_XLL};
};

TEST_F(OwnAddIn, ScalesEachNumberOfABlockAndLeavesErrorsAsTheyAre) {
    const Array block{2, 2, {1.0, -2.5, ErrorValue{xlerrDiv0}, 0.0}};
    EXPECT_EQ(Call(TEXT("OWN.SCALE"), {block, 3.0}),
              Value(Array{2, 2, {3.0, -7.5, ErrorValue{xlerrDiv0}, 0.0}}));
    EXPECT_EQ(Call(TEXT("OWN.SCALE"), {2.0, 3.0}), Value(Array{1, 1, {6.0}}));
}

TEST_F(OwnAddIn, FindsATextOrSaysThatItIsntThere) {
    const Array fruit{3, 1, {Text(TEXT("fig")), Text(TEXT("pear")), Empty{}}};
    EXPECT_EQ(Call(TEXT("OWN.FIND"), {fruit, Text(TEXT("pear"))}), Value(2.0));
    EXPECT_EQ(Call(TEXT("OWN.FIND"), {fruit, Text(TEXT("plum"))}), Value(ErrorValue{xlerrNA}));
}

TEST_F(OwnAddIn, CalculatesInASheet) {
    Sheet sheet(
        "1,2,pear\n"
        "\"=SUM(OWN.SCALE(A1:B1,10))\",\"=OWN.FIND(A1:C1,\"\"pear\"\")\",\n");
    EXPECT_TRUE(sheet.Calculate(excel, 1, TEXT("[Book1.xlsx]Sheet1")).empty());
    EXPECT_EQ(sheet.Csv(), "1,2,pear\n30,3,\n");
}

TEST_F(OwnAddIn, ShowsAnErrorWhenExcelGivesNoValues) {
    excel.Refuse(xlCoerce, xlretFailed);
    EXPECT_EQ(Call(TEXT("OWN.SCALE"), {2.0, 3.0}), Value(ErrorValue{xlerrValue}));
    excel.StopRefusing();
    EXPECT_EQ(Call(TEXT("OWN.SCALE"), {2.0, 3.0}), Value(Array{1, 1, {6.0}}));
}

// Each call on the road, as the trace keeps it.
TEST_F(OwnAddIn, AsksExcelForTheValuesOfARangeOnceAndGivesThemBack) {
    excel.AddSheet(1, TEXT("[Book1.xlsx]Sheet1"), [](const Area&) { return Value(Array{1, 2, {1.0, 2.0}}); });
    excel.ClearTrace();
    const Area a1b1{XLREF12{0, 0, 0, 1}};
    EXPECT_EQ(Call(TEXT("OWN.SCALE"), {a1b1, 3.0}), Value(Array{1, 2, {3.0, 6.0}}));
    const std::vector<int> calls = excel.TracedFunctions();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), xlCoerce), 1);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), xlFree), 1);
}

TEST_F(OwnAddIn, LeavesAPageToLookAt) {
    const std::filesystem::path file = testing::TempDir() + "own_tests.html";
    Report page(file, std::array{std::filesystem::path(OWN_XLL)});
    EXPECT_EQ(Call(TEXT("OWN.SCALE"), {2.0, 3.0}), Value(Array{1, 1, {6.0}}));
    page.Close(excel);
    EXPECT_GT(std::filesystem::file_size(file), 10'000U);
}

}  // namespace
