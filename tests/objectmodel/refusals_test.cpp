// What Excel's refusals become: of formulas, addresses and arrays of real cells, on new and old hosts; what
// is asked on the way; and how the host is found out.
#include "operations.h"

#include "objectmodel/detail/probes.h"

#include <gmock/gmock.h>

namespace world {
namespace {

// What serves reads and writes, with the new properties or with what stands in for them.
const struct Property {
    std::string name;
    DISPID dispid;
    LONG latch;
    VARIANT (MsExcel::Range::*read)() const;
    void (MsExcel::Range::*write)(VARIANT);
} properties[] = {
    {"Formula2", 1580, 1, &MsExcel::Range::GetFormula2, &MsExcel::Range::PutFormula2},
    {"Formula2Local", 3300, 1, &MsExcel::Range::GetFormula2Local, &MsExcel::Range::PutFormula2Local},
    {"Formula", 261, 0, &MsExcel::Range::GetFormula2, &MsExcel::Range::PutFormula2},
    {"FormulaLocal", 263, 0, &MsExcel::Range::GetFormula2Local, &MsExcel::Range::PutFormula2Local},
    {"FormulaArray", 586, 0, &MsExcel::Range::GetFormulaArray, &MsExcel::Range::PutFormulaArray},
};

// A cell and its sheet as they answer after the refusal.
struct Situation {
    const char* what;
    HRESULT refusal;
    bool isProtected, locked, inArray;
    Variant hidden;
    const char* read;
    const char* write;
    const char* ofArray;  // what a write of FormulaArray raises
};

constexpr const char* readError = "VexExcelCellFormulaReadError XRange14::Get* 2698 <[Book1]Sheet1!$B$3>";
constexpr const char* hiddenCell =
    "VexExcelWorksheetProtectedCellHidden XRange14::Get* 2843 <[Book1]Sheet1!$B$3>";
constexpr const char* inArray = "VexCellPartOfArrayFormula XRange14::Put* 2714 <[Book1]Sheet1!$B$3>";
constexpr const char* lockedCell =
    "VexExcelWorksheetProtectedCellLocked XRange14::Put* 2639 <[Book1]Sheet1!$B$3>";
constexpr const char* memory = "VexExcelCellFormulaWriteError XRange14::Put* 2696 <[Book1]Sheet1!$B$3> <=1+>";
constexpr const char* other = "VexExcelCellFormulaWriteError XRange14::Put* 2697 <[Book1]Sheet1!$B$3> <=1+>";

TEST(Refusals, OfFormulasTellWhyByCellAndSheet) {
    const Situation situations[] = {
        {"wrong formula", E_FAIL, false, false, false, false, readError, other, other},
        {"out of memory", E_OUTOFMEMORY, false, false, false, false, readError, memory, other},
        {"in an array", E_FAIL, false, false, true, false, readError, inArray, other},
        {"in an array, locked", E_FAIL, true, true, true, false, readError, inArray, lockedCell},
        {"locked", E_FAIL, true, true, false, false, readError, lockedCell, lockedCell},
        {"locked and hidden on an open sheet", E_FAIL, false, true, false, true, readError, other, other},
        {"protected, out of memory", E_OUTOFMEMORY, true, false, false, false, readError, memory, other},
        {"protected, some hidden", E_FAIL, true, false, false, Variant::Null(), hiddenCell, other, other},
        {"protected, no answer to speak of", E_FAIL, true, false, false, 0, hiddenCell, other, other},
    };
    for (const Property& property : properties) {
        for (const Situation& each : situations) {
            SCOPED_TRACE(property.name + ": " + each.what);
            World world;
            Formula2Available = property.latch;
            world.Sheet().protectedContents = each.isProtected;
            world.server.Answer("Range", 266, each.inArray);
            world.server.Answer("Range", 269, each.locked);
            world.server.Answer("Range", 262, each.hidden);
            world.server.Refuse("Range", property.dispid, Refusal::Result(each.refusal));
            const auto cell = world.Range(TEXT("B3"));
            const auto expect = [&](std::string raised, const std::string& calls, const auto& body) {
                world.server.ClearRecord();
                EXPECT_EQ(Outcome(body), raised.replace(raised.find('*'), 1, property.name));
                EXPECT_EQ(world.Calls(), "Range " + std::to_string(property.dispid) + calls);
            };
            const std::string address = "; Range 437 get (BOOL true, BOOL true, I4 1, BOOL true)";
            const std::string sheet = "; Range 348 get; Worksheet 292 get";
            expect(each.read, " get" + address + sheet + (each.isProtected ? "; Range 262 get" : ""), [&] {
                OwnedVariant((*cell.*property.read)());
                return "";
            });
            const std::string lock = sheet + (each.isProtected ? "; Range 269 get" : "");
            const bool isArray = property.dispid == 586;
            expect(isArray ? each.ofArray : each.write,
                   " put = BSTR =1+" + (isArray        ? lock + address
                                        : each.inArray ? address + "; Range 266 get"
                                                       : address + "; Range 266 get" + lock),
                   [&] {
                       (*cell.*property.write)(Variant(TEXT("=1+")).Detach());
                       return "";
                   });
        }
    }
}

TEST(Refusals, OnTheWayGoUpAsTheyAre) {
    World world;
    const auto cell = world.Range(TEXT("B3"));
    const auto write = [&](const Variant& value) {
        return Outcome([&] {
            cell->PutFormula2(Variant(value).Detach());
            return "";
        });
    };
    world.server.Refuse("Range", 1580, Refusal::Result(E_FAIL));
    EXPECT_EQ(write({}), "VexExcelCellFormulaWriteError XRange14::PutFormula2 2697 <[Book1]Sheet1!$B$3> <>");
    EXPECT_EQ(write(Variant::Null()), "com 80020005") << "it has no text";
    world.server.Answer("Range", 266, Variant::Null());
    EXPECT_EQ(write(1), "com 80020005") << "some cells are in an array, some aren't";
    world.server.Refuse("Range", 437, Refusal::Result(RPC_E_DISCONNECTED));
    EXPECT_EQ(write(1), "com 80010108");
    EXPECT_EQ(Outcome([&] { return Shown(world, "")(cell->GetFormula2()); }), "com 80010108");
    EXPECT_EQ(Outcome([&] { return Shown(world, "")(cell->GetAddressLocal(true, true, true)); }),
              "com 80010108");
}

TEST(Refusals, OfAddressesAndArraysTellWhetherTheCellIsLocked) {
    const struct {
        bool isProtected, locked;
        const WCHAR* cell;
        const char* address;
        const char* array;
    } rows[] = {
        {false, true, TEXT("B3"), "", "empty"},
        {true, false, TEXT("B3"), "",
         "VexExcelWorksheetProtected XRange14::GetCurrentArray 2851 <[Book1]Sheet1!$B$3>"},
        {true, true, TEXT("B3"), "VexExcelWorksheetProtectedCellLocked XRange14::GetAddress 2851 <>",
         "VexExcelWorksheetProtectedCellLocked XRange14::GetCurrentArray 2851 <[Book1]Sheet1!$B$3>"},
        {true, true, TEXT("D1"), "VexExcelWorksheetProtectedCellLocked XRange14::GetAddress 2851 <>",
         "Range $D$1:$D$2"},
    };
    for (const auto& row : rows) {
        World world;
        world.Sheet().protectedContents = row.isProtected;
        world.server.Answer("Range", 269, row.locked);
        world.server.Refuse("Range", 236, Refusal::Result(E_FAIL));
        const auto range = world.Range(row.cell);
        const Shown shown(world, world.Live());
        EXPECT_EQ(Outcome([&] { return shown(range->GetAddress(true, true, true)); }), row.address);
        EXPECT_EQ(Outcome([&] { return shown(range->GetCurrentArray()); }), row.array);
    }
}

// Once a process: the first formula asks one cell of the range, all later ones know.
TEST(HostProbes, OfFormula2) {
    const struct {
        bool newHost, busyOnce;
        const char* first;
        const char* second;
        LONG latch;
    } rows[] = {
        {true, false, "Range 256 get (INT 1, INT 1); Range 1580 get; Range 1580 get", "Range 1580 put = R8 1",
         1},
        {false, false, "Range 256 get (INT 1, INT 1); Range 1580 get; Range 261 get", "Range 261 put = R8 1",
         0},
        {true, true, "Range 256 get (INT 1, INT 1); Range 261 get", "Range 261 put = R8 1", 0},
    };
    for (const auto& row : rows) {
        World world;
        world.server.hasFormula2 = row.newHost;
        Formula2Available = -1;
        if (row.busyOnce) world.server.Refuse("Range", 256, Refusal::Result(RPC_E_CALL_REJECTED), 1);
        EXPECT_EQ(Outcome([] { return OwnedVariant(MakeRange(nullptr)->GetFormula2())->vt != 0 ? "" : "-"; }),
                  "com 80004003");
        EXPECT_EQ(Formula2Available, -1) << "a range that holds null tells nothing about the host";
        const auto range = world.Range(TEXT("A1:A2"));
        EXPECT_EQ(OwnedVariant(range->GetFormula2())->vt, VT_ARRAY | VT_VARIANT);
        EXPECT_EQ(world.Calls(), row.first);
        world.server.ClearRecord();
        range->PutFormula2(Number(1));
        EXPECT_EQ(world.Calls(), row.second);
        EXPECT_EQ(Formula2Available, row.latch);
    }
}

TEST(HostProbes, OfHasSpillOnARangeAndOnTheApplication) {
    for (const bool newHost : {true, false}) {
        const std::string first = newHost ? "Range 3295 get; Range 3295 get" : "Range 3295 get";
        World world;
        world.server.hasSpill = newHost;
        HasSpillAvailable = -1;
        const Shown shown(world, "");
        const auto cell = world.Range(TEXT("F1"));
        for (const std::string& calls : {first, std::string(newHost ? "Range 3295 get" : "")}) {
            world.server.ClearRecord();
            EXPECT_EQ(shown(cell->GetHasSpill()), newHost ? "BOOL true" : "BOOL false");
            EXPECT_EQ(world.Calls(), calls);
        }
        HasSpillAvailable = -1;
        EXPECT_EQ(world.application->IsHasSpillAvailable(), newHost);
        EXPECT_THAT(world.Calls(), testing::EndsWith("Range 170 get (I4 1, I4 1); " + first));
        EXPECT_EQ(HasSpillAvailable, newHost ? 1 : 0);
    }
    // It waits for a cell.
    World world;
    HasSpillAvailable = -1;
    world.application->Quit();
    EXPECT_FALSE(world.application->IsHasSpillAvailable());
    EXPECT_EQ(HasSpillAvailable, -1);
    static_cast<void>(world.application->GetWorkbooks()->Add());
    EXPECT_TRUE(world.application->IsHasSpillAvailable());
    HasSpillAvailable = -1;
    ProbeHasSpill(nullptr);
    EXPECT_EQ(HasSpillAvailable, 0);
}

// A probe holds the range while it asks, and clears what it is given.
TEST(HostProbes, LeaveTheCountsAsTheyWere) {
    World world;
    const auto range = world.Range(TEXT("A1"));
    const auto object = Variant::Adopt(world.server.NewRange(world.Sheet(), TEXT("B2")));
    for (const DISPID asked : {1580, 3295}) world.server.Answer("Range", asked, object);
    const std::string before = world.Counts();
    std::string during;
    world.server.Interpose([&](const auto& call) -> std::optional<Refusal> {
        if (call.dispid != 256) during = world.Counts();
        return std::nullopt;
    });
    Formula2Available = HasSpillAvailable = -1;
    ProbeFormula2(range->GetDispatch());
    EXPECT_EQ(during, "Application 1; Range 2; Range 3; Range 1; ") << "the range, the answer, the cell";
    ProbeHasSpill(range->GetDispatch());
    EXPECT_EQ(during, "Application 1; Range 2; Range 3; ");
    EXPECT_EQ(world.Counts(), before);
    EXPECT_EQ(Formula2Available + HasSpillAvailable, 2);
}

}  // namespace
}  // namespace world
