// The automation server as a client sees it that keeps to no rules, and what Excel itself would refuse.
#include "operations.h"

namespace world {
namespace {

TEST(Server, SeesReleasesTooManyAndOutlivesItsOwnEnd) {
    IDispatch* left = nullptr;
    {
        AutomationServer server;
        IDispatch* application = server.NewApplication();
        application->AddRef();
        EXPECT_EQ(server.Live().front().count, 2U);
        EXPECT_EQ(application->Release(), 1U);
        EXPECT_EQ(application->Release(), 0U);
        EXPECT_TRUE(server.Live().empty());
        application->Release();
        void* object = nullptr;
        EXPECT_EQ(application->QueryInterface(IID_IDispatch, &object), RPC_E_DISCONNECTED);
        ASSERT_EQ(server.Faults().size(), 2U);
        EXPECT_EQ(server.Faults()[0], "Release of Application after its last Release");
        left = server.NewApplication();
    }
    VARIANT result;
    VariantInit(&result);
    DISPPARAMS none{};
    EXPECT_EQ(left->Invoke(392, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, &result, nullptr, nullptr),
              RPC_E_DISCONNECTED);
    EXPECT_EQ(left->Release(), 0U);
}

TEST(Server, HoldsClientsToTheRulesOfInvoke) {
    AutomationServer server;
    const auto application = ComPtr<IDispatch>::Adopt(server.NewApplication());
    WCHAR name[] = TEXT("calculation");
    LPOLESTR names[] = {name};
    DISPID dispid = 0;
    EXPECT_EQ(application->GetIDsOfNames(IID_NULL, names, 1, 0, &dispid), S_OK);
    EXPECT_EQ(dispid, 316);
    name[0] = TEXT('x');
    EXPECT_EQ(application->GetIDsOfNames(IID_NULL, names, 1, 0, &dispid), DISP_E_UNKNOWNNAME);

    VARIANT text = Variant(TEXT("no number")).Detach();
    const OwnedVariant owned(text);
    DISPID value = DISPID_PROPERTYPUT;
    DISPID other = 5;
    const struct {
        const char* what;
        DISPID dispid;
        WORD flags;
        DISPPARAMS parameters;
        HRESULT result;
    } rows[] = {
        {"unknown member", 9999, DISPATCH_PROPERTYGET, {}, DISP_E_MEMBERNOTFOUND},
        {"a put of what can only be read",
         314,
         DISPATCH_PROPERTYPUT,
         {&text, &value, 1, 1},
         DISP_E_MEMBERNOTFOUND},
        {"too many arguments", 392, DISPATCH_PROPERTYGET, {&text, nullptr, 1, 0}, DISP_E_BADPARAMCOUNT},
        {"too few", 1, DISPATCH_METHOD, {}, DISP_E_PARAMNOTOPTIONAL},
        {"a put without its name",
         316,
         DISPATCH_PROPERTYPUT,
         {&text, nullptr, 1, 0},
         DISP_E_PARAMNOTOPTIONAL},
        {"another name", 316, DISPATCH_PROPERTYPUT, {&text, &other, 1, 1}, DISP_E_NONAMEDARGS},
        {"a wrong type", 316, DISPATCH_PROPERTYPUT, {&text, &value, 1, 1}, DISP_E_TYPEMISMATCH},
    };
    for (auto row : rows) {
        EXPECT_EQ(application->Invoke(row.dispid, IID_NULL, 0, row.flags, &row.parameters, nullptr, nullptr,
                                      nullptr),
                  row.result)
            << row.what;
    }
}

TEST(Server, DefersItsTextsWhenToldTo) {
    World world;
    Refusal refusal = Refusal::Exception(TEXT("Later."));
    refusal.deferred = true;
    refusal.code = 5;
    world.server.Refuse("Application", 392, refusal);
    try {
        static_cast<void>(world.application->GetVersion());
        FAIL();
    } catch (const _com_error& error) {
        EXPECT_EQ(error.Error(), static_cast<HRESULT>(0x80040205));
        BSTR description = nullptr;
        ComPtr<IErrorInfo>::Adopt(error.ErrorInfo())->GetDescription(&description);
        EXPECT_EQ(excelhost::Utf8(OwnedBstr(description).get()), "Later.");
    }
}

TEST(Server, BlocksAreArraysFromOneOn) {
    World world;
    const OwnedVariant block(world.Range(TEXT("A1:B3"))->GetValue2());
    ASSERT_EQ(block->vt, VT_ARRAY | VT_VARIANT);
    LONG indices[] = {3, 2};
    OwnedVariant sum;
    ASSERT_EQ(SafeArrayGetElement(block->parray, indices, sum.receive()), S_OK);
    EXPECT_EQ(sum->dblVal, 30.0);
    world.Range(TEXT("M1:N4"))->PutValue2(block.get());
    EXPECT_EQ(excelhost::Utf8(world.Range(TEXT("M2"))->GetText().GetString()), "pear");
    EXPECT_EQ(excelhost::Utf8(world.Range(TEXT("M4"))->GetText().GetString()), "#N/A");
    EXPECT_EQ(Outcome([&] { return Shown(world, "")(world.Worksheet()->GetCells()->GetValue()); }),
              "com 8007000E");
}

TEST(Server, RefusesWhatExcelRefuses) {
    const struct {
        const char* what;
        std::function<void(World&)> act;
        const char* outcome;
    } rows[] = {
        {"cells without number", [](World& w) { w.Worksheet()->GetCells()->GetCount(); }, "com 800A0006"},
        {"off the sheet", [](World& w) { w.Range(TEXT("A1"))->Offset(-1, 0); }, "com 800A03EC"},
        {"a sheet's name twice", [](World& w) { w.Worksheet()->PutName(TEXT("data")); }, "com 800A03EC"},
        {"a bad name of a sheet", [](World& w) { w.Worksheet()->PutName(TEXT("a:b")); }, "com 800A03EC"},
        {"the last sheet", [](World& w) { w.Worksheet()->Delete(), w.Worksheet()->Delete(); },
         "com 800A03EC"},
        {"a file that isn't there",
         [](World& w) {
             w.application->GetWorkbooks()->Open(TEXT("x"), MissingArgument, MissingArgument, MissingArgument,
                                                 MissingArgument);
         },
         "com 800A03EC"},
        {"a second comment", [](World& w) { w.Range(TEXT("A1"))->AddComment(TEXT("x")); }, "com 800A03EC"},
        {"a name like a cell",
         [](World& w) { w.Workbook()->GetNames()->Add(Variant(TEXT("AB12")).Detach(), TEXT("=1")); },
         "com 800A03EC"},
        {"no such cells", [](World& w) { w.Range(TEXT("A1"))->SpecialCells(-4123); }, "com 800A03EC"},
        {"an unknown macro", [](World& w) { OwnedVariant(w.application->Run(Variant(TEXT("None")).Get())); },
         "com 800A03EC"},
        {"ranges of two sheets",
         [](World& w) {
             w.application->Union(w.Range(TEXT("A1")), w.application->GetRange(TEXT("Data!A1")));
         },
         "com 800A03EC"},
        {"a value in a locked cell",
         [](World& w) { w.Sheet().protectedContents = true, w.Range(TEXT("A1"))->PutValue2(Number(1)); },
         "com 800A03EC"},
        {"a part of an array cleared", [](World& w) { w.Range(TEXT("D1"))->Clear(); }, "com 800A03EC"},
        {"a whole array cleared", [](World& w) { w.Range(TEXT("D1:D2"))->Clear(); }, ""},
    };
    for (const auto& row : rows) {
        World world;
        EXPECT_EQ(Outcome([&] {
                      row.act(world);
                      return "";
                  }),
                  row.outcome)
            << row.what;
        EXPECT_EQ(world.Live(), "Application  1; ") << row.what;
    }
}

}  // namespace
}  // namespace world
