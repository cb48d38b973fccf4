// References, their measures, and the size of a sheet by way of a simulated Excel and its automation server.
#include "excelvalues/xxloper.h"

#include "excelhost/automation/server.h"
#include "excelhost/host.h"

#include <comdef.h>

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Shown(const XXloperPtr& value) {
    return excelhost::Describe(*value);
}

TEST(References, MakersFillTheirRectangles) {
    const XLREF12 two[] = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    EXPECT_EQ(Shown(XXloperFromRectangles(0xFFFFFFFF, 2, two)), "sheet 4294967295 D2:E3 H6:I7");
    EXPECT_EQ(Shown(XXloperFromRectangles(9, {two[1], two[0]})), "sheet 9 H6:I7 D2:E3");
    EXPECT_EQ(Shown(XXloperFromRectangle(9, 0, 1048575, 0, 16383)), "sheet 9 A1:XFD1048576");
    EXPECT_EQ(Shown(XXloperFromCell(SheetCell{9, 4, 5})), "sheet 9 F5");
    EXPECT_EQ(Shown(XXloperFromRange({9, 2, 5, 1, 3})), "sheet 9 B3:C5");
    EXPECT_EQ(Shown(XXloperFromAreas({9, {{0, 1, 0, 1}, {2, 4, 2, 5}}})), "sheet 9 A1 C3:E4");
    EXPECT_EQ(Shown(XXloperFromSRef(1, 2, 3, 4)), "D2:E3");
    EXPECT_THROW(static_cast<void>(XXloperFromRectangles(9, std::vector<XLREF12>(65536))), std::length_error);
    EXPECT_EQ(XXloperFromRectangles(9, std::vector<XLREF12>(65535))->AreaCount(), 65535);
    const XXloperPtr empty = XXloperFromRectangles(7, 0, nullptr);
    EXPECT_EQ(empty->val.mref.lpmref->reflref[0].colLast, 0) << "there is room for a rectangle";
}

// Areas, rows, columns, cells of the reference; cells of the value without and with the empty ones.
std::string Measured(const XXloperPtr& value) {
    std::string text;
    for (const std::int64_t measure :
         {std::int64_t{value->AreaCount()}, std::int64_t{value->RowCount()},
          std::int64_t{value->ColumnCount()}, value->ReferenceCellCount(), value->CellCount(false)}) {
        text += std::to_string(measure) + " ";
    }
    return text + std::to_string(value->CellCount(true));
}

TEST(References, Measures) {
    EXPECT_EQ(Measured(XXloperFromRange({9, 2, 5, 1, 3})), "1 3 2 6 6 6");
    EXPECT_EQ(Measured(XXloperFromRectangle(9, 0, 1048575, 0, 16383)),
              "1 1048576 16384 17179869184 17179869184 17179869184");
    EXPECT_EQ(Measured(XXloperFromAreas({9, {{0, 2, 0, 2}, {0, 3, 0, 1}}})), "2 -1 65535 7 7 7");
    EXPECT_EQ(Measured(XXloperFromRectangles(9, 0, nullptr)), "0 -1 65535 0 0 0");
    const XXloperPtr filled[] = {XXloperFromString(TEXT("")), XXloperFromError(xlerrNA), XXloperFromInt(1)};
    const XXloperPtr empty[] = {XXloperFlow(), XXloperMissing(), XXloperNil()};
    for (const XXloperPtr& value : filled) EXPECT_EQ(Measured(value), "0 -1 65535 0 1 1");
    for (const XXloperPtr& value : empty) EXPECT_EQ(Measured(value), "0 -1 65535 0 0 1");
    EXPECT_EQ(Measured(XXloperFromBlob({})), "0 -1 65535 0 0 0");
    XLOPER12 cells[] = {*filled[0], *empty[1], *filled[2], *XXloperFromSRef(2, 4, 1, 2)};
    XLOPER12 array{};
    array.xltype = xltypeMulti;
    array.val.array = {cells, 2, 2};
    EXPECT_EQ(Measured(XXloperLentByExcel(&array)), "0 -1 65535 0 8 9");
}

int PASCAL CallBack(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) {
    return excelhost::Host::Current()->CallBack(function, count, operands, result);
}

// Excel from both sides: the callback, which names sheets, and the automation server, which has them.
class SheetSize : public testing::Test {
  protected:
    SheetSize() : application(server.NewApplication()) {
        Excel12EntryPoint = &CallBack;
        server.Model().AddWorkbook(TEXT("My [old] Book.xls")).compatible = true;
        IDSHEET id = 0;
        for (const WCHAR* name :
             {TEXT("[Book1]Sheet1"), TEXT("[My [old] Book.xls]Sheet1"), TEXT("[Book1]Gone"),
              TEXT("Book1]Sheet1"), TEXT("Sheet1"), TEXT("[Gone]Sheet1"), TEXT("]Sheet1")}) {
            host.AddSheet(++id, name, [](const excelhost::Area&) { return excelhost::Empty{}; });
        }
    }
    ~SheetSize() override {
        application->Release();
        Excel12EntryPoint = nullptr;
        EXPECT_TRUE(server.Live().empty());
        EXPECT_TRUE(host.GetAccount().Balanced());
    }
    // "rows x columns", or the number of the failure.
    static std::string SizeOf(IDispatch* excel, std::uint32_t sheetId) {
        std::int32_t rows = -7;
        std::int16_t columns = -7;
        try {
            WorksheetSize(excel, sheetId, rows, columns);
        } catch (const _com_error& error) {
            EXPECT_EQ(rows * columns, 49) << "a failure changed the size";
            char text[16];
            std::snprintf(text, sizeof(text), "com %08X", static_cast<unsigned>(error.Error()));
            return text;
        }
        return std::to_string(rows) + " x " + std::to_string(columns);
    }

    excelhost::Host host;
    excelhost::automation::AutomationServer server;
    IDispatch* application;
};

TEST_F(SheetSize, IsThatOfTheNamedSheet) {
    EXPECT_EQ(SizeOf(application, 1), "1048576 x 16384");
    EXPECT_EQ(SizeOf(application, 2), "com 8002000B") << "the name ends at the first bracket";
    EXPECT_EQ(SizeOf(application, 3), "com 8002000B") << "no such sheet";
    EXPECT_EQ(SizeOf(application, 4), "1048576 x 16384") << "a bracket in front is not needed";
    EXPECT_EQ(SizeOf(application, 5), "com 80070057") << "no workbook is named";
    EXPECT_EQ(SizeOf(application, 6), "com 8002000B") << "no such workbook";
    EXPECT_EQ(SizeOf(application, 7), "com 8002000B") << "a workbook is named, by no name";
    EXPECT_EQ(SizeOf(application, 99), "com 80070057") << "Excel knows no such sheet";
    server.Model().FindWorkbook(TEXT("Book1"))->compatible = true;
    EXPECT_EQ(SizeOf(application, 1), "65536 x 256");
    EXPECT_EQ(WorksheetRowCount(application, 1), 65536);
    EXPECT_EQ(WorksheetColumnCount(application, 1), 256);
    server.busy = true;
    EXPECT_EQ(SizeOf(application, 1), "com 80010001");
    EXPECT_EQ(SizeOf(nullptr, 1), "com 80004003");
}

// Both inquiries are the same. The sheet has shrunk by the second one, so that the result shows which came first.
TEST_F(SheetSize, WholeSheetAsksForColumnsAndThenForRows) {
    EXPECT_EQ(Shown(XXloperFromSheet(nullptr, 1, false)), "sheet 1") << "nothing is asked";
    int inquiries = 0;
    host.OnEntry([&](const excelhost::Entry& entry) {
        if (entry.function == xlSheetNm && ++inquiries == 2)
            server.Model().FindWorkbook(TEXT("Book1"))->compatible = true;
    });
    EXPECT_EQ(Shown(XXloperFromSheet(application, 1, true)), "sheet 1 A1:XFD65536");
    host.OnEntry({});
    std::string calls;
    for (const auto& call : server.Record()) calls += Describe(call) + "; ";
    const std::string inquiry =
        "Application 572 get; Workbooks 170 get (BSTR Book1); Workbook 494 get; Sheets 170 get (BSTR "
        "Sheet1); "
        "Worksheet 238 get; Range 258 get; Range 118 get; Worksheet 238 get; Range 241 get; Range 118 get; ";
    EXPECT_EQ(calls, inquiry + inquiry);
}

}  // namespace
