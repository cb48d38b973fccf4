// Who owns what: references to Excel's objects, VARIANTs and texts, on success and on each failure.
#include "objectmodel/msexcel.h"

#include <new>
#include <string>

#include <comdef.h>
#include <gmock/gmock.h>

#include "objectmodel/detail/latches.h"
#include "objectmodel/interfaces.h"
#include "objectmodel/probes.h"
#include "scripted_object.h"
#include "support/allocations.h"

namespace {

using scripted::Bool;
using scripted::Empty;
using scripted::Fails;
using scripted::Gives;
using scripted::GivesObject;
using scripted::GivesText;
using scripted::I4;
using scripted::Make;
using scripted::NewText;
using scripted::R8;
using testing::ElementsAre;
using testing::IsEmpty;

template <class Body>
HRESULT Failure(Body body) {
    try {
        body();
        return S_OK;
    } catch (const _com_error& error) {
        return error.Error();
    }
}

// A scripted Excel: each object knows all interfaces, but for those that a test takes away.
struct Excel {
    Excel() {
        for (scripted::Object* each : {&object, &child}) {
            each->interfaces = {IidApplication, IidWorkbook, IidWorksheet, IidRange, IidWindow, IidName};
        }
    }

    scripted::Object object;
    scripted::Object child;
};

// Sets the latches for the length of a test; there is no way back in the product.
struct Latches {
    explicit Latches(LONG formula2 = -1, LONG hasSpill = -1) {
        Formula2Available = formula2;
        HasSpillAvailable = hasSpill;
    }
    ~Latches() { Formula2Available = HasSpillAvailable = -1; }
};

// A VARIANT by whose reference one sees whether it was cleared.
VARIANT Holding(scripted::Object& object) {
    object.AddRef();
    return Make(VT_UNKNOWN, [&](VARIANT& v) { v.punkVal = &object; });
}

TEST(Ownership, AnObjectHoldsOneReferenceForItsLife) {
    Excel excel;
    excel.object.otherwise = GivesObject(excel.child);
    auto range = MakeRange(&excel.object);
    EXPECT_EQ(excel.object.count, 2U);
    auto rows = range->GetRows();
    EXPECT_EQ(excel.child.count, 2U);
    EXPECT_EQ(rows.use_count(), 1);
    const auto shared = rows;
    range.reset();
    EXPECT_EQ(excel.object.count, 1U) << "an object doesn't depend on the one it came from";
    rows.reset();
    EXPECT_EQ(excel.child.count, 2U);
    EXPECT_FALSE(shared->IsNull());
}

TEST(Ownership, EachRouteToAnObjectGivesExactlyOneReference) {
    Excel excel;
    excel.object.otherwise = GivesObject(excel.child);
    const auto application = MakeApplication(&excel.object);
    const auto workbook = MakeWorkbook(&excel.object);
    const auto worksheet = MakeWorksheet(&excel.object);
    const auto range = MakeRange(&excel.object);
    const auto window = MakeWindow(&excel.object);
    const auto check = [&](const char* route, const auto& result) {
        EXPECT_EQ(excel.child.count, 2U) << route;
        EXPECT_NE(result, nullptr) << route;
    };
    check("getO", range->GetRows());
    check("getO, asked for _Worksheet", range->GetWorksheet());
    check("getO, asked for _Application", workbook->GetParent());
    check("get, asked for _Workbook", worksheet->GetParent());
    check("doO", range->SpecialCells(1));
    check("doO with names", application->GetNames());
    check("VARIANT to Range", range->GetItem(1, 1));
    check("VARIANT to Name", range->GetName());
    check("VARIANT to Range, by Cells", [&] {
        // Cells is the child too; it answers with the object of the calls above.
        excel.child.otherwise = GivesObject(excel.object);
        const ULONG before = excel.object.count;
        auto cell = worksheet->GetCell(1, 1);
        EXPECT_EQ(excel.object.count, before + 1);
        EXPECT_EQ(excel.child.count, 1U);
        return worksheet->GetCells();
    }());
    check("getI", application->GetSelection());
    check("array", range->GetCurrentArray());
    range->AddComment(TEXT("text"));
    EXPECT_EQ(excel.child.count, 1U) << "nothing keeps the comment that was added";
}

TEST(Ownership, AFailedRouteLeavesNothing) {
    Excel excel;
    const auto range = MakeRange(&excel.object);
    const auto worksheet = MakeWorksheet(&excel.object);
    excel.object.otherwise = Fails(E_FAIL);
    EXPECT_EQ(Failure([&] { range->GetRows(); }), E_FAIL);
    EXPECT_EQ(Failure([&] { range->GetItem(1); }), E_FAIL);
    EXPECT_EQ(Failure([&] { range->GetName(); }), E_FAIL);

    // The object comes, but refuses its interface.
    excel.object.otherwise = GivesObject(excel.child);
    excel.child.queryFailure = E_ACCESSDENIED;
    EXPECT_EQ(Failure([&] { range->GetWorksheet(); }), E_ACCESSDENIED);
    EXPECT_EQ(Failure([&] { range->GetItem(1, 1); }), E_ACCESSDENIED);
    EXPECT_EQ(Failure([&] { worksheet->GetWorkbook(); }), E_ACCESSDENIED);
    EXPECT_EQ(excel.child.count, 1U);

    // What isn't an object.
    excel.object.otherwise = GivesText(TEXT("text"));
    EXPECT_EQ(Failure([&] { range->GetRows(); }), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(excel.object.count, 3U);
}

TEST(Ownership, ANullObjectIsNoErrorUntilItIsUsed) {
    Excel excel;
    excel.object.otherwise = Gives(Empty(VT_DISPATCH));
    const auto range = MakeRange(&excel.object);
    const auto worksheet = MakeWorksheet(&excel.object);
    for (const auto& none :
         {range->GetRows(), range->GetItem(1),
          range->Find(I4(1), I4(1), I4(1), I4(1), I4(1), 1, I4(1), I4(1)), MakeRange(nullptr)}) {
        ASSERT_NE(none, nullptr);
        EXPECT_TRUE(none->IsNull());
        EXPECT_EQ(none->GetDispatch(), nullptr);
        EXPECT_EQ(Failure([&] { none->GetCount(); }), E_POINTER);
        EXPECT_EQ(Failure([&] { none->GetRows(); }), E_POINTER);
        EXPECT_EQ(Failure([&] { none->PutID(TEXT("x")); }), E_POINTER);
        EXPECT_EQ(Failure([&] { none->Clear(); }), E_POINTER);
        EXPECT_EQ(Failure([&] { none->GetWorkbookName(); }), E_POINTER);
        EXPECT_EQ(Failure([&] { none->GetCurrentArray(); }), E_POINTER);
        EXPECT_EQ(Failure([&] { none->GetAddress(true, true, true); }), E_POINTER);
    }
    EXPECT_EQ(Failure([&] { worksheet->GetParent()->GetName(); }), E_POINTER);
    EXPECT_EQ(Failure([&] { worksheet->GetCell(1, 1); }), E_POINTER) << "there are no Cells";
    EXPECT_EQ(MakeApplication(nullptr)->GetDispatch(), nullptr);
    EXPECT_EQ(MakeWorkbook(nullptr)->GetDispatch(), nullptr);
    EXPECT_EQ(MakeWorksheet(nullptr)->GetDispatch(), nullptr);
    EXPECT_TRUE(MakeWindow(nullptr)->IsNull());
}

template <class Make>
void ExpectFactory(Make make, const IID& iid) {
    Excel excel;
    {
        const auto made = make(&excel.object);
        EXPECT_EQ(excel.object.count, 2U);
    }
    EXPECT_EQ(excel.object.count, 1U);
    ASSERT_EQ(excel.object.queries.size(), 1U);
    EXPECT_TRUE(excel.object.queries[0] == iid);

    excel.object.interfaces.clear();
    EXPECT_NE(make(&excel.object), nullptr);
    EXPECT_EQ(excel.object.count, 1U) << "no such interface: the object holds null";
    excel.object.queryFailure = E_OUTOFMEMORY;
    EXPECT_EQ(Failure([&] { static_cast<void>(make(&excel.object)); }), E_OUTOFMEMORY);
    EXPECT_EQ(excel.object.count, 1U);
    EXPECT_THAT(excel.object.calls, IsEmpty());
}

TEST(Ownership, FactoriesAskForTheInterfaceOfTheirKind) {
    ExpectFactory([](IUnknown* source) { return MakeApplication(source); }, IidApplication);
    ExpectFactory([](IUnknown* source) { return MakeWorkbook(source); }, IidWorkbook);
    ExpectFactory([](IUnknown* source) { return MakeWorksheet(source); }, IidWorksheet);
    ExpectFactory([](IUnknown* source) { return MakeRange(source); }, IidRange);
    ExpectFactory([](IUnknown* source) { return MakeWindow(source); }, IidWindow);
}

TEST(Ownership, OnlyTypedRoutesAskForAnInterface) {
    Excel excel;
    excel.object.otherwise = GivesObject(excel.child);
    const auto application = MakeApplication(&excel.object);
    const auto worksheet = MakeWorksheet(&excel.object);
    const auto asked = [&](const auto&) {
        const auto result = excel.child.queries;
        excel.child.queries.clear();
        return result;
    };
    EXPECT_THAT(asked(application->GetActiveWorkbook()), IsEmpty());
    EXPECT_THAT(asked(application->GetActiveCell()), IsEmpty());
    EXPECT_THAT(asked(worksheet->GetParent()), ElementsAre(IidWorkbook));
    EXPECT_THAT(asked(worksheet->GetWorkbook()), ElementsAre(IidWorkbook));
    EXPECT_THAT(asked(worksheet->GetApplication()), ElementsAre(IidApplication));
    // A chart among the sheets: no error, but nothing to work with.
    excel.child.interfaces.clear();
    const auto chart = MakeRange(&excel.object)->GetWorksheet();
    EXPECT_THAT(asked(chart), ElementsAre(IidWorksheet));
    EXPECT_EQ(chart->GetDispatch(), nullptr);
    EXPECT_EQ(Failure([&] { chart->GetName(); }), E_POINTER);
}

TEST(Ownership, FromAVariantToAnInterface) {
    Excel excel;
    const auto application = MakeApplication(&excel.object);
    const auto caller = [&](const scripted::Answer& answer) {
        excel.object.otherwise = answer;
        const auto result = application->GetCaller();
        EXPECT_EQ(excel.child.count, result->IsNull() ? 1U : 2U);
        return !result->IsNull();
    };
    EXPECT_TRUE(caller(GivesObject(excel.child)));
    EXPECT_TRUE(caller(GivesObject(excel.child, VT_UNKNOWN)));
    IDispatch* variable = &excel.child;
    EXPECT_TRUE(caller(Gives(Make(VT_BYREF | VT_DISPATCH, [&](VARIANT& v) { v.ppdispVal = &variable; }))));
    // No object, or not a cell: an object that holds null.
    for (const VARIANT& none : {Empty(), Empty(VT_NULL), Empty(VT_DISPATCH), Empty(VT_UNKNOWN), I4(5),
                                R8(1.5), Bool(VARIANT_TRUE), MissingArgument}) {
        EXPECT_FALSE(caller(Gives(none))) << scripted::Shown(none);
    }
    EXPECT_FALSE(caller(GivesText(TEXT("Button 1"))));
    excel.child.interfaces.clear();
    EXPECT_FALSE(caller(GivesObject(excel.child)));
    EXPECT_FALSE(caller(GivesObject(excel.child, VT_UNKNOWN)));
    excel.child.queryFailure = E_ACCESSDENIED;
    excel.object.otherwise = GivesObject(excel.child);
    EXPECT_EQ(Failure([&] { application->GetCaller(); }), E_ACCESSDENIED);
}

TEST(Ownership, AVariantByValueIsClearedWhateverHappens) {
    Excel excel;
    const Latches latches(1, 1);
    const auto none = scripted::Answer();
    const auto refuses = Fails(E_FAIL);
    for (const bool null : {false, true}) {
        for (const auto& answer : {none, refuses}) {
            scripted::Object* const source = null ? nullptr : &excel.object;
            excel.object.otherwise = answer;
            const auto taken = [&] { return Holding(excel.child); };
            const auto attempt = [&](const char* operation, const auto& body) {
                SCOPED_TRACE(operation);
                try {
                    body();
                } catch (...) {
                    // A refused formula raises what Excel's refusals on the way raise.
                }
                EXPECT_EQ(excel.child.count, 1U);
            };
            const auto application = MakeApplication(source);
            const auto workbook = MakeWorkbook(source);
            const auto range = MakeRange(source);
            attempt("StatusBar", [&] { application->PutStatusBar(taken()); });
            attempt("ConvertFormula", [&] {
                VARIANT result = application->ConvertFormula(taken(), 1, taken(), taken(), taken());
                VariantClear(&result);
            });
            attempt("Close", [&] { workbook->Close(taken(), taken()); });
            attempt("Formula2", [&] { range->PutFormula2(taken()); });
            attempt("Formula2Local", [&] { range->PutFormula2Local(taken()); });
            attempt("FormulaArray", [&] { range->PutFormulaArray(taken()); });
            const Latches classic(0, 0);
            attempt("Formula", [&] { range->PutFormula2(taken()); });
            attempt("FormulaLocal", [&] { range->PutFormula2Local(taken()); });
        }
    }
}

TEST(Ownership, AVariantByReferenceStaysTheCallers) {
    Excel excel;
    excel.object.otherwise = Gives(Empty(VT_DISPATCH));
    VARIANT kept = Holding(excel.child);
    const auto range = MakeRange(&excel.object);
    range->PutValue(kept);
    range->PutValue2(kept);
    range->FindNext(kept);
    const OwnedVariant result = MakeApplication(&excel.object)->Run(kept, kept);
    EXPECT_EQ(excel.child.count, 2U);
    VariantClear(&kept);
}

TEST(Ownership, ARangeIsLentToACall) {
    Excel excel;
    scripted::Object cell;
    cell.interfaces = {IidRange};
    excel.object.otherwise = GivesObject(excel.child);
    const auto application = MakeApplication(&excel.object);
    const auto range = MakeRange(&cell);
    excel.object.answers[779] = [&](VARIANT* result, EXCEPINFO*) {
        EXPECT_EQ(cell.count, 2U) << "the range's own reference and the test's";
        return GivesObject(excel.child)(result, nullptr);
    };
    const auto both = application->Union(range, range);
    EXPECT_EQ(excel.object.calls.back().raw[0].pdispVal, static_cast<IDispatch*>(&cell));
    EXPECT_THAT(excel.object.calls.back().arguments, ElementsAre("DISPATCH object", "DISPATCH object"));
    // An empty pointer and an object that holds null go out as null: Excel has the last word.
    const auto nothing = application->Union(nullptr, MakeRange(nullptr));
    EXPECT_THAT(excel.object.calls.back().arguments, ElementsAre("DISPATCH null", "DISPATCH null"));
}

std::string Narrow(const CStringW& text) {
    return std::string(text.GetString(), text.GetString() + text.GetLength());
}

TEST(Values, TextsPassWhole) {
    Excel excel;
    const auto range = MakeRange(&excel.object);
    excel.object.otherwise = Gives(Empty(VT_BSTR));
    EXPECT_EQ(range->GetID(), CStringW());
    EXPECT_EQ(range->GetText(), CStringW());
    const CStringW zeroInside(TEXT("a\0b"), 3);
    excel.object.otherwise = [&](VARIANT* result, EXCEPINFO*) {
        *result =
            Make(VT_BSTR, [&](VARIANT& v) { v.bstrVal = SysAllocStringLen(zeroInside.GetString(), 3); });
        return S_OK;
    };
    EXPECT_EQ(range->GetID(), zeroInside);
    EXPECT_EQ(range->GetText(), zeroInside);
    excel.object.otherwise = nullptr;
    range->PutID(zeroInside);
    EXPECT_THAT(excel.object.calls.back().arguments, ElementsAre(std::string("BSTR a\0b", 8)));
    range->PutNumberFormat(CStringW());
    EXPECT_THAT(excel.object.calls.back().arguments, ElementsAre("BSTR "));
}

TEST(Values, ReadOutOfAVariant) {
    Excel excel;
    const auto range = MakeRange(&excel.object);
    const auto answer = [&](const VARIANT& value) { excel.object.otherwise = Gives(value); };
    // A Boolean: any word of a VT_BOOL but 0; what became one.
    for (const auto& [value, expected] : {std::pair{Bool(VARIANT_TRUE), true},
                                          {Bool(1), true},
                                          {Bool(0), false},
                                          {I4(3), true},
                                          {I4(0), false},
                                          {R8(0.5), true},
                                          {Empty(), false}}) {
        answer(value);
        EXPECT_EQ(range->GetLocked(), expected) << scripted::Shown(value);
    }
    excel.object.otherwise = GivesText(TEXT("True"));
    EXPECT_TRUE(range->GetMergeCells());
    answer(Empty(VT_NULL));
    EXPECT_EQ(Failure([&] { range->GetMergeCells(); }), DISP_E_TYPEMISMATCH);
    // A text.
    answer(I4(12));
    EXPECT_EQ(Narrow(range->GetText()), "12");
    answer(Empty(VT_NULL));
    EXPECT_EQ(Failure([&] { range->GetText(); }), DISP_E_TYPEMISMATCH);
    // A whole number.
    answer(I4(-1));
    EXPECT_EQ(range->Delete(), -1);
    answer(Bool(VARIANT_TRUE));
    EXPECT_EQ(range->Delete(), -1);
    answer(R8(2.5));
    EXPECT_EQ(range->Delete(), 2);
    excel.object.otherwise = GivesText(TEXT("x"));
    EXPECT_EQ(Failure([&] { range->Delete(); }), DISP_E_TYPEMISMATCH);
}

TEST(Allocations, APlainCallMakesNone) {
    scripted::PlainObject object(Gives(I4(42)));
    const auto application = MakeApplication(&object);
    const auto range = MakeRange(&object);
    std::size_t before = support::Allocations();
    EXPECT_EQ(range->GetCount(), 42);
    EXPECT_EQ(application->GetTop(), 42.0);
    EXPECT_TRUE(application->GetVisible());
    application->PutVisible(true);
    const VARIANT value = range->GetValue();
    range->PutValue2(value);
    EXPECT_TRUE(range->GetLocked());
    EXPECT_EQ(support::Allocations() - before, 0U);

    // An object is one block, its counts included.
    object.answer = Gives(Empty(VT_DISPATCH));
    before = support::Allocations();
    const auto rows = range->GetRows();
    EXPECT_EQ(support::Allocations() - before, 1U);
}

TEST(Allocations, EachOneThatFailsIsAFailureThatLeavesNothing) {
    scripted::PlainObject object(Gives(Empty()));
    scripted::PlainObject child(Gives(Empty()));
    const auto application = MakeApplication(&object);
    const auto range = MakeRange(&object);
    const auto names = [&] {
        object.answer = GivesObject(object);
        return application->GetNames();
    }();
    const CStringW text(TEXT("a text that is long enough to be nobody's inner buffer"));
    const auto taken = [&] {
        child.AddRef();
        return Make(VT_DISPATCH, [&](VARIANT& v) { v.pdispVal = &child; });
    };

    std::int64_t before = 0;
    const auto attempt = [&](const char* operation, const scripted::Answer& answer, const auto& body) {
        SCOPED_TRACE(operation);
        object.answer = answer;
        const auto run = [&] {
            before = support::LiveBlocks();
            object.calls = 0;
            try {
                body();
            } catch (const std::bad_alloc&) {
            } catch (const _com_error& error) {
                EXPECT_EQ(error.Error(), E_OUTOFMEMORY);
            }
        };
        return support::FailEachAllocation(run, [&] {
            EXPECT_EQ(support::LiveBlocks(), before);
            EXPECT_EQ(child.count, 1U);
        });
    };
    const auto gives = GivesObject(child);
    EXPECT_EQ(attempt("object", gives,
                      [&] {
                          try {
                              static_cast<void>(range->GetRows());
                          } catch (const std::bad_alloc&) {
                              EXPECT_EQ(object.calls, 0) << "no call is made for an object that can't be had";
                              throw;
                          }
                      }),
              1U);
    EXPECT_EQ(attempt("object out of a VARIANT", gives, [&] { static_cast<void>(range->GetItem(1, 2)); }),
              1U);
    EXPECT_GE(
        attempt("text", GivesText(TEXT("some text of Excel's")), [&] { static_cast<void>(range->GetID()); }),
        1U);
    EXPECT_GE(attempt("taken VARIANT and text", gives, [&] { static_cast<void>(names->Add(taken(), text)); }),
              1U);
    attempt("put text", gives, [&] { range->PutID(text); });
    attempt("put text in a VARIANT", gives, [&] { range->PutNumberFormat(text); });
    attempt("texts", Gives(Bool(VARIANT_TRUE)), [&] { range->Replace(text, text); });
}

TEST(Probes, TheFirstAnswerStays) {
    const Latches latches;
    Excel excel;
    const auto asked = [&] {
        std::vector<DISPID> dispids;
        for (const auto& call : excel.object.calls) dispids.push_back(call.dispid);
        for (const auto& call : excel.child.calls) dispids.push_back(call.dispid);
        excel.object.calls.clear();
        excel.child.calls.clear();
        return dispids;
    };
    excel.object.answers[256] = [&](VARIANT* result, EXCEPINFO*) {
        EXPECT_EQ(excel.object.count, 2U) << "the range is held for the probe";
        return GivesObject(excel.child)(result, nullptr);
    };
    excel.child.answers[1580] = GivesText(TEXT("=A1"));
    ProbeFormula2(&excel.object);
    EXPECT_THAT(excel.object.calls[0].arguments, ElementsAre("INT 1", "INT 1"));
    EXPECT_EQ(excel.child.calls[0].flags, DISPATCH_PROPERTYGET);
    EXPECT_THAT(asked(), ElementsAre(256, 1580));
    EXPECT_EQ(Formula2Available, 1);

    excel.object.answers[3295] = GivesObject(excel.child);
    ProbeHasSpill(&excel.object);
    EXPECT_THAT(asked(), ElementsAre(3295));
    EXPECT_EQ(HasSpillAvailable, 1);
    EXPECT_EQ(excel.child.count, 1U);

    // Known: nobody is asked, whatever the answer would be now.
    excel.object.answers[256] = excel.object.answers[3295] = Fails(E_FAIL);
    for (const LONG known : {1, 0}) {
        Formula2Available = HasSpillAvailable = known;
        ProbeFormula2(&excel.object);
        ProbeHasSpill(nullptr);
        EXPECT_THAT(asked(), IsEmpty());
        EXPECT_EQ(Formula2Available, known);
        EXPECT_EQ(HasSpillAvailable, known);
    }
}

TEST(Probes, AnyFailureMeansThatTheHostLacksIt) {
    const auto throws = [](VARIANT*, EXCEPINFO*) -> HRESULT { throw 5; };
    Excel excel;
    const auto expect = [&](const char* what, IDispatch* range) {
        SCOPED_TRACE(what);
        const Latches latches;
        ProbeFormula2(range);
        ProbeHasSpill(range);
        EXPECT_EQ(Formula2Available, 0);
        EXPECT_EQ(HasSpillAvailable, 0);
        EXPECT_EQ(excel.child.count, 1U);
    };
    expect("no range", nullptr);
    excel.object.otherwise = Fails(DISP_E_MEMBERNOTFOUND);
    expect("refused", &excel.object);
    excel.object.otherwise = throws;
    expect("another exception", &excel.object);
    excel.object.answers[3295] = Fails(RPC_E_CALL_REJECTED);
    excel.object.otherwise = Gives(Empty(VT_DISPATCH));
    expect("no cell", &excel.object);
    excel.object.otherwise = GivesObject(excel.child);
    excel.child.otherwise = Fails(E_FAIL);
    expect("refused by the cell", &excel.object);
}

TEST(Probes, OperationsAskThemOnce) {
    const Latches latches;
    Excel excel;
    const auto range = MakeRange(&excel.object);
    EXPECT_EQ(Failure([] { static_cast<void>(MakeRange(nullptr)->GetHasSpill()); }), E_POINTER);
    EXPECT_EQ(Failure([] { static_cast<void>(MakeRange(nullptr)->GetFormula2()); }), E_POINTER);
    EXPECT_EQ(HasSpillAvailable, -1) << "a range that holds null tells nothing about the host";
    EXPECT_EQ(Formula2Available, -1);

    excel.object.otherwise = Gives(Empty(VT_NULL));
    EXPECT_EQ(range->GetHasSpill().vt, VT_NULL);
    EXPECT_EQ(excel.object.calls.size(), 2U) << "the probe and the call";
    EXPECT_EQ(range->GetHasSpill().vt, VT_NULL);
    EXPECT_EQ(excel.object.calls.size(), 3U);
    HasSpillAvailable = 0;
    const VARIANT none = range->GetHasSpill();
    EXPECT_EQ(scripted::Shown(none), "BOOL 0");
    EXPECT_EQ(excel.object.calls.size(), 3U);
}

}  // namespace
