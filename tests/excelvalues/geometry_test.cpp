// References, their measures, and the size of a sheet by way of a simulated Excel and its automation server.
#include "excelvalues/xxloper.h"

#include "excelhost/automation/server.h"
#include "excelhost/host.h"

#include <comdef.h>

#include <gmock/gmock.h>

#include <limits>
#include <string>

namespace {

using testing::ElementsAre;

// A reference as "sheet: rows x columns ...", ends included.
std::string Shown(const XXloperPtr& value) {
    const auto show = [](const XLREF12& area) {
        return " " + std::to_string(area.rwFirst) + ".." + std::to_string(area.rwLast) + " x " +
               std::to_string(area.colFirst) + ".." + std::to_string(area.colLast);
    };
    if (value->xltype == xltypeSRef)
        return std::to_string(value->val.sref.count) + ":" + show(value->val.sref.ref);
    if (value->xltype != xltypeRef) return "no reference";
    std::string text = std::to_string(value->val.mref.idSheet) + ":";
    const XLMREF12& block = *value->val.mref.lpmref;
    for (const XLREF12 *area = block.reflref, *end = area + block.count; area != end; ++area)
        text += show(*area);
    return text;
}

TEST(References, MakersFillTheirRectangles) {
    const XLREF12 two[] = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    EXPECT_EQ(Shown(XXloperFromRectangles(0xFFFFFFFF, 2, two)), "4294967295: 1..2 x 3..4 5..6 x 7..8");
    EXPECT_EQ(Shown(XXloperFromRectangles(9, {two[1], two[0]})), "9: 5..6 x 7..8 1..2 x 3..4");
    EXPECT_EQ(Shown(XXloperFromRectangle(9, 0, 1048575, 0, 16383)), "9: 0..1048575 x 0..16383");
    EXPECT_EQ(Shown(XXloperFromCell(9, 4, 5)), "9: 4..4 x 5..5");
    EXPECT_EQ(Shown(XXloperFromCell(SheetCell{9, 4, 5})), "9: 4..4 x 5..5");
    EXPECT_EQ(Shown(XXloperFromRange({9, 2, 5, 1, 3})), "9: 2..4 x 1..2");
    EXPECT_EQ(Shown(XXloperFromRange({9, 0, 1, 0, std::numeric_limits<std::int16_t>::min()})),
              "9: 0..0 x 0..32767")
        << "in 16 bits";
    EXPECT_EQ(Shown(XXloperFromAreas({9, {{0, 1, 0, 1}, {2, 4, 2, 5}}})), "9: 0..0 x 0..0 2..3 x 2..4");
    EXPECT_EQ(Shown(XXloperFromAreas({9, {}})), "9:");
    EXPECT_EQ(Shown(XXloperFromSRef(1, 2, -1, 4)), "1: 1..2 x -1..4");
    EXPECT_THROW(static_cast<void>(XXloperFromRectangles(9, std::vector<XLREF12>(65536))), std::length_error);
    EXPECT_EQ(XXloperFromRectangles(9, std::vector<XLREF12>(65535))->AreaCount(), 65535);
}

TEST(References, AnEmptyOneHasRoomForARectangle) {
    const XXloperPtr empty = XXloperFromRectangles(7, 0, nullptr);
    const XLMREF12& block = *empty->val.mref.lpmref;
    const XLREF12& room = block.reflref[0];
    EXPECT_EQ(block.count, 0);
    EXPECT_THAT((std::vector{room.rwFirst, room.rwLast, room.colFirst, room.colLast}),
                ElementsAre(0, 0, 0, 0));
    EXPECT_EQ(Shown(XXloperCopy(empty)), "7:");
}

TEST(References, Measures) {
    const struct {
        XXloperPtr value;
        int areas;
        std::int32_t rows;
        int columns;
        std::int64_t cells;
    } cases[] = {
        {XXloperFromRange({9, 2, 5, 1, 3}), 1, 3, 2, 6},
        {XXloperFromSRef(2, 4, 1, 2), 1, 3, 2, 6},
        {XXloperFromRectangle(9, 0, 1048575, 0, 16383), 1, 1048576, 16384, 17179869184},
        {XXloperFromAreas({9, {{0, 2, 0, 2}, {0, 3, 0, 1}}}), 2, -1, 0xFFFF, 7},
        {XXloperFromRectangles(9, 0, nullptr), 0, -1, 0xFFFF, 0},
        {XXloperFromInt(1), 0, -1, 0xFFFF, 0},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(each.value->AreaCount(), each.areas);
        EXPECT_EQ(each.value->RowCount(), each.rows);
        EXPECT_EQ(each.value->ColumnCount(), each.columns);
        EXPECT_EQ(each.value->ReferenceCellCount(), each.cells);
        EXPECT_EQ(each.value->CellCount(true),
                  each.areas == 0 && TypeOf(*each.value) == xltypeInt ? 1 : each.cells);
    }
    XXloper withoutBlock;
    withoutBlock.xltype = xltypeRef | xlbitXLFree;
    withoutBlock.val.mref.lpmref = nullptr;
    EXPECT_EQ(withoutBlock.AreaCount(), 0);
    EXPECT_EQ(withoutBlock.ReferenceCellCount(), 0);
}

TEST(References, CellsOfOtherValues) {
    const BYTE bytes[] = {1};
    const struct {
        XXloperPtr value;
        std::int64_t filled, all;
    } scalars[] = {
        {XXloperFromString(TEXT("")), 1, 1},
        {XXloperFromBool(0), 1, 1},
        {XXloperFromError(xlerrNA), 1, 1},
        {XXloperFlow(), 0, 1},
        {XXloperMissing(), 0, 1},
        {XXloperNil(), 0, 1},
        {XXloperFromBlob({bytes, bytes + 1}), 0, 0},
    };
    for (const auto& each : scalars) {
        EXPECT_EQ(each.value->CellCount(false), each.filled);
        EXPECT_EQ(each.value->CellCount(true), each.all);
    }
    // An array borrows these; it isn't to free them.
    const auto count = [](std::initializer_list<XXloperPtr> elements, bool countEmpty) {
        std::vector<XLOPER12> records;
        for (const XXloperPtr& element : elements) records.push_back(*element);
        XLOPER12 array{};
        array.xltype = xltypeMulti;
        array.val.array.lparray = records.data();
        array.val.array.rows = 1;
        array.val.array.columns = static_cast<std::int32_t>(records.size());
        return XXloperLentByExcel(&array)->CellCount(countEmpty);
    };
    const XXloperPtr number = XXloperFromInt(3);
    const XXloperPtr cells = XXloperFromRange({9, 0, 3, 0, 1});
    EXPECT_EQ(count({number, XXloperFromString(TEXT("x")), XXloperNil(), XXloperMissing()}, false), 2);
    EXPECT_EQ(count({number, XXloperFromString(TEXT("x")), XXloperNil(), XXloperMissing()}, true), 4);
    EXPECT_EQ(count({cells, number}, false), 4);
    EXPECT_EQ(count({}, true), 0);
}

int PASCAL CallBack(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) {
    return excelhost::Host::Current()->CallBack(function, count, operands, result);
}

// Excel from both sides: the callback, which names sheets, and the automation server, which has them.
class SheetSize : public testing::Test {
  protected:
    void SetUp() override {
        previous = std::exchange(Excel12EntryPoint, &CallBack);
        server.Model().AddWorkbook(TEXT("My [old] Book.xls")).compatible = true;
        AddSheet(1, TEXT("[Book1]Sheet1"));
        AddSheet(2, TEXT("[My [old] Book.xls]Sheet1"));
        AddSheet(3, TEXT("[Book1]Gone"));
        AddSheet(4, TEXT("Book1]Sheet1"));
        AddSheet(5, TEXT("Sheet1"));
        AddSheet(6, TEXT("[Gone]Sheet1"));
        AddSheet(7, TEXT(""));
        application = server.NewApplication();
    }
    void TearDown() override {
        application->Release();
        Excel12EntryPoint = previous;
        EXPECT_TRUE(server.Live().empty());
        EXPECT_TRUE(host.GetAccount().Balanced());
    }
    void AddSheet(IDSHEET id, const WCHAR* name) {
        host.AddSheet(id, name, [](const excelhost::Area&) { return excelhost::Empty{}; });
    }
    // "rows x columns", or the number of the failure.
    std::string SizeOf(std::uint32_t sheetId) {
        std::int32_t rows = -7;
        std::int16_t columns = -7;
        try {
            WorksheetSize(application, sheetId, rows, columns);
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
    EXCEL12PROC previous = nullptr;
    IDispatch* application = nullptr;
    IDispatch* noApplication = nullptr;
};

TEST_F(SheetSize, IsThatOfTheNamedSheet) {
    EXPECT_EQ(SizeOf(1), "1048576 x 16384");
    EXPECT_EQ(SizeOf(2), "com 8002000B") << "the name ends at the first bracket";
    EXPECT_EQ(SizeOf(3), "com 8002000B") << "no such sheet";
    EXPECT_EQ(SizeOf(4), "1048576 x 16384")
        << "a bracket in front is dropped where it stands, and not needed";
    EXPECT_EQ(SizeOf(5), "com 80070057") << "no workbook is named";
    EXPECT_EQ(SizeOf(6), "com 8002000B") << "no such workbook";
    EXPECT_EQ(SizeOf(7), "com 80070057");
    EXPECT_EQ(SizeOf(99), "com 80070057") << "Excel knows no such sheet";
    server.Model().FindWorkbook(TEXT("Book1"))->compatible = true;
    EXPECT_EQ(SizeOf(1), "65536 x 256");
    EXPECT_EQ(WorksheetRowCount(application, 1), 65536);
    EXPECT_EQ(WorksheetColumnCount(application, 1), 256);
    server.busy = true;
    EXPECT_EQ(SizeOf(1), "com 80010001");
    std::swap(application, noApplication);
    EXPECT_EQ(SizeOf(1), "com 80004003") << "no application";
    std::swap(application, noApplication);
}

TEST_F(SheetSize, WholeSheetAsksForColumnsAndThenForRows) {
    EXPECT_EQ(Shown(XXloperFromSheet(nullptr, 1, false)), "1:") << "nothing is asked";
    EXPECT_EQ(Shown(XXloperFromSheet(application, 1, true)), "1: 0..1048575 x 0..16383");
    std::string calls;
    for (const auto& call : server.Record()) calls += Describe(call) + "; ";
    const std::string inquiry =
        "Application 572 get; Workbooks 170 get (BSTR Book1); Workbook 494 get; Sheets 170 get (BSTR "
        "Sheet1); "
        "Worksheet 238 get; Range 258 get; Range 118 get; Worksheet 238 get; Range 241 get; Range 118 get; ";
    EXPECT_EQ(calls, inquiry + inquiry);
}

}  // namespace
