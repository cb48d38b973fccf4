// Operations that walk through several objects or decide something on the way, and what belongs to whom in
// the end.
#include "operations.h"

#include "objectmodel/detail/externalreference.h"
#include "objectmodel/detail/wrap.h"
#include "objectmodel/dispatch.h"

#include <random>

namespace world {
namespace {

// What the object model gives for a body, with the world for the objects in it.
template <class Body>
std::string Given(World& world, const Body& body) {
    return Outcome([&]() -> std::string {
        const Shown shown(world, world.Live());
        if constexpr (std::is_void_v<decltype(body())>) {
            body();
            return "";
        } else {
            return shown(body());
        }
    });
}

TEST(ExternalReference, Parts) {
    const struct {
        const WCHAR* text;
        const char* expected;  // workbook, sheet and cell, parted by bars; bars alone for no reference
    } cases[] = {
        {TEXT("'[My Book.xlsx]My Sheet'!A1"), "My Book.xlsx|My Sheet|A1"},
        {TEXT("'[It''s.xlsx]It''s'!A1:B2"), "It''s.xlsx|It''s|A1:B2"},
        {TEXT("[a!b.xlsx]S!A1"), "a!b.xlsx|S|A1"},
        {TEXT("[a]b]S!A1"), "a|b]S|A1"},
        {TEXT("[]!A1"), "||A1"},
        {TEXT("[a]S'!A1"), "a|S'|A1"},
        // The bracket is skipped by its place, not looked for.
        {TEXT("'C:\\dir\\[Book.xlsx]S'!A1"), ":\\dir\\[Book.xlsx|S|A1"},
        {TEXT("']S'!A1"), "|S|A1"},
        {TEXT("]S!A1"), "|S|A1"},
        {TEXT("'[a]S!A1"), "a|S|A1"},  // not closed
        {TEXT("''!"), "||"},
        {TEXT("[a]S"), "||"},
        {TEXT("S!A1]"), "||"},
    };
    for (const auto& [text, expected] : cases) {
        const kestrolumen::detail::ParsedExternalReference reference{CStringW(text)};
        const CStringW parts = reference.workbook + TEXT("|") + reference.sheet + TEXT("|") + reference.cell;
        EXPECT_EQ(excelhost::Utf8(parts.GetString()), expected);
        EXPECT_EQ(reference.valid, std::string(expected) != "||");
    }
}

TEST(Walks, RangeOfAnAddressInAnotherWorkbook) {
    const std::string walk = "; Application 572 get; Workbooks 170 get (BSTR ";
    const std::string sheet = "); Workbook 494 get; Sheets 170 get (BSTR ";
    const struct {
        const WCHAR* address;
        std::string furtherCalls;
        const char* given;
    } rows[] = {
        {TEXT("Data!A1"), "", "Range $A$1"},
        {TEXT("[Other.xlsx]Sheet2!$B$4"),
         walk + "Other.xlsx" + sheet + "Sheet2); Worksheet 197 get (BSTR $B$4)", "Range $B$4"},
        {TEXT("[Gone.xlsx]Sheet2!A1"), walk + "Gone.xlsx)", "com 8002000B"},
        {TEXT("[Other.xlsx]Gone!A1"), walk + "Other.xlsx" + sheet + "Gone)", "com 8002000B"},
        {TEXT("[Book1]Sheet1!A0"), walk + "Book1" + sheet + "Sheet1); Worksheet 197 get (BSTR A0)",
         "com 800A03EC"},
        {TEXT("Nowhere!A1"), "", "com 800A03EC"},
    };
    for (const auto& row : rows) {
        World world;
        EXPECT_EQ(Given(world, [&] { return world.application->GetRange(row.address); }), row.given);
        EXPECT_EQ(world.Calls(),
                  "Application 197 get (BSTR " + excelhost::Utf8(row.address) + ")" + row.furtherCalls);
        EXPECT_EQ(world.Live(), "Application  1; ");
    }
    World world;
    world.server.Refuse("Application", 197, Refusal::Result(RPC_E_CALL_REJECTED));
    EXPECT_EQ(Given(world, [&] { return world.application->GetRange(TEXT("[Book1]Sheet1!A1")); }),
              "Range $A$1")
        << "it tries again whatever the failure";
    EXPECT_EQ(Given(world, [&] { return world.application->GetRange(TEXT("A1")); }), "com 80010001");
    constexpr IID worksheet{0x000208D8, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    world.server.RefuseInterface(worksheet, RPC_E_SERVERCALL_RETRYLATER);
    EXPECT_EQ(Given(world, [&] { return world.application->GetRange(TEXT("[Book1]Sheet1!A1")); }),
              "com 8001010A");
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
    EXPECT_EQ(workbook->ToString().GetString(), "Workbook14: this=" + address(workbook.get()) +
                                                    ", wb=" + address(workbook->GetDispatch()) + "\n");
}

TEST(Walks, WindowHandleNeedsVersion15) {
    for (const WCHAR* const version : {TEXT("9"), TEXT("14.0"), TEXT("no number"), TEXT("15.0")}) {
        World world;
        world.server.Model().version = version;
        const auto window = world.application->GetActiveWindow();
        world.server.ClearRecord();
        const bool old = version[0] != TEXT('1') || version[1] < TEXT('5');
        EXPECT_EQ(
            Given(world, [&] { return window->GetHwnd(); }),
            old ? "VexExcelUnsupportedMethodCall XWindow14::GetHwnd 2845 <This version of Excel does not "
                  "support Window.Hwnd.>"
                : "65538");
        EXPECT_EQ(world.Calls(),
                  std::string("Window 148 get; Application 392 get") + (old ? "" : "; Window 1950 get"));
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
    // A factory gives an object that holds null for another kind of object.
    EXPECT_EQ(MakeApplication(cell->GetDispatch())->GetDispatch(), nullptr);
    EXPECT_EQ(MakeWorkbook(cell->GetDispatch())->GetDispatch(), nullptr);
    EXPECT_EQ(MakeWorksheet(cell->GetDispatch())->GetDispatch(), nullptr);
    EXPECT_TRUE(MakeWindow(cell->GetDispatch())->IsNull());
    EXPECT_TRUE(MakeRange(sheet->GetDispatch())->IsNull());

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

IErrorInfo* NewErrorInfo() {
    kestrolumen::ComPtr<ICreateErrorInfo> writer;
    CreateErrorInfo(writer.receive());
    void* reader = nullptr;
    writer->QueryInterface(IID_IErrorInfo, &reader);
    return static_cast<IErrorInfo*>(reader);
}

TEST(Walks, DocumentPropertiesBringTheirErrorObject) {
    World world;
    const auto properties = world.Workbook()->GetBuiltinDocumentProperties();
    const auto title = properties->GetItem(TEXT("Title"));
    world.server.Refuse("DocumentProperty", 0, Refusal::Exception(TEXT("No value.")));
    for (const bool offers : {true, false}) {
        world.server.offersErrorInfo = offers;
        try {
            static_cast<void>(title->GetValue());
            ADD_FAILURE() << "nothing was raised";
        } catch (const _com_error& error) {
            EXPECT_EQ(error.Error(), Refusal::usualNumber);
            const auto info = kestrolumen::ComPtr<IErrorInfo>::Adopt(error.ErrorInfo());
            BSTR text = nullptr;
            if (info) info->GetDescription(&text);
            EXPECT_EQ(excelhost::Utf8(CStringW(OwnedBstr(text).get()).GetString()),
                      offers ? "No value." : "");
            // Taken away from the thread, or left to it.
            IErrorInfo* left = nullptr;
            EXPECT_EQ(GetErrorInfo(0, &left), offers ? S_FALSE : S_OK);
            if (left != nullptr) left->Release();
        }
    }
    EXPECT_EQ(Given(world, [&] { return properties->GetItem(TEXT("Author")); }), "com 8002000B");
    EXPECT_TRUE(world.server.Record().back().direct);
    // An object that answers S_FALSE has no error object for that interface, and what lies there is another's.
    world.server.offersErrorInfo = true;
    static_cast<void>(Given(world, [&] { return title->GetValue(); }));
    SetErrorInfo(0, kestrolumen::ComPtr<IErrorInfo>::Adopt(NewErrorInfo()).get());
    try {
        IssueErrorEx(E_FAIL, world.application->GetDispatch(), IID_IErrorInfo);
    } catch (const _com_error& error) {
        EXPECT_EQ(error.ErrorInfo(), nullptr);
    }
    SetErrorInfo(0, nullptr);

    Variant kept = Variant::Adopt(world.server.NewRange(world.Sheet(), TEXT("A1")));
    const std::string before = world.Live();
    world.server.busy = true;
    EXPECT_EQ(Given(world, [&] { title->PutValue(Variant(kept).Detach()); }), "com 80010001");
    const auto none =
        kestrolumen::detail::WrapDocumentProperty([] { return kestrolumen::ComPtr<IDocumentProperty>(); });
    EXPECT_EQ(Given(world, [&] { none->PutValue(Variant(kept).Detach()); }), "com 80004003");
    EXPECT_EQ(world.Live(), before) << "what was to be put is cleared";
}

TEST(Walks, ObjectsThatAreGoneOrNullFailWhenTheyAreUsed) {
    World world;
    const auto workbook = world.Workbook();
    const auto cell = world.Range(TEXT("B3"));
    workbook->Close(MissingArgument, MissingArgument);
    EXPECT_EQ(Given(world, [&] { return workbook->GetName(); }), "com 80010108");
    EXPECT_EQ(Given(world, [&] { return cell->GetValue(); }), "com 80010108");
    EXPECT_EQ(Given(world, [&] { return cell->GetFormula2(); }), "com 80010108")
        << "nor can its address be had";

    world.server.Answer("", 258, Variant::Adopt(nullptr));
    for (const auto& none : {cell->GetRows(), MakeRange(nullptr)}) {
        EXPECT_TRUE(none->IsNull());
        EXPECT_EQ(none->GetDispatch(), nullptr);
        EXPECT_EQ(Given(world, [&] { return none->GetCount(); }), "com 80004003");
        EXPECT_EQ(Given(world, [&] { none->PutID(TEXT("x")); }), "com 80004003");
        EXPECT_EQ(Given(world, [&] { return none->GetWorkbookName(); }), "com 80004003");
        EXPECT_EQ(Given(world, [&] { return none->GetAddress(true, true, true); }), "com 80004003");
    }
}

TEST(Values, ReadOutOfAVariant) {
    World world;
    const auto range = world.Range(TEXT("A1"));
    const auto locked = [&] { return range->GetLocked(); };
    const auto text = [&] { return range->GetText(); };
    const auto deleted = [&] { return range->Delete(); };
    const auto caller = [&] { return world.application->GetCaller(); };
    const struct {
        std::function<std::string()> read;
        DISPID dispid;
        Variant answer;
        const char* expected;
    } cases[] = {
        {[&] { return Given(world, locked); }, 269, 3, "true"},
        {[&] { return Given(world, locked); }, 269, TEXT("True"), "true"},
        {[&] { return Given(world, locked); }, 269, Variant::Null(), "com 80020005"},
        {[&] { return Given(world, text); }, 138, 12, "12"},
        {[&] { return Given(world, deleted); }, 117, 2.5, "2"},
        // Who called: no object, or not a cell, is an object that holds null.
        {[&] { return Given(world, caller); }, 317, TEXT("Button 1"), "null"},
        {[&] { return Given(world, caller); }, 317, Variant::Error(DISP_E_PARAMNOTFOUND), "null"},
        {[&] { return Given(world, caller); }, 317, Variant::Adopt(world.server.NewApplication()), "null"},
    };
    for (const auto& each : cases) {
        world.server.ClearScripts();
        world.server.Answer("", each.dispid, each.answer);
        EXPECT_EQ(each.read(), each.expected) << &each - cases;
    }
    world.server.ClearScripts();
    world.server.Model().caller = excelhost::automation::MakeRangeNode(world.Sheet(), {{2, 2, 2, 2}});
    EXPECT_EQ(Given(world, caller), "Range $B$2");
    world.server.Answer("Range", 1813, excelhost::Text(TEXT("a\0b"), 3));
    EXPECT_EQ(range->GetID(), CStringW(TEXT("a\0b"), 3));
}

// A VARIANT by value is taken, whatever happens; one by reference, and a range, are lent.
TEST(Values, AreTakenOrLent) {
    for (const int failing : {0, 1, 2}) {
        World world;
        world.server.busy = failing == 1;
        // Excel keeps nothing of what is put.
        for (const DISPID put : {1580, 3300, 261, 263, 586, 386, 6, 1388}) world.server.Answer("", put, {});
        const auto range = failing == 2 ? MakeRange(nullptr) : world.Range(TEXT("B3"));
        const auto application = failing == 2 ? MakeApplication(nullptr) : world.application;
        Variant kept = Variant::Adopt(world.server.NewRange(world.Sheet(), TEXT("A1")));
        const std::string before = world.Live();
        const auto taken = [&] { return Variant(kept).Detach(); };
        for (const LONG latch : {1, 0}) {
            Formula2Available = latch;
            static_cast<void>(Given(world, [&] { range->PutFormula2(taken()); }));
            static_cast<void>(Given(world, [&] { range->PutFormula2Local(taken()); }));
        }
        static_cast<void>(Given(world, [&] { range->PutFormulaArray(taken()); }));
        static_cast<void>(Given(world, [&] { application->PutStatusBar(taken()); }));
        static_cast<void>(
            Given(world, [&] { return application->ConvertFormula(taken(), 1, taken(), taken(), taken()); }));
        static_cast<void>(Given(world, [&] { range->PutValue(kept.Get()); }));
        static_cast<void>(Given(world, [&] { return range->FindNext(kept.Get()); }));
        // Temporaries where a VARIANT is lent, and an owner in both places.
        const VARIANT& any = MissingArgument;
        static_cast<void>(Given(world, [&] { range->PutValue(taken()); }));
        static_cast<void>(Given(world, [&] { range->PutValue2(OwnedVariant(taken())); }));
        static_cast<void>(Given(world, [&] { range->PutValue2(taken()); }));
        static_cast<void>(Given(world, [&] { return range->FindNext(taken()); }));
        static_cast<void>(
            Given(world, [&] { return range->Find(taken(), any, any, any, any, 1, taken(), any); }));
        static_cast<void>(Given(
            world, [&] { OwnedVariant(application->Run(taken(), any, OwnedVariant(taken()), taken())); }));
        OwnedVariant owned = taken();
        static_cast<void>(Given(world, [&] { range->PutFormula2(OwnedVariant::CopyOf(owned).release()); }));
        static_cast<void>(Given(world, [&] { range->PutFormula2(owned.release()); }));
        static_cast<void>(Given(world, [&] { return application->Union(range, nullptr); }));
        if (failing == 0) {
            EXPECT_EQ(Describe(world.server.Record().back()),
                      "Application 779 call (DISPATCH Range $B$3, DISPATCH null)");
        }
        EXPECT_EQ(world.Live(), before);
        EXPECT_TRUE(world.server.Faults().empty());
    }
}

// Random operations on a host that fails at random: whatever happens, no reference is lost or given back
// twice.
TEST(References, SurviveTenThousandOperationsWithFailures) {
    constexpr int operationCount = 10000;
    constexpr int operationsInAWorld = 50;
    const std::vector<AnyOperation> operations = AllOperations();
    std::mt19937 random(20240611);
    const auto oneIn = [&](unsigned chances) { return random() % chances == 0; };
    const HRESULT results[] = {E_FAIL, E_OUTOFMEMORY, RPC_E_CALL_REJECTED, DISP_E_TYPEMISMATCH,
                               DISP_E_EXCEPTION};

    int failures = 0;
    for (int done = 0; done < operationCount; done += operationsInAWorld) {
        World world;
        world.server.recording = false;
        world.server.hasFormula2 = !oneIn(3);
        world.server.hasSpill = !oneIn(3);
        if (oneIn(2)) Formula2Available = HasSpillAvailable = -1;
        world.server.Interpose([&](const auto&) -> std::optional<Refusal> {
            if (!oneIn(8)) return std::nullopt;
            Refusal refusal = Refusal::Exception(TEXT("Not now."));
            refusal.result = results[random() % std::size(results)];
            refusal.deferred = oneIn(2);
            return refusal;
        });
        // Answers of another kind than expected, now and then.
        const DISPID asked[] = {118, 150, 170, 348, 238, 1582, 110};
        world.server.Answer("", asked[random() % std::size(asked)],
                            oneIn(2) ? Variant(TEXT("x")) : Variant::Adopt(nullptr), 3);
        for (int i = 0; i < operationsInAWorld; ++i) {
            const auto& operation = operations[random() % operations.size()];
            const std::string outcome = Given(world, [&] { operation(world); });
            if (!outcome.empty()) ++failures;
            ASSERT_EQ(world.Live(), "Application  1; ") << "after operation " << done + i << ": " << outcome;
        }
        ASSERT_TRUE(world.server.Faults().empty()) << world.server.Faults().front();
        world.application.reset();
        ASSERT_EQ(world.Live(), "");
    }
    EXPECT_GT(failures, operationCount / 20);
    EXPECT_LT(failures, operationCount / 2);
    SetErrorInfo(0, nullptr);
}

// The tests above rest on this: a release too many is seen.
TEST(References, GivenBackTwiceAreSeen) {
    AutomationServer server;
    IDispatch* const application = server.NewApplication();
    EXPECT_EQ(application->Release(), 0U);
    EXPECT_TRUE(server.Live().empty());
    application->Release();
    ASSERT_EQ(server.Faults().size(), 1U);
    EXPECT_EQ(server.Faults()[0], "Release of Application after its last Release");
}

}  // namespace
}  // namespace world
