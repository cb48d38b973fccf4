// What Excel's refusals become: of formulas, addresses and arrays of real cells, on new and old hosts.
#include "operations.h"

#include <gmock/gmock.h>

namespace world {
namespace {

constexpr DISPID dispidAddress = 236;

void Arrange(World& world, bool isProtected, bool locked, bool hidden) {
    world.Sheet().protectedContents = isProtected;
    world.Sheet().At(3, 2).locked = locked;
    world.Sheet().At(3, 2).hidden = hidden;
    // Excel itself wouldn't refuse these.
    world.server.Refuse("Range", dispidAddress, Refusal::Result(E_FAIL));
}

TEST(Refusals, TellWhyByCellAndSheet) {
    const struct {
        const char* situation;
        bool isProtected, locked, hidden;
        const WCHAR* address;
        const char* read;
        const char* write;
        const char* getAddress;
        const char* array;
    } rows[] = {
        {"protected, locked", true, true, false, TEXT("B3"),
         "VexExcelCellFormulaReadError XRange14::Get* 2698 <[Book1]Sheet1!$B$3>",
         "VexExcelWorksheetProtectedCellLocked XRange14::Put* 2639 <[Book1]Sheet1!$B$3>",
         "VexExcelWorksheetProtectedCellLocked XRange14::GetAddress 2851 <>",
         "VexExcelWorksheetProtectedCellLocked XRange14::GetCurrentArray 2851 <[Book1]Sheet1!$B$3>"},
        {"protected, hidden", true, false, true, TEXT("B3"),
         "VexExcelWorksheetProtectedCellHidden XRange14::Get* 2843 <[Book1]Sheet1!$B$3>",
         "VexExcelCellFormulaWriteError XRange14::Put* 2697 <[Book1]Sheet1!$B$3> <=1+>", "",
         "VexExcelWorksheetProtected XRange14::GetCurrentArray 2851 <[Book1]Sheet1!$B$3>"},
        {"protected, some cells hidden", true, false, true, TEXT("B2:B3"),
         "VexExcelWorksheetProtectedCellHidden XRange14::Get* 2843 <[Book1]Sheet1!$B$2:$B$3>", nullptr,
         nullptr, nullptr},
        {"protected otherwise", true, false, false, TEXT("B3"),
         "VexExcelCellFormulaReadError XRange14::Get* 2698 <[Book1]Sheet1!$B$3>",
         "VexExcelCellFormulaWriteError XRange14::Put* 2697 <[Book1]Sheet1!$B$3> <=1+>", "",
         "VexExcelWorksheetProtected XRange14::GetCurrentArray 2851 <[Book1]Sheet1!$B$3>"},
        {"part of an array", false, true, false, TEXT("D1"),
         "VexExcelCellFormulaReadError XRange14::Get* 2698 <[Book1]Sheet1!$D$1>",
         "VexCellPartOfArrayFormula XRange14::Put* 2714 <[Book1]Sheet1!$D$1>", "", "Range $D$1:$D$2"},
        {"part of an array, protected", true, true, false, TEXT("D1"),
         "VexExcelCellFormulaReadError XRange14::Get* 2698 <[Book1]Sheet1!$D$1>",
         "VexCellPartOfArrayFormula XRange14::Put* 2714 <[Book1]Sheet1!$D$1>",
         "VexExcelWorksheetProtectedCellLocked XRange14::GetAddress 2851 <>", "Range $D$1:$D$2"},
        {"open sheet", false, true, true, TEXT("B3"),
         "VexExcelCellFormulaReadError XRange14::Get* 2698 <[Book1]Sheet1!$B$3>",
         "VexExcelCellFormulaWriteError XRange14::Put* 2697 <[Book1]Sheet1!$B$3> <=1+>", "", "empty"},
    };
    // What serves the read and the write, on a new and on an old host.
    const struct {
        const char* property;
        DISPID dispid;
        bool newHost;
        VARIANT (MsExcel::Range::*read)() const;
        void (MsExcel::Range::*write)(VARIANT);
    } properties[] = {
        {"Formula2", 1580, true, &MsExcel::Range::GetFormula2, &MsExcel::Range::PutFormula2},
        {"Formula2Local", 3300, true, &MsExcel::Range::GetFormula2Local, &MsExcel::Range::PutFormula2Local},
        {"Formula", 261, false, &MsExcel::Range::GetFormula2, &MsExcel::Range::PutFormula2},
        {"FormulaLocal", 263, false, &MsExcel::Range::GetFormula2Local, &MsExcel::Range::PutFormula2Local},
    };
    for (const auto& row : rows) {
        for (const auto& property : properties) {
            SCOPED_TRACE(std::string(row.situation) + ", " + property.property);
            World world;
            Arrange(world, row.isProtected, row.locked, row.hidden);
            world.server.hasFormula2 = property.newHost;
            Formula2Available = property.newHost ? 1 : 0;
            const auto range = world.Range(row.address);
            const auto named = [&](std::string expected) {
                return expected.replace(expected.find('*'), 1, property.property);
            };
            if (row.write != nullptr) {
                EXPECT_EQ(Outcome([&] {
                              (*range.*property.write)(Variant(TEXT("=1+")).Detach());
                              return "";
                          }),
                          named(row.write));
            }
            const Shown shown(world, world.Live());
            if (row.getAddress != nullptr) {
                EXPECT_EQ(Outcome([&] { return shown(range->GetAddress(true, true, true)); }),
                          row.getAddress);
                EXPECT_EQ(Outcome([&] { return shown(range->GetCurrentArray()); }), row.array);
            }
            if (!row.hidden || !row.isProtected) {
                world.server.Refuse("Range", property.dispid, Refusal::Result(E_FAIL));
            }
            EXPECT_EQ(Outcome([&] { return shown((*range.*property.read)()); }), named(row.read));
        }
    }
}

TEST(Refusals, OutOfMemoryIsToldApartButNotForArrays) {
    World world;
    const auto cell = world.Range(TEXT("B3"));
    const auto write = [&](auto method) {
        return Outcome([&] {
            (*cell.*method)(Number(2.5));
            return "";
        });
    };
    for (const DISPID dispid : {1580, 586})
        world.server.Refuse("Range", dispid, Refusal::Result(E_OUTOFMEMORY));
    EXPECT_EQ(write(&MsExcel::Range::PutFormula2),
              "VexExcelCellFormulaWriteError XRange14::PutFormula2 2696 <[Book1]Sheet1!$B$3> <2.5>");
    EXPECT_EQ(write(&MsExcel::Range::PutFormulaArray),
              "VexExcelCellFormulaWriteError XRange14::PutFormulaArray 2697 <[Book1]Sheet1!$B$3> <2.5>");
}

// Once a process: the first formula asks one cell of the range, all later ones know.
TEST(HostProbes, OfFormula2) {
    const struct {
        const char* host;
        bool newHost;
        bool busyOnce;
        const char* first;
        const char* second;
        LONG latch;
    } rows[] = {
        {"new", true, false, "Range 256 get (INT 1, INT 1); Range 1580 get; Range 1580 get",
         "Range 1580 put = R8 1", 1},
        {"old", false, false, "Range 256 get (INT 1, INT 1); Range 1580 get; Range 261 get",
         "Range 261 put = R8 1", 0},
        {"new, busy once", true, true, "Range 256 get (INT 1, INT 1); Range 261 get", "Range 261 put = R8 1",
         0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.host);
        World world;
        world.server.hasFormula2 = row.newHost;
        Formula2Available = -1;
        if (row.busyOnce) world.server.Refuse("Range", 256, Refusal::Result(RPC_E_CALL_REJECTED), 1);
        const auto range = world.Range(TEXT("A1:A2"));
        const OwnedVariant formulas = range->GetFormula2();
        EXPECT_EQ(formulas->vt, VT_ARRAY | VT_VARIANT);
        EXPECT_EQ(world.Calls(), row.first);
        world.server.ClearRecord();
        range->PutFormula2(Number(1));
        EXPECT_EQ(world.Calls(), row.second);
        EXPECT_EQ(Formula2Available, row.latch);
    }
}

TEST(HostProbes, OfHasSpillOnARangeAndOnTheApplication) {
    const struct {
        const char* host;
        bool newHost;
        const char* first;
        const char* second;
        const char* given;
    } rows[] = {
        {"new", true, "Range 3295 get; Range 3295 get", "Range 3295 get", "BOOL true"},
        {"old", false, "Range 3295 get", "", "BOOL false"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.host);
        World world;
        world.server.hasSpill = row.newHost;
        HasSpillAvailable = -1;
        const Shown shown(world, "");
        const auto cell = world.Range(TEXT("F1"));
        EXPECT_EQ(shown(cell->GetHasSpill()), row.given);
        EXPECT_EQ(world.Calls(), row.first);
        world.server.ClearRecord();
        EXPECT_EQ(shown(cell->GetHasSpill()), row.given);
        EXPECT_EQ(world.Calls(), row.second);

        HasSpillAvailable = -1;
        world.server.ClearRecord();
        EXPECT_EQ(world.application->IsHasSpillAvailable(), row.newHost);
        EXPECT_THAT(world.Calls(),
                    testing::EndsWith(std::string("Range 170 get (I4 1, I4 1); ") + row.first));
        EXPECT_EQ(HasSpillAvailable, row.newHost ? 1 : 0);
    }
}

TEST(HostProbes, OfHasSpillWaitsForACell) {
    World world;
    HasSpillAvailable = -1;
    world.application->Quit();
    EXPECT_FALSE(world.application->IsHasSpillAvailable());
    EXPECT_EQ(HasSpillAvailable, -1);
    static_cast<void>(world.application->GetWorkbooks()->Add());
    EXPECT_TRUE(world.application->IsHasSpillAvailable());
}

}  // namespace
}  // namespace world
