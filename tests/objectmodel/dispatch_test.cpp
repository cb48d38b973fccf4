// DispatchInvoke: how arguments go out, how results come back, and what becomes of each failure.
#include "objectmodel/dispatch.h"

#include <climits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "scripted_object.h"

namespace {

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

constexpr DISPID member = 77;
constexpr WORD method = DISPATCH_METHOD;

using Types = std::basic_string<WCHAR>;

const VARIANT missing = MissingArgument;

// The HRESULT of the _com_error that the body raises; S_OK if it raises none.
template <class Body>
HRESULT Failure(Body body) {
    try {
        body();
        return S_OK;
    } catch (const _com_error& error) {
        return error.Error();
    }
}

TEST(MissingArgument, IsTheMarkerOfAutomation) {
    EXPECT_EQ(MissingArgument.vt, VT_ERROR);
    EXPECT_EQ(MissingArgument.scode, DISP_E_PARAMNOTFOUND);
}

TEST(DispatchInvoke, EachTypeEncodesItsArgument) {
    scripted::Object object;
    const auto sent = [&](const Types& types, const auto&... arguments) {
        EXPECT_EQ(DispatchInvoke(&object, member, method, 0, nullptr, types.c_str(), arguments...), S_OK);
        return object.calls.back().arguments;
    };
    EXPECT_THAT(sent({VT_I4, VT_I4, VT_I4}, 5, -1L, INT_MIN), ElementsAre("I4 5", "I4 -1", "I4 -2147483648"));
    EXPECT_THAT(sent({VT_R8, VT_R4, VT_DATE}, 1.5, 2.5F, 3.5), ElementsAre("R8 1.5", "R8 2.5", "DATE 3.5"));
    EXPECT_THAT(sent({VT_BOOL, VT_BOOL, VT_BOOL}, true, false, 0x10000),
                ElementsAre("BOOL -1", "BOOL 0", "BOOL -1"));
    EXPECT_THAT(sent({VT_I1, VT_UI1, VT_I2, VT_UI2}, -1, 200, -300, 65535),
                ElementsAre("I1 -1", "UI1 200", "I2 -300", "UI2 65535"));
    EXPECT_THAT(sent({VT_UI4, VT_INT, VT_UINT, VT_ERROR}, UINT_MAX, -7, 7U, E_FAIL),
                ElementsAre("UI4 4294967295", "INT -7", "UINT 7", "ERROR 80004005"));
    EXPECT_THAT(sent({VT_I8, VT_UI8, VT_CY}, LLONG_MIN, ULLONG_MAX, 12345LL),
                ElementsAre("I8 -9223372036854775808", "UI8 18446744073709551615", "CY 12345"));

    const VARIANT text = NewText(TEXT("text"));
    EXPECT_THAT(sent({VT_BSTR, VT_BSTR}, text.bstrVal, nullptr), ElementsAre("BSTR text", "BSTR null"));
    EXPECT_EQ(object.calls.back().raw[1].bstrVal, text.bstrVal) << "a BSTR goes out as it is";
    EXPECT_THAT(sent({VT_VARIANT, OptionalParameter | VT_VARIANT}, &text, &text),
                ElementsAre("BSTR text", "BSTR text"));
    EXPECT_EQ(object.calls.back().raw[0].bstrVal, text.bstrVal) << "a VARIANT goes out bit by bit";
    SysFreeString(text.bstrVal);

    DECIMAL decimal{};
    decimal.Lo64 = 99;
    EXPECT_THAT(sent({VT_DECIMAL}, &decimal), ElementsAre("DECIMAL 99"));

    EXPECT_THAT(sent({VT_DISPATCH, VT_DISPATCH, VT_UNKNOWN}, static_cast<IDispatch*>(&object),
                     static_cast<IDispatch*>(nullptr), static_cast<IUnknown*>(&object)),
                ElementsAre("DISPATCH object", "DISPATCH null", "UNKNOWN object"));
    EXPECT_EQ(object.count, 1U) << "an interface is lent for the call";

    LONG variable = 1;
    EXPECT_THAT(sent({VT_BYREF | VT_I4, VT_ARRAY | VT_R8}, &variable, nullptr),
                ElementsAre("type 4003", "type 2005"));
    EXPECT_EQ(object.calls.back().raw[1].plVal, &variable);
    // The optional bit on a type that isn't a VARIANT says nothing.
    EXPECT_THAT(sent({OptionalParameter | VT_I4}, 3), ElementsAre("I4 3"));
}

TEST(DispatchInvoke, TheCallItself) {
    scripted::Object object;
    DispatchInvoke(&object, member, DISPATCH_PROPERTYGET, 0, nullptr, nullptr);
    DispatchInvoke(&object, -5, method, 0, nullptr, TEXT(""));
    ASSERT_EQ(object.calls.size(), 2U);
    EXPECT_EQ(object.calls[0].dispid, member);
    EXPECT_EQ(object.calls[0].flags, DISPATCH_PROPERTYGET);
    EXPECT_EQ(object.calls[0].locale, 0U);
    EXPECT_FALSE(object.calls[0].wantsResult);
    EXPECT_THAT(object.calls[0].arguments, IsEmpty());
    EXPECT_THAT(object.calls[0].named, IsEmpty());
    EXPECT_EQ(object.calls[1].dispid, -5);

    DispatchInvoke(&object, 12, DISPATCH_PROPERTYGET, 0, nullptr);
    EXPECT_EQ(object.calls[2].dispid, 12);
    EXPECT_THAT(object.calls[2].arguments, IsEmpty());

    object.otherwise = Fails(S_FALSE);
    EXPECT_EQ(DispatchInvoke(&object, member, method, 0, nullptr, nullptr), S_FALSE);
}

// Required and optional VARIANTs and the value, in the order of the parameter string: "r" and "o" hold a
// number, "R" and "O" the missing argument, "b" and "B" are optional ones by reference.
struct DropCase {
    const char* list;
    WORD flags;
    std::vector<std::string> expected;
};

TEST(DispatchInvoke, OmittedArgumentsAtTheEndAreDropped) {
    const std::string sentMissing = "ERROR 80020004";
    constexpr WORD put = DISPATCH_PROPERTYPUT;
    const DropCase cases[] = {
        {"OO", method, {}},
        {"oO", method, {"I4 1"}},
        {"oOO", method, {"I4 1"}},
        {"Oo", method, {sentMissing, "I4 2"}},
        {"oOoO", method, {"I4 1", sentMissing, "I4 3"}},
        {"rO", method, {"I4 1"}},
        {"RO", method, {sentMissing}},
        {"OR", method, {sentMissing, sentMissing}},
        {"rR", method, {"I4 1", sentMissing}},
        {"oB", method, {"I4 1"}},
        {"ob", method, {"I4 1", "type 400C"}},
        // In a put the last one is the value: it stays, whatever it is, and the others are dropped behind it.
        {"r", put, {"I4 1"}},
        {"O", put, {sentMissing}},
        {"OO", put, {sentMissing}},
        {"ro", put, {"I4 1", "I4 2"}},
        {"oOr", put, {"I4 1", "I4 3"}},
        {"OOr", put, {"I4 3"}},
        {"ROr", put, {sentMissing, "I4 3"}},
        {"OOo", DISPATCH_PROPERTYPUTREF, {"I4 3"}},
        {"OOo", DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF, {"I4 3"}},
    };
    for (const DropCase& each : cases) {
        SCOPED_TRACE(each.list);
        scripted::Object object;
        Types types;
        std::vector<VARIANT> values;
        for (const char* kind = each.list; *kind; ++kind) {
            const bool required = *kind == 'r' || *kind == 'R';
            const bool byReference = *kind == 'b' || *kind == 'B';
            types += static_cast<WCHAR>((required ? 0 : OptionalParameter) | (byReference ? VT_BYREF : 0) |
                                        VT_VARIANT);
            const auto number = static_cast<LONG>(values.size()) + 1;
            values.push_back(*kind >= 'a' ? I4(number) : missing);
        }
        std::vector<DispatchArgument> arguments;
        for (const VARIANT& value : values) arguments.emplace_back(&value);
        std::vector<VARIANT> room(values.size());
        DispatchInvokeV(&object, member, each.flags, 0, nullptr, types.c_str(), arguments, room);

        ASSERT_EQ(object.calls.size(), 1U);
        EXPECT_EQ(object.calls[0].arguments, each.expected);
        if (each.flags == method) {
            EXPECT_THAT(object.calls[0].named, IsEmpty());
        } else {
            EXPECT_THAT(object.calls[0].named, ElementsAre(DISPID_PROPERTYPUT));
        }
    }
}

TEST(DispatchInvoke, WhatCantBeSentIsRefusedWithoutACall) {
    scripted::Object object;
    const auto refusal = [&](WORD flags, const Types& types, const auto&... arguments) {
        return Failure(
            [&] { DispatchInvoke(&object, member, flags, 0, nullptr, types.c_str(), arguments...); });
    };
    EXPECT_EQ(Failure([] { DispatchInvoke(nullptr, member, method, 0, nullptr, nullptr); }), E_POINTER);
    EXPECT_EQ(Failure([] { DispatchInvoke(nullptr, member, method, 0, nullptr); }), E_POINTER);
    EXPECT_EQ(Failure([&] { DispatchInvoke(&object, member, DISPATCH_PROPERTYPUT, 0, nullptr); }),
              E_INVALIDARG);
    EXPECT_EQ(refusal(DISPATCH_PROPERTYPUT, {}), E_INVALIDARG);
    EXPECT_EQ(refusal(DISPATCH_PROPERTYPUTREF, {}), E_INVALIDARG);
    for (const int type : {int{VT_NULL}, int{VT_RECORD}, 15, 24, 0x07FF}) {
        EXPECT_EQ(refusal(method, {static_cast<WCHAR>(type)}, 1), E_INVALIDARG) << type;
    }
    EXPECT_EQ(refusal(method, {VT_I4}), E_INVALIDARG) << "too few arguments";
    EXPECT_EQ(refusal(method, {VT_I4}, 1, 2), E_INVALIDARG) << "too many arguments";
    EXPECT_EQ(refusal(method, {VT_I4}, 1.5), E_INVALIDARG) << "a floating-point number for a whole one";
    EXPECT_EQ(refusal(method, {VT_R8}, 1), E_INVALIDARG);
    EXPECT_EQ(refusal(method, {VT_BSTR}, 1), E_INVALIDARG);
    EXPECT_EQ(refusal(method, {VT_I4}, &missing), E_INVALIDARG);
    EXPECT_EQ(refusal(method, {VT_VARIANT}, nullptr), E_POINTER);
    EXPECT_EQ(refusal(method, {VT_DECIMAL}, nullptr), E_POINTER);
    EXPECT_THAT(object.calls, IsEmpty());
}

template <class Result>
Result Asked(scripted::Object& object, VARTYPE type) {
    Result result{};
    DispatchInvoke(&object, member, DISPATCH_PROPERTYGET, type, &result, nullptr);
    return result;
}

TEST(DispatchInvoke, ResultsInTheTypeAskedFor) {
    scripted::Object object;
    const auto answer = [&](const VARIANT& value) { object.otherwise = Gives(value); };
    answer(I4(-5));
    EXPECT_EQ(Asked<LONG>(object, VT_I4), -5);
    EXPECT_EQ(Asked<double>(object, VT_R8), -5.0);
    EXPECT_EQ(Asked<float>(object, VT_R4), -5.0F);
    EXPECT_EQ(Asked<VARIANT_BOOL>(object, VT_BOOL), VARIANT_TRUE);
    EXPECT_TRUE(object.calls.back().wantsResult);
    answer(R8(2.5));
    EXPECT_EQ(Asked<LONG>(object, VT_I4), 2);
    EXPECT_EQ(Asked<double>(object, VT_R8), 2.5);
    answer(scripted::Bool(5));
    EXPECT_EQ(Asked<VARIANT_BOOL>(object, VT_BOOL), 5) << "a word that is no standard Boolean stays as it is";

    object.otherwise = GivesText(TEXT("12"));
    EXPECT_EQ(Asked<LONG>(object, VT_I4), 12);
    const BSTR text = Asked<BSTR>(object, VT_BSTR);
    EXPECT_EQ(Types(text), TEXT("12"));
    SysFreeString(text);
    answer(Make(VT_BSTR, [](VARIANT&) {}));
    EXPECT_EQ(Asked<BSTR>(object, VT_BSTR), nullptr);

    object.otherwise = GivesObject(object);
    EXPECT_EQ(Asked<IDispatch*>(object, VT_DISPATCH), static_cast<IDispatch*>(&object));
    EXPECT_EQ(object.count, 2U) << "the caller owns the reference that came";
    object.Release();
    object.otherwise = GivesObject(object, VT_UNKNOWN);
    EXPECT_EQ(Asked<IDispatch*>(object, VT_DISPATCH), static_cast<IDispatch*>(&object));
    EXPECT_EQ(object.count, 2U);
    object.Release();
    answer(Empty(VT_DISPATCH));
    EXPECT_EQ(Asked<IDispatch*>(object, VT_DISPATCH), nullptr);

    // A VARIANT comes unconverted.
    for (const VARIANT& value : {I4(3), R8(1), Empty(VT_NULL), Empty(), missing}) {
        answer(value);
        EXPECT_EQ(scripted::Shown(Asked<VARIANT>(object, VT_VARIANT)), scripted::Shown(value));
    }
}

TEST(DispatchInvoke, AResultThatNobodyWantsIsCleared) {
    scripted::Object object;
    object.otherwise = GivesObject(object);
    DispatchInvoke(&object, member, method, VT_DISPATCH, nullptr, nullptr);
    DispatchInvoke(&object, member, method, VT_VARIANT, nullptr, nullptr);
    EXPECT_EQ(object.count, 1U);
}

TEST(DispatchInvoke, AResultThatCantBeTurnedIsClearedAndRaised) {
    scripted::Object object;
    const auto refusal = [&](VARTYPE type) {
        LONG untouched[8] = {7, 7, 7, 7, 7, 7, 7, 7};
        const HRESULT hresult =
            Failure([&] { DispatchInvoke(&object, member, DISPATCH_PROPERTYGET, type, untouched, nullptr); });
        EXPECT_THAT(untouched, testing::Each(7)) << "nothing is stored by a call that failed";
        return hresult;
    };
    object.otherwise = GivesText(TEXT("no number"));
    EXPECT_EQ(refusal(VT_I4), DISP_E_TYPEMISMATCH);
    object.otherwise = Gives(R8(1e10));
    EXPECT_EQ(refusal(VT_I4), DISP_E_OVERFLOW);
    object.otherwise = Gives(Empty(VT_NULL));
    EXPECT_EQ(refusal(VT_BSTR), DISP_E_TYPEMISMATCH);
    // A type that has no rule of storing, converted or not.
    object.otherwise = Gives(I4(1));
    EXPECT_EQ(refusal(VT_I2), E_INVALIDARG);
    object.otherwise = GivesObject(object, VT_UNKNOWN);
    EXPECT_EQ(refusal(VT_UNKNOWN), E_INVALIDARG);
    EXPECT_EQ(object.count, 1U);
}

TEST(DispatchInvoke, AFailureOfInvokeGoesUpAndItsResultIsCleared) {
    for (const HRESULT hresult :
         {E_FAIL, RPC_E_CALL_REJECTED, DISP_E_MEMBERNOTFOUND, DISP_E_TYPEMISMATCH, E_OUTOFMEMORY}) {
        scripted::Object object;
        object.otherwise = [&](VARIANT* result, EXCEPINFO* exception) {
            GivesObject(object)(result, nullptr);
            exception->bstrDescription = SysAllocString(TEXT("freed as well"));
            return hresult;
        };
        try {
            Asked<VARIANT>(object, VT_VARIANT);
            ADD_FAILURE() << "nothing was raised";
        } catch (const _com_error& error) {
            EXPECT_EQ(error.Error(), hresult);
            EXPECT_EQ(error.ErrorInfo(), nullptr);
        }
        EXPECT_EQ(object.count, 1U);
        EXPECT_EQ(object.calls.size(), 1U) << "nothing is tried again";
    }
}

TEST(DispatchInvoke, TheCodeOfAnException) {
    const struct {
        WORD code;
        SCODE scode;
        std::uint32_t expected;
    } cases[] = {
        {0, E_FAIL, 0x80004005},      {0, E_OUTOFMEMORY, 0x8007000E},
        {5, E_FAIL, 0x80040205},      {5, 0, 0x80040205},
        {1, 0, 0x80040201},           {1004, 0, 0x800405EC},
        {0xFDFF, 0, 0x8004FFFF},      {0xFE00, 0, 0x8004FFFF},
        {0xFFFF, E_FAIL, 0x8004FFFF}, {0, static_cast<SCODE>(0x800A03EC), 0x800A03EC},
        {0, S_OK, 0x80020009},        {0, S_FALSE, 0x80020009},
    };
    for (const auto& [code, scode, expected] : cases) {
        scripted::Object object;
        object.otherwise = [code = code, scode = scode](VARIANT*, EXCEPINFO* exception) {
            exception->wCode = code;
            exception->scode = scode;
            return DISP_E_EXCEPTION;
        };
        EXPECT_EQ(Failure([&] { DispatchInvoke(&object, member, method, 0, nullptr, nullptr); }),
                  static_cast<HRESULT>(expected))
            << "wCode " << code << " scode " << scode;
    }
}

std::string Read(IErrorInfo* info, HRESULT (STDMETHODCALLTYPE IErrorInfo::*get)(BSTR*)) {
    BSTR text = nullptr;
    EXPECT_EQ((info->*get)(&text), S_OK);
    const std::string result = text ? std::string(text, text + SysStringLen(text)) : "(null)";
    SysFreeString(text);
    return result;
}

// The error object of the _com_error that the body raises, the caller's to release.
template <class Body>
IErrorInfo* ErrorObject(Body body) {
    try {
        body();
    } catch (const _com_error& error) {
        return error.ErrorInfo();
    }
    ADD_FAILURE() << "nothing was raised";
    return nullptr;
}

HRESULT STDMETHODCALLTYPE FillInLate(EXCEPINFO* exception) {
    exception->wCode = 3;
    exception->bstrDescription = SysAllocString(TEXT("late"));
    return S_OK;
}

TEST(DispatchInvoke, TheErrorObjectOfAnException) {
    scripted::Object object;
    object.otherwise = [](VARIANT*, EXCEPINFO* exception) {
        exception->scode = E_FAIL;
        exception->bstrSource = SysAllocString(TEXT("Microsoft Excel"));
        exception->bstrDescription = SysAllocString(TEXT("The formula is wrong."));
        exception->bstrHelpFile = SysAllocString(TEXT("xlmain.chm"));
        exception->dwHelpContext = 42;
        return DISP_E_EXCEPTION;
    };
    IErrorInfo* info = ErrorObject([&] { DispatchInvoke(&object, member, method, 0, nullptr, nullptr); });
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(Read(info, &IErrorInfo::GetSource), "Microsoft Excel");
    EXPECT_EQ(Read(info, &IErrorInfo::GetDescription), "The formula is wrong.");
    EXPECT_EQ(Read(info, &IErrorInfo::GetHelpFile), "xlmain.chm");
    DWORD context = 0;
    info->GetHelpContext(&context);
    EXPECT_EQ(context, 42U);
    GUID guid{};
    info->GetGUID(&guid);
    EXPECT_TRUE(guid == IID_IDispatch);
    EXPECT_EQ(info->Release(), 0U) << "the exception was the only other owner";

    // What a server fills in late counts, the code included.
    object.otherwise = [](VARIANT*, EXCEPINFO* exception) {
        exception->scode = E_FAIL;
        exception->pfnDeferredFillIn = FillInLate;
        return DISP_E_EXCEPTION;
    };
    const auto call = [&] { DispatchInvoke(&object, member, method, 0, nullptr, nullptr); };
    EXPECT_EQ(Failure(call), static_cast<HRESULT>(0x80040203U));
    info = ErrorObject(call);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(Read(info, &IErrorInfo::GetDescription), "late");
    EXPECT_EQ(Read(info, &IErrorInfo::GetSource), "(null)");
    info->Release();
}

TEST(IssueError, RaisesWithoutAnErrorObject) {
    for (const HRESULT hresult : {E_FAIL, E_POINTER, S_OK}) {
        try {
            IssueError(hresult);
        } catch (const _com_error& error) {
            EXPECT_EQ(error.Error(), hresult);
            EXPECT_EQ(error.ErrorInfo(), nullptr);
        }
    }
}

TEST(IssueErrorEx, TakesTheThreadsErrorObjectFromAnInterfaceThatMakesThem) {
    constexpr IID iid = {1, 2, 3, {4}};
    constexpr IID other = {5, 6, 7, {8}};
    ICreateErrorInfo* writer = nullptr;
    ASSERT_EQ(CreateErrorInfo(&writer), S_OK);
    void* reader = nullptr;
    ASSERT_EQ(writer->QueryInterface(IID_IErrorInfo, &reader), S_OK);
    auto* const info = static_cast<IErrorInfo*>(reader);
    writer->Release();

    scripted::Object object;
    object.interfaces = {iid};
    IUnknown* const unknown = &object;
    const struct {
        const char* what;
        IUnknown* object;
        bool supports;
        const IID& iid;
        bool expected;
    } cases[] = {
        {"supported", unknown, true, iid, true},
        {"another interface", unknown, true, other, false},
        {"no support", unknown, false, iid, false},
        {"null", nullptr, true, iid, false},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        object.supportsErrorInfo = each.supports;
        SetErrorInfo(0, info);
        EXPECT_EQ(Failure([&] { IssueErrorEx(E_FAIL, each.object, each.iid); }), E_FAIL);
        SetErrorInfo(0, info);
        IErrorInfo* const given = ErrorObject([&] { IssueErrorEx(E_FAIL, each.object, each.iid); });
        EXPECT_EQ(given, each.expected ? info : nullptr);
        if (given) given->Release();
        // Taken away from the thread, or left to it.
        IErrorInfo* left = nullptr;
        EXPECT_EQ(GetErrorInfo(0, &left), each.expected ? S_FALSE : S_OK);
        if (left) left->Release();
    }
    object.supportsErrorInfo = true;
    EXPECT_EQ(ErrorObject([&] { IssueErrorEx(E_FAIL, unknown, iid); }), nullptr) << "the thread has none";
    EXPECT_EQ(info->Release(), 0U);
}

}  // namespace
