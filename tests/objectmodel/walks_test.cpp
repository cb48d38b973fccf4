// Operations that walk through several objects or decide something on the way.
#include "operations.h"

#include <gmock/gmock.h>

namespace world {
namespace {

using testing::EndsWith;

constexpr DISPID dispidRange = 197;

// What the object model gives for a body, with the world for the objects in it.
template <class Body>
std::string Given(World& world, const Body& body) {
    return Outcome([&] { return Shown(world, world.Live())(body()); });
}

TEST(Walks, RangeOfAnAddressInAnotherWorkbook) {
    const std::string walk = "; Application 572 get; Workbooks 170 get (BSTR ";
    const struct {
        const WCHAR* address;
        std::string furtherCalls;
        const char* given;
    } rows[] = {
        {TEXT("A1"), "", "Range $A$1"},
        {TEXT("Data!A1"), "", "Range $A$1"},
        {TEXT("[Other.xlsx]Sheet2!$B$4"),
         walk + "Other.xlsx); Workbook 494 get; Sheets 170 get (BSTR Sheet2); Worksheet 197 get (BSTR $B$4)",
         "Range $B$4"},
        {TEXT("'[Other.xlsx]Sheet2'!A1"),
         walk + "Other.xlsx); Workbook 494 get; Sheets 170 get (BSTR Sheet2); Worksheet 197 get (BSTR A1)",
         "Range $A$1"},
        {TEXT("[Gone.xlsx]Sheet2!A1"), walk + "Gone.xlsx)", "com 8002000B"},
        {TEXT("[Other.xlsx]Gone!A1"), walk + "Other.xlsx); Workbook 494 get; Sheets 170 get (BSTR Gone)",
         "com 8002000B"},
        {TEXT("'C:\\[Other.xlsx]Sheet2'!A1"), walk + ":\\[Other.xlsx)", "com 8002000B"},
        {TEXT("Nowhere!A1"), "", "com 800A03EC"},
        {TEXT("Nowhere"), "", "com 800A03EC"},
        {TEXT("!A1"), "", "com 800A03EC"},
        {TEXT(""), "", "com 800A03EC"},
    };
    for (const auto& row : rows) {
        World world;
        EXPECT_EQ(Given(world, [&] { return world.application->GetRange(row.address); }), row.given);
        EXPECT_EQ(world.Calls(),
                  "Application 197 get (BSTR " + excelhost::Utf8(row.address) + ")" + row.furtherCalls);
        EXPECT_EQ(world.Live(), "Application  1; ");
    }
}

TEST(Walks, RangeTriesAgainWhateverTheFailure) {
    World world;
    world.server.Refuse("Application", dispidRange, Refusal::Result(RPC_E_CALL_REJECTED));
    EXPECT_EQ(Given(world, [&] { return world.application->GetRange(TEXT("[Book1]Sheet1!A1")); }),
              "Range $A$1");
    EXPECT_EQ(Given(world, [&] { return world.application->GetRange(TEXT("A1")); }), "com 80010001");
    world.server.busy = true;
    EXPECT_EQ(Given(world, [&] { return world.application->GetRange(TEXT("[Book1]Sheet1!A1")); }),
              "com 80010001");
}

TEST(Walks, CallerIsARangeOrNull) {
    World world;
    world.server.Model().caller = excelhost::automation::MakeRangeNode(world.Sheet(), {{2, 2, 2, 2}});
    EXPECT_EQ(Given(world, [&] { return world.application->GetCaller(); }), "Range $B$2");
    world.server.Answer("Application", 317, TEXT("a button"));
    EXPECT_TRUE(world.application->GetCaller()->IsNull());
}

TEST(Walks, LimitsFollowTheCompatibilityMode) {
    World world;
    const auto workbook = world.Workbook();
    world.Book().compatible = true;
    EXPECT_TRUE(workbook->GetExcel8CompatibilityMode());
    EXPECT_EQ(workbook->GetMaxColumns(), 256);
    EXPECT_EQ(workbook->GetMaxRows(), 65536);
    EXPECT_EQ(workbook->GetMaxFormulaLength(), 1024);
    // %p of Microsoft's runtime: all digits, capital letters.
    const auto address = [](const void* pointer) {
        char text[20];
        std::snprintf(text, sizeof(text), "%0*llX", static_cast<int>(2 * sizeof(void*)),
                      static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(pointer)));
        return std::string(text);
    };
    const std::string expected =
        "Workbook14: this=" + address(workbook.get()) + ", wb=" + address(workbook->GetDispatch()) + "\n";
    EXPECT_EQ(workbook->ToString().GetString(), expected);
}

TEST(Walks, WindowHandleNeedsVersion15) {
    const struct {
        const WCHAR* version;
        const char* given;
    } rows[] = {
        {TEXT("14.0"),
         "VexExcelUnsupportedMethodCall * 2845 <This version of Excel does not support Window.Hwnd.>"},
        {TEXT("9"),
         "VexExcelUnsupportedMethodCall * 2845 <This version of Excel does not support Window.Hwnd.>"},
        {TEXT("no number"),
         "VexExcelUnsupportedMethodCall * 2845 <This version of Excel does not support Window.Hwnd.>"},
        {TEXT("15.0"), "65538"},
        {TEXT("16.0"), "65538"},
    };
    for (const auto& row : rows) {
        World world;
        world.server.Model().version = row.version;
        const auto window = world.application->GetActiveWindow();
        world.server.ClearRecord();
        std::string expected = row.given;
        if (const auto star = expected.find('*'); star != std::string::npos) {
            expected.replace(star, 1, "XWindow14::GetHwnd");
            EXPECT_EQ(Given(world, [&] { return window->GetHwnd(); }), expected);
            EXPECT_EQ(world.Calls(), "Window 148 get; Application 392 get");
        } else {
            EXPECT_EQ(Given(world, [&] { return window->GetHwnd(); }), expected);
        }
    }
}

// Objects that hold a certain interface, and what comes of an object that lacks or refuses it.
TEST(Walks, TypedObjects) {
    World world;
    const auto macroSheet = world.Workbook()->GetExcel4IntlMacroSheets()->GetItem(1);
    EXPECT_EQ(macroSheet->GetDispatch(), nullptr);
    EXPECT_EQ(Given(world, [&] { return macroSheet->GetName(); }), "com 80004003");
    const auto names = world.Workbook()->GetNames();
    const auto local = names->GetItem(TEXT("First"));
    EXPECT_EQ(Given(world, [&] { return local->GetWorksheet(); }), "Worksheet Sheet1");
    EXPECT_EQ(Given(world, [&] { return local->GetWorkbook(); }), "empty");
    const auto sheet = world.Worksheet();
    const auto cell = world.Range(TEXT("A1"));

    constexpr IID workbook{0x000208DA, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    constexpr IID range{0x00020846, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    world.server.RefuseInterface(workbook, RPC_E_SERVERCALL_RETRYLATER);
    world.server.RefuseInterface(range, E_NOINTERFACE);
    EXPECT_EQ(Given(world, [&] { return sheet->GetParent(); }), "com 8001010A");
    EXPECT_EQ(Given(world, [&] { return world.Workbook(); }), "Workbook Book1") << "wrapped as it comes";
    EXPECT_EQ(Given(world, [&] { return names->GetItem(TEXT("Total"))->GetWorkbook(); }), "empty")
        << "swallowed";
    EXPECT_EQ(Given(world, [&] { return cell->GetWorkbookName(); }), "com 8001010A");
    EXPECT_EQ(Given(world, [&] { return cell->GetItem(1, 1); }), "null");
    EXPECT_EQ(Given(world, [&] { return sheet->GetCell(1, 1); }), "null");
}

TEST(Walks, DocumentPropertiesBringTheirErrorObject) {
    World world;
    const auto properties = world.Workbook()->GetBuiltinDocumentProperties();
    const auto title = properties->GetItem(TEXT("Title"));
    Refusal refusal = Refusal::Exception(TEXT("No value."));
    refusal.source = TEXT("Office");
    const auto description = [&]() -> std::string {
        try {
            static_cast<void>(title->GetValue());
        } catch (const _com_error& error) {
            EXPECT_EQ(error.Error(), Refusal::usualNumber);
            const auto info = ComPtr<IErrorInfo>::Adopt(error.ErrorInfo());
            BSTR text = nullptr;
            if (info) info->GetDescription(&text);
            const OwnedBstr owned(text);
            return text == nullptr ? "none" : excelhost::Utf8(text);
        }
        return "no error";
    };
    world.server.Refuse("DocumentProperty", 0, refusal);
    EXPECT_EQ(description(), "No value.");
    world.server.offersErrorInfo = false;
    EXPECT_EQ(description(), "none");
    EXPECT_EQ(Given(world, [&] { return properties->GetItem(TEXT("Author")); }), "com 8002000B");
    EXPECT_TRUE(world.server.Record().back().direct);
    world.server.busy = true;
    EXPECT_EQ(Outcome([&] {
                  title->PutValue(Variant(TEXT("text")).Detach());
                  return "";
              }),
              "com 80010001");
    SetErrorInfo(0, nullptr);
}

TEST(Walks, ObjectsThatAreGone) {
    World world;
    const auto workbook = world.Workbook();
    const auto cell = world.Range(TEXT("B3"));
    const auto window = world.application->GetActiveWindow();
    workbook->Close(MissingArgument, MissingArgument);
    EXPECT_EQ(Given(world, [&] { return workbook->GetName(); }), "com 80010108");
    EXPECT_EQ(Given(world, [&] { return cell->GetValue(); }), "com 80010108");
    EXPECT_EQ(Given(world, [&] { return window->GetCaption(); }), "com 80010108");
    EXPECT_EQ(Given(world, [&] { return cell->GetFormula2(); }), "com 80010108")
        << "nor can its address be had";
}

TEST(Walks, WhatExcelTellsOfARefusal) {
    World world;
    try {
        static_cast<void>(world.application->GetWorkbooks()->GetItem(9));
        FAIL();
    } catch (const _com_error& error) {
        const auto info = ComPtr<IErrorInfo>::Adopt(error.ErrorInfo());
        ASSERT_TRUE(info);
        BSTR source = nullptr;
        BSTR description = nullptr;
        info->GetSource(&source);
        info->GetDescription(&description);
        const OwnedBstr first(source);
        const OwnedBstr second(description);
        EXPECT_EQ(excelhost::Utf8(source), "Microsoft Excel");
        EXPECT_EQ(excelhost::Utf8(description), "Invalid index.");
    }
}

}  // namespace
}  // namespace world
