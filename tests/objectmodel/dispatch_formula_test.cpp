// Refused formulas: which exception each cell and sheet makes of a refusal, and what is asked on the way.
#include "objectmodel/msexcel.h"

#include <optional>
#include <string>
#include <vector>

#include <comdef.h>
#include <gmock/gmock.h>

#include "errors/vex.h"
#include "objectmodel/detail/latches.h"
#include "objectmodel/interfaces.h"
#include "scripted_object.h"

namespace {

using scripted::Bool;
using scripted::Empty;
using scripted::Fails;
using scripted::Gives;
using scripted::GivesObject;
using scripted::GivesText;
using scripted::I4;
using scripted::NewText;
using scripted::R8;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr DISPID address = 236, addressLocal = 437, currentArray = 501, formula = 261, formulaHidden = 262,
                 formulaLocal = 263, formulaArray = 586, formula2 = 1580, formula2Local = 3300,
                 hasArray = 266, locked = 269, protectContents = 292, worksheet = 348;

constexpr VARIANT_BOOL yes = VARIANT_TRUE, no = VARIANT_FALSE;

// A cell that refuses all formulas, on a sheet.
struct Cell {
    Cell() {
        object.interfaces = {IidRange};
        object.answers[addressLocal] = GivesText(TEXT("[B.xlsx]S!$A$1"));
        object.answers[worksheet] = GivesObject(sheet);
        sheet.answers[protectContents] = Gives(Bool(no));
        object.otherwise = Fails(E_FAIL);
    }
    void Protect() { sheet.answers[protectContents] = Gives(Bool(yes)); }

    // All that was asked of the cell and of the sheet.
    std::vector<DISPID> Asked() {
        std::vector<DISPID> dispids;
        for (const auto& call : object.calls) dispids.push_back(call.dispid);
        object.calls.clear();
        return dispids;
    }

    scripted::Object object;
    scripted::Object sheet;
};

struct Latch {
    explicit Latch(LONG known) { Formula2Available = known; }
    ~Latch() { Formula2Available = -1; }
};

std::string Narrow(const CStringW& text) {
    return std::string(text.GetString(), text.GetString() + text.GetLength());
}

// The exception that the body raises, as "key function code argument, argument"; "com" and a number for a
// _com_error.
template <class Body>
std::string Raised(Body body) {
    try {
        body();
    } catch (const VexException& raised) {
        std::string text =
            Narrow(raised.key) + " " + Narrow(raised.function) + " " + std::to_string(raised.code);
        const char* separator = " ";
        for (const CStringW& argument : raised.args) {
            text += separator + Narrow(argument);
            separator = ", ";
        }
        return text;
    } catch (const _com_error& error) {
        char text[20];
        std::snprintf(text, sizeof text, "com %08X", static_cast<unsigned>(error.Error()));
        return text;
    }
    return "";
}

using Reader = VARIANT (MsExcel::Range::*)() const;
using Writer = void (MsExcel::Range::*)(VARIANT);

struct Property {
    DISPID dispid;
    LONG latch;
    const char* name;
    Reader read;
    Writer write;
};

// The first four once with the new properties, once with what stands in for them.
const Property properties[] = {
    {formula2, 1, "Formula2", &MsExcel::Range::GetFormula2, &MsExcel::Range::PutFormula2},
    {formula2Local, 1, "Formula2Local", &MsExcel::Range::GetFormula2Local, &MsExcel::Range::PutFormula2Local},
    {formula, 0, "Formula", &MsExcel::Range::GetFormula2, &MsExcel::Range::PutFormula2},
    {formulaLocal, 0, "FormulaLocal", &MsExcel::Range::GetFormula2Local, &MsExcel::Range::PutFormula2Local},
    {formulaArray, 0, "FormulaArray", &MsExcel::Range::GetFormulaArray, &MsExcel::Range::PutFormulaArray},
};

std::string ReadFailure(Cell& cell, const Property& property) {
    const Latch latch(property.latch);
    const auto range = MakeRange(&cell.object);
    return Raised([&] { static_cast<void>((*range.*property.read)()); });
}

std::string WriteFailure(Cell& cell, const Property& property, const VARIANT& value) {
    const Latch latch(property.latch);
    const auto range = MakeRange(&cell.object);
    return Raised([&] { (*range.*property.write)(value); });
}

TEST(RefusedFormula, Read) {
    const struct {
        const char* what;
        bool isProtected;
        scripted::Answer hidden;
        const char* expected;
    } cases[] = {
        {"open sheet", false, nullptr, "VexExcelCellFormulaReadError * 2698 [B.xlsx]S!$A$1"},
        {"protected, shown", true, Gives(Bool(no)), "VexExcelCellFormulaReadError * 2698 [B.xlsx]S!$A$1"},
        {"protected, hidden", true, Gives(Bool(yes)),
         "VexExcelWorksheetProtectedCellHidden * 2843 [B.xlsx]S!$A$1"},
        {"protected, mixed", true, Gives(Empty(VT_NULL)),
         "VexExcelWorksheetProtectedCellHidden * 2843 [B.xlsx]S!$A$1"},
        {"protected, no answer to speak of", true, Gives(I4(0)),
         "VexExcelWorksheetProtectedCellHidden * 2843 [B.xlsx]S!$A$1"},
        {"protected, refused again", true, Fails(RPC_E_CALL_REJECTED), "com 80010001"},
    };
    for (const Property& property : properties) {
        for (const auto& each : cases) {
            SCOPED_TRACE(std::string(property.name) + ": " + each.what);
            Cell cell;
            if (each.isProtected) cell.Protect();
            if (each.hidden) cell.object.answers[formulaHidden] = each.hidden;
            std::string expected = each.expected;
            if (const auto star = expected.find('*'); star != std::string::npos) {
                expected.replace(star, 1, std::string("XRange14::Get") + property.name);
            }
            EXPECT_EQ(ReadFailure(cell, property), expected);
            EXPECT_EQ(cell.object.calls[0].flags, DISPATCH_PROPERTYGET);
            if (each.isProtected) {
                EXPECT_THAT(cell.Asked(),
                            ElementsAre(property.dispid, addressLocal, worksheet, formulaHidden));
            } else {
                EXPECT_THAT(cell.Asked(), ElementsAre(property.dispid, addressLocal, worksheet));
            }
        }
    }
}

TEST(RefusedFormula, Write) {
    const char* const array = "VexCellPartOfArrayFormula * 2714 [B.xlsx]S!$A$1";
    const char* const lockedCell = "VexExcelWorksheetProtectedCellLocked * 2639 [B.xlsx]S!$A$1";
    const char* const memory = "VexExcelCellFormulaWriteError * 2696 [B.xlsx]S!$A$1, =1+";
    const char* const other = "VexExcelCellFormulaWriteError * 2697 [B.xlsx]S!$A$1, =1+";
    const struct {
        const char* what;
        HRESULT refusal;
        VARIANT_BOOL inArray;
        bool isProtected;
        VARIANT_BOOL isLocked;
        const char* expected;
        const char* ofArray;  // of FormulaArray
    } cases[] = {
        {"wrong formula", E_FAIL, no, false, no, other, other},
        {"out of memory", E_OUTOFMEMORY, no, false, no, memory, other},
        {"in an array", E_FAIL, yes, false, no, array, other},
        {"in an array, locked", E_FAIL, yes, true, yes, array, lockedCell},
        {"locked", E_FAIL, no, true, yes, lockedCell, lockedCell},
        {"locked, out of memory", E_OUTOFMEMORY, no, true, yes, lockedCell, lockedCell},
        {"locked on an open sheet", E_FAIL, no, false, yes, other, other},
        {"protected, not locked", E_FAIL, no, true, no, other, other},
        {"protected, not locked, out of memory", E_OUTOFMEMORY, no, true, no, memory, other},
        {"busy", RPC_E_CALL_REJECTED, no, false, no, other, other},
    };
    for (const Property& property : properties) {
        for (const auto& each : cases) {
            SCOPED_TRACE(std::string(property.name) + ": " + each.what);
            Cell cell;
            cell.object.answers[property.dispid] = Fails(each.refusal);
            cell.object.answers[hasArray] = Gives(Bool(each.inArray));
            cell.object.answers[locked] = Gives(Bool(each.isLocked));
            if (each.isProtected) cell.Protect();
            const bool isArray = property.dispid == formulaArray;
            std::string expected = isArray ? each.ofArray : each.expected;
            expected.replace(expected.find('*'), 1, std::string("XRange14::Put") + property.name);

            EXPECT_EQ(WriteFailure(cell, property, NewText(TEXT("=1+"))), expected);
            EXPECT_EQ(cell.object.calls[0].flags, DISPATCH_PROPERTYPUT);
            EXPECT_THAT(cell.object.calls[0].arguments, ElementsAre("BSTR =1+"));
            EXPECT_THAT(cell.object.calls[0].named, ElementsAre(DISPID_PROPERTYPUT));

            std::vector<DISPID> asked = {property.dispid};
            if (!isArray) asked.insert(asked.end(), {addressLocal, hasArray});
            if (isArray || !each.inArray) {
                asked.push_back(worksheet);
                if (each.isProtected) asked.push_back(locked);
            }
            if (isArray) asked.push_back(addressLocal);
            EXPECT_EQ(cell.Asked(), asked);
        }
    }
}

TEST(RefusedFormula, TheFormulasTextAndFailuresOnTheWay) {
    const Property& property = properties[0];
    Cell cell;
    cell.object.answers[hasArray] = Gives(Bool(no));
    EXPECT_EQ(WriteFailure(cell, property, R8(2.5)),
              "VexExcelCellFormulaWriteError XRange14::PutFormula2 2697 [B.xlsx]S!$A$1, 2.5");
    EXPECT_EQ(WriteFailure(cell, property, Empty()),
              "VexExcelCellFormulaWriteError XRange14::PutFormula2 2697 [B.xlsx]S!$A$1, ");
    EXPECT_EQ(WriteFailure(cell, property, Empty(VT_NULL)), "com 80020005") << "it has no text";
    cell.object.answers[hasArray] = Gives(Empty(VT_NULL));
    EXPECT_EQ(WriteFailure(cell, property, I4(1)), "com 80020005")
        << "some cells are in an array, some aren't";
    cell.object.answers[addressLocal] = Fails(RPC_E_DISCONNECTED);
    EXPECT_EQ(WriteFailure(cell, property, I4(1)), "com 80010108");
    EXPECT_EQ(ReadFailure(cell, property), "com 80010108");
}

TEST(RefusedFormula, WhatSucceedsAsksNothingMore) {
    for (const Property& property : properties) {
        const Latch latch(property.latch);
        Cell cell;
        cell.object.answers[property.dispid] = GivesText(TEXT("=A1"));
        const auto range = MakeRange(&cell.object);
        const OwnedVariant read = (*range.*property.read)();
        EXPECT_EQ(scripted::Shown(read.get()), "BSTR =A1");
        (*range.*property.write)(NewText(TEXT("=A2")));
        EXPECT_THAT(cell.Asked(), ElementsAre(property.dispid, property.dispid));
    }
}

TEST(RefusedAddress, OfALockedCellOrNoText) {
    const struct {
        bool isProtected;
        VARIANT_BOOL isLocked;
        const char* expected;
        std::vector<DISPID> asked;
    } cases[] = {
        {false, yes, "", {address, worksheet}},
        {true, no, "", {address, worksheet, locked}},
        {true,
         yes,
         "VexExcelWorksheetProtectedCellLocked XRange14::GetAddress 2851 ",
         {address, worksheet, locked}},
    };
    for (const auto& each : cases) {
        Cell cell;
        cell.object.answers[locked] = Gives(Bool(each.isLocked));
        if (each.isProtected) cell.Protect();
        const auto range = MakeRange(&cell.object);
        CStringW text(TEXT("untouched"));
        const std::string raised = Raised([&] { text = range->GetAddress(true, false, true); });
        EXPECT_EQ(raised, each.expected);
        EXPECT_EQ(text.IsEmpty(), raised.empty());
        EXPECT_THAT(cell.object.calls[0].arguments, ElementsAre("BOOL -1", "BOOL 0", "I4 1", "BOOL -1"));
        EXPECT_EQ(cell.Asked(), each.asked);
    }
    Cell cell;
    cell.object.answers[addressLocal] = Fails(E_FAIL);
    EXPECT_EQ(Raised([&] { MakeRange(&cell.object)->GetAddressLocal(true, true, true); }), "com 80004005");
}

TEST(RefusedArray, OfALockedCellAProtectedSheetOrNone) {
    const struct {
        bool isProtected;
        VARIANT_BOOL isLocked;
        const char* expected;
        std::vector<DISPID> asked;
    } cases[] = {
        {false, yes, "", {currentArray, worksheet, worksheet}},
        {true,
         no,
         "VexExcelWorksheetProtected XRange14::GetCurrentArray 2851 [B.xlsx]S!$A$1",
         {currentArray, worksheet, locked, worksheet, addressLocal}},
        {true,
         yes,
         "VexExcelWorksheetProtectedCellLocked XRange14::GetCurrentArray 2851 [B.xlsx]S!$A$1",
         {currentArray, worksheet, locked, addressLocal}},
    };
    for (const auto& each : cases) {
        Cell cell;
        cell.object.answers[locked] = Gives(Bool(each.isLocked));
        if (each.isProtected) cell.Protect();
        const auto range = MakeRange(&cell.object);
        std::shared_ptr<MsExcel::Range> array = range;
        const std::string raised = Raised([&] { array = range->GetCurrentArray(); });
        EXPECT_EQ(raised, each.expected);
        EXPECT_EQ(array == nullptr, raised.empty());
        EXPECT_EQ(cell.Asked(), each.asked);
    }
}

}  // namespace
