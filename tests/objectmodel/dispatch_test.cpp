// DispatchInvoke: how arguments go out, how results come back, what becomes of each failure, and what a call
// allocates.
#include "objectmodel/detail/arguments.h"
#include "objectmodel/dispatch.h"
#include "objectmodel/msexcel.h"
#include "support/allocations.h"
#include "support/emptypool.h"

#include <climits>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

constexpr DISPID member = 77;
constexpr WORD method = DISPATCH_METHOD;
constexpr WORD get = DISPATCH_PROPERTYGET;

using Types = std::basic_string<WCHAR>;

// An argument by type and bits, as far as they are the type's.
struct Sent {
    int type;
    std::uint64_t bits;

    explicit Sent(const VARIANT& variant) : Sent(variant.vt, 0) {
        constexpr std::size_t p = sizeof(void*);
        constexpr std::size_t sizes[] = {0, 0, 2, 4, 4, 8, 8, 8, p, p, 4, 2,
                                         0, p, 0, 0, 1, 1, 2, 4, 8, 8, 4, 4};
        std::memcpy(&bits, &variant.bVal, variant.vt < std::size(sizes) ? sizes[variant.vt] : p);
    }
    template <class Value>
    Sent(int vartype, Value value) : type(vartype), bits(0) {
        std::memcpy(&bits, &value, sizeof value);
    }
    friend bool operator==(const Sent&, const Sent&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Sent& sent) {
        return out << "type " << sent.type << " bits " << sent.bits;
    }
};

// An automation object that a test scripts. It notes its last call without allocating.
class Object final : public IDispatch {
  public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() { EXPECT_EQ(count, 1U) << "a reference was lost or given back twice"; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = static_cast<IDispatch*>(this);
        ++count;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++count; }
    ULONG STDMETHODCALLTYPE Release() override { return --count; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID reserved, LCID locale, WORD way, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argument) override {
        EXPECT_TRUE(reserved == IID_NULL && locale == 0);
        EXPECT_TRUE(argument != nullptr && *argument == static_cast<UINT>(-1));
        EXPECT_TRUE(result == nullptr || result->vt == VT_EMPTY);
        EXPECT_TRUE(exception != nullptr && exception->pfnDeferredFillIn == nullptr);
        // A put has one name, that of its value, and nothing else has any.
        const bool put = (way & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
        EXPECT_EQ(parameters->cNamedArgs, put ? 1U : 0U);
        EXPECT_TRUE(!put || parameters->rgdispidNamedArgs[0] == DISPID_PROPERTYPUT);
        ++calls;
        arguments = parameters->cArgs;
        for (UINT i = 0; i < arguments; ++i) raw[i] = parameters->rgvarg[i];
        return answer(result, exception);
    }

    // The arguments of the last call in the published order.
    [[nodiscard]] std::vector<Sent> Arguments() const {
        std::vector<Sent> sent;
        for (UINT i = arguments; i-- > 0;) sent.emplace_back(raw[i]);
        return sent;
    }
    void Gives(const VARIANT& value) {
        answer = [value](VARIANT* result, EXCEPINFO*) {
            if (result == nullptr) return S_OK;
            if (value.vt == VT_DISPATCH && value.pdispVal != nullptr) value.pdispVal->AddRef();
            *result = value;
            return S_OK;
        };
    }

    std::function<HRESULT(VARIANT*, EXCEPINFO*)> answer = [](VARIANT*, EXCEPINFO*) { return S_OK; };
    ULONG count = 1;
    int calls = 0;
    UINT arguments = 0;
    VARIANT raw[8];  // as they came, last first; what they point to may be gone
};

template <class Content>
VARIANT Made(VARTYPE type, Content content) {
    VARIANT value{};
    value.vt = type;
    std::memcpy(&value.bVal, &content, sizeof content);
    return value;
}

// The HRESULT of the _com_error that the body raises, with its error object; S_OK if it raises none.
template <class Body>
HRESULT Failure(Body body, IErrorInfo** info = nullptr) {
    try {
        body();
        return S_OK;
    } catch (const _com_error& error) {
        IErrorInfo* const carried = error.ErrorInfo();
        if (info != nullptr) {
            *info = carried;
        } else if (carried != nullptr) {
            carried->Release();
        }
        return error.Error();
    }
}

TEST(DispatchInvoke, EachTypeEncodesItsArgument) {
    Object object;
    const auto sent = [&](const Types& types, const auto&... arguments) {
        EXPECT_EQ(DispatchInvoke(&object, member, method, 0, nullptr, types.c_str(), arguments...), S_OK);
        return object.Arguments();
    };
    EXPECT_THAT(sent({VT_I4, VT_I1, VT_UI1, VT_BOOL, VT_I2, VT_UI2}, INT_MIN, -1, 200, 0x10000, -300, 65535),
                ElementsAre(Sent(VT_I4, INT_MIN), Sent(VT_I1, '\xFF'), Sent(VT_UI1, '\xC8'),
                            Sent(VT_BOOL, VARIANT_TRUE), Sent(VT_I2, short{-300}), Sent(VT_UI2, short{-1})));
    EXPECT_THAT(
        sent({VT_UI4, VT_INT, VT_UINT, VT_ERROR}, UINT_MAX, -7, 7U, E_FAIL),
        ElementsAre(Sent(VT_UI4, UINT_MAX), Sent(VT_INT, -7), Sent(VT_UINT, 7), Sent(VT_ERROR, E_FAIL)));
    EXPECT_THAT(
        sent({VT_I8, VT_UI8, VT_CY, VT_R8, VT_R4, VT_DATE}, LLONG_MIN, ULLONG_MAX, 12345LL, 1.5, 2.5F, 3.5),
        ElementsAre(Sent(VT_I8, LLONG_MIN), Sent(VT_UI8, ULLONG_MAX), Sent(VT_CY, 12345LL), Sent(VT_R8, 1.5),
                    Sent(VT_R8, 2.5), Sent(VT_DATE, 3.5)));
    // Texts, VARIANTs and interfaces are lent as they are.
    const BSTR text = SysAllocString(TEXT("text"));
    const VARIANT variant = Made(VT_BSTR, text);
    EXPECT_THAT(sent({VT_BSTR, VT_BSTR, VT_VARIANT, OptionalParameter | VT_VARIANT}, text, nullptr, &variant,
                     &variant),
                ElementsAre(Sent(VT_BSTR, text), Sent(VT_BSTR, 0), Sent(VT_BSTR, text), Sent(VT_BSTR, text)));
    SysFreeString(text);
    // Neither another error nor a number of the same bits is an omitted argument.
    const VARIANT error = Made(VT_ERROR, E_FAIL), number = Made(VT_I4, DISP_E_PARAMNOTFOUND);
    EXPECT_THAT(sent({OptionalParameter | VT_VARIANT, OptionalParameter | VT_VARIANT}, &number, &error),
                ElementsAre(Sent(VT_I4, DISP_E_PARAMNOTFOUND), Sent(VT_ERROR, E_FAIL)));
    EXPECT_THAT(sent({OptionalParameter | VT_VARIANT}, &number),
                ElementsAre(Sent(VT_I4, DISP_E_PARAMNOTFOUND)));
    IDispatch* const itself = &object;
    EXPECT_THAT(sent({VT_DISPATCH, VT_DISPATCH, VT_UNKNOWN, VT_UNKNOWN}, itself, nullptr,
                     static_cast<IUnknown*>(itself), itself),
                ElementsAre(Sent(VT_DISPATCH, itself), Sent(VT_DISPATCH, 0),
                            Sent(VT_UNKNOWN, static_cast<IUnknown*>(itself)), Sent(VT_UNKNOWN, itself)));
    DECIMAL decimal{};
    decimal.Lo64 = 99;
    EXPECT_THAT(sent({VT_DECIMAL}, &decimal), ElementsAre(Sent(VT_DECIMAL, 0)));
    EXPECT_EQ(object.raw[0].decVal.Lo64, 99U);
    LONG variable = 1;
    EXPECT_THAT(sent({VT_BYREF | VT_I4, VT_ARRAY | VT_R8, OptionalParameter | VT_I4}, &variable, nullptr, 3),
                ElementsAre(Sent(VT_BYREF | VT_I4, &variable), Sent(VT_ARRAY | VT_R8, 0), Sent(VT_I4, 3)));

    object.answer = [](VARIANT*, EXCEPINFO*) { return S_FALSE; };
    EXPECT_EQ(DispatchInvoke(&object, member, get, 0, nullptr), S_FALSE);
}

// What a call can't read safely doesn't compile.
template <class... Arguments>
concept Goes = requires(IDispatch* object, const Arguments&... arguments) {
    DispatchInvoke(object, member, method, 0, nullptr, nullptr, arguments...);
};
static_assert(Goes<BSTR, IDispatch*, IUnknown*, Object*, kestrolumen::ComPtr<IDispatch>, VARIANT*, SAFEARRAY*,
                   LONG*, BSTR*, IDispatch**, std::nullptr_t, bool, double>);
static_assert(!Goes<CStringW> && !Goes<WCHAR[5]> && !Goes<const WCHAR*> && !Goes<CStringA> && !Goes<char[5]>);
static_assert(!Goes<void*> && !Goes<const void*> && !Goes<Sent*> && !Goes<VARIANT> && !Goes<OwnedVariant*>);

// A VARIANT has one owner, and an owner gives it away by name alone.
template <class Given>
concept GoesByValue = requires(MsExcel::Range& range, Given&& given) {
    range.PutFormula2(static_cast<Given&&>(given));
};
static_assert(GoesByValue<VARIANT> && !GoesByValue<OwnedVariant&> && !GoesByValue<const OwnedVariant&>);
static_assert(std::convertible_to<VARIANT, OwnedVariant> && !std::constructible_from<OwnedVariant, VARIANT&>);
static_assert(!std::constructible_from<OwnedVariant, const VARIANT&>);
static_assert(!std::constructible_from<VARIANT, const OwnedVariant&>);
static_assert(std::convertible_to<const OwnedVariant&, const VARIANT&>);

// The pointer of a temporary would dangle.
using Owned = kestrolumen::ComPtr<IDispatch>;
static_assert(std::convertible_to<Owned&, IDispatch*> && !std::convertible_to<Owned, IDispatch*>);
static_assert(!std::constructible_from<IUnknown*, Owned> && std::constructible_from<bool, Owned>);

// A text is an argument as a text, and no bool.
static_assert(decltype(kestrolumen::detail::AsArgument(TEXT("text")))::type == VT_BSTR);

// Required and optional VARIANTs and the value, in the order of the parameter string: "r" and "o" hold a
// number, "R" and "O" the missing argument, "b" and "B" are optional ones by reference.
TEST(DispatchInvoke, OmittedArgumentsAtTheEndAreDropped) {
    constexpr WORD put = DISPATCH_PROPERTYPUT;
    const struct {
        const char* list;
        WORD flags;
        const char* sent;  // the numbers of those that go out, "m" for a missing one, "&" by reference
    } cases[] = {
        {"OO", method, ""},
        {"oO", method, "1"},
        {"Oo", method, "m2"},
        {"oOoO", method, "1m3"},
        {"rO", method, "1"},
        {"OR", method, "mm"},
        {"oB", method, "1"},
        {"ob", method, "1&"},
        // In a put the last one is the value: it stays, whatever it is, and the others are dropped behind it.
        {"O", put, "m"},
        {"oOr", put, "13"},
        {"OOr", put, "3"},
        {"ROr", put, "m3"},
        {"OOo", DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF, "3"},
    };
    for (const auto& each : cases) {
        Object object;
        Types types;
        std::vector<VARIANT> values;
        for (const char* kind = each.list; *kind; ++kind) {
            const bool required = *kind == 'r' || *kind == 'R';
            const bool byReference = *kind == 'b' || *kind == 'B';
            types += static_cast<WCHAR>((required ? 0 : OptionalParameter) | (byReference ? VT_BYREF : 0) |
                                        VT_VARIANT);
            values.push_back(*kind >= 'a' ? Made(VT_I4, static_cast<LONG>(values.size() + 1))
                                          : MissingArgument);
        }
        std::vector<kestrolumen::DispatchArgument> arguments;
        for (const VARIANT& value : values) arguments.emplace_back(&value);
        std::vector<VARIANT> room(values.size());
        DispatchInvokeV(&object, member, each.flags, 0, nullptr, types.c_str(), arguments, room);
        std::string sent;
        for (UINT i = object.arguments; i-- > 0;) {
            const VARIANT& argument = object.raw[i];
            sent += argument.vt == VT_I4      ? std::to_string(argument.lVal)
                    : argument.vt == VT_ERROR ? "m"
                                              : "&";
        }
        EXPECT_EQ(sent, each.sent) << each.list;
    }
}

TEST(DispatchInvoke, WhatCantBeSentIsRefusedWithoutACall) {
    Object object;
    const auto refusal = [&](WORD flags, const Types& types, const auto&... arguments) {
        return Failure(
            [&] { DispatchInvoke(&object, member, flags, 0, nullptr, types.c_str(), arguments...); });
    };
    EXPECT_EQ(Failure([] { DispatchInvoke(nullptr, member, method, 0, nullptr, nullptr); }), E_POINTER);
    EXPECT_EQ(refusal(DISPATCH_PROPERTYPUT, {}), E_INVALIDARG);
    for (const int type : {int{VT_NULL}, int{VT_RECORD}, 15, 24, 0x07FF}) {
        EXPECT_EQ(refusal(method, {static_cast<WCHAR>(type)}, 1), E_INVALIDARG) << type;
    }
    EXPECT_EQ(refusal(method, {VT_I4}), E_INVALIDARG) << "too few arguments";
    EXPECT_EQ(refusal(method, {VT_I4}, 1, 2), E_INVALIDARG) << "too many arguments";
    VARIANT room[2];
    for (const std::size_t size : {0U, 2U}) {
        EXPECT_EQ(Failure([&] {
                      DispatchInvokeV(&object, member, method, 0, nullptr, Types{VT_I4}.c_str(),
                                      std::array{kestrolumen::DispatchArgument(1)}, std::span(room, size));
                  }),
                  E_INVALIDARG)
            << "a room of another size";
    }
    EXPECT_EQ(refusal(method, {VT_I4}, 1.5), E_INVALIDARG) << "a floating-point number for a whole one";
    EXPECT_EQ(refusal(method, {VT_R8}, 1), E_INVALIDARG);
    EXPECT_EQ(refusal(method, {VT_I4}, &MissingArgument), E_INVALIDARG);
    LONG variable = 0;
    IUnknown* const unknown = &object;
    for (const int type : {int{VT_BSTR}, int{VT_DISPATCH}, int{VT_VARIANT}, VT_ARRAY | VT_I4}) {
        EXPECT_EQ(refusal(method, {static_cast<WCHAR>(type)}, &variable), E_INVALIDARG) << type;
        EXPECT_EQ(refusal(method, {static_cast<WCHAR>(type)}, unknown), E_INVALIDARG) << type;
    }
    EXPECT_EQ(refusal(method, {VT_BYREF | VT_VARIANT}, &variable), E_INVALIDARG);
    EXPECT_EQ(refusal(method, {VT_VARIANT}, nullptr), E_POINTER);
    EXPECT_EQ(refusal(method, {VT_DECIMAL}, nullptr), E_POINTER);
    EXPECT_EQ(object.calls, 0);
}

// What a call gives in a type, by its bits; the HRESULT of what is raised, and then nothing is stored.
Sent Asked(Object& object, VARTYPE type) {
    std::uint64_t result[4] = {7, 7, 7, 7};
    const HRESULT raised = Failure([&] { DispatchInvoke(&object, member, get, type, result, nullptr); });
    if (FAILED(raised)) {
        EXPECT_THAT(result, testing::Each(7U));
        return {-1, raised};
    }
    if (type != VT_VARIANT) return Sent(Made(type, result[0]));
    VARIANT variant;
    std::memcpy(&variant, result, sizeof variant);
    return Sent(variant);
}

TEST(DispatchInvoke, ResultsInTheTypeAskedFor) {
    Object object;
    IDispatch* const itself = &object;
    const BSTR twelve = SysAllocString(TEXT("12"));
    const struct {
        VARIANT given;
        VARTYPE type;
        Sent expected;
    } cases[] = {
        {Made(VT_I4, -5), VT_R8, {VT_R8, -5.0}},
        {Made(VT_I4, -5), VT_R4, {VT_R4, -5.0F}},
        {Made(VT_R8, 2.5), VT_I4, {VT_I4, 2}},
        {Made(VT_BOOL, short{5}), VT_BOOL, {VT_BOOL, short{5}}},  // no standard Boolean, and stays as it is
        {Made(VT_BSTR, nullptr), VT_BSTR, {VT_BSTR, 0}},
        {Made(VT_NULL, 0), VT_VARIANT, {VT_NULL, 0}},  // a VARIANT comes unconverted
        {Made(VT_R8, 1e10), VT_I4, {-1, DISP_E_OVERFLOW}},
        {Made(VT_NULL, 0), VT_BSTR, {-1, DISP_E_TYPEMISMATCH}},
        {Made(VT_I4, 1), VT_I2, {-1, E_INVALIDARG}},  // a type that has no rule of storing
        {Made(VT_DISPATCH, itself), VT_UNKNOWN, {-1, E_INVALIDARG}},
    };
    for (const auto& each : cases) {
        object.Gives(each.given);
        EXPECT_EQ(Asked(object, each.type), each.expected) << &each - cases;
        EXPECT_EQ(object.count, 1U);
    }
    object.Gives(Made(VT_BSTR, twelve));
    EXPECT_EQ(Asked(object, VT_I4), Sent(VT_I4, 12)) << "the text is freed";
    // The caller owns the reference that came; a result that nobody wants is cleared.
    object.Gives(Made(VT_DISPATCH, itself));
    EXPECT_EQ(Asked(object, VT_DISPATCH), Sent(VT_DISPATCH, itself));
    EXPECT_EQ(object.Release(), 1U);
    DispatchInvoke(&object, member, method, VT_DISPATCH, nullptr, nullptr);
    DispatchInvoke(&object, member, method, VT_VARIANT, nullptr, nullptr);
}

TEST(DispatchInvoke, AFailureGoesUpByItsCodeAndItsResultIsCleared) {
    const struct {
        HRESULT result;
        WORD code;
        SCODE scode;
        std::uint32_t expected;
    } cases[] = {
        {RPC_E_CALL_REJECTED, 5, E_FAIL, 0x80010001}, {DISP_E_MEMBERNOTFOUND, 0, 0, 0x80020003},
        {DISP_E_EXCEPTION, 0, E_FAIL, 0x80004005},    {DISP_E_EXCEPTION, 5, E_FAIL, 0x80040205},
        {DISP_E_EXCEPTION, 0xFE00, 0, 0x8004FFFF},    {DISP_E_EXCEPTION, 0, S_FALSE, 0x80020009},
    };
    for (const auto& each : cases) {
        Object object;
        object.answer = [&](VARIANT* result, EXCEPINFO* exception) {
            object.AddRef();
            *result = Made(VT_DISPATCH, static_cast<IDispatch*>(&object));
            exception->wCode = each.code;
            exception->scode = each.scode;
            exception->bstrDescription = SysAllocString(TEXT("freed as well"));
            return each.result;
        };
        EXPECT_EQ(Asked(object, VT_VARIANT), Sent(-1, static_cast<HRESULT>(each.expected)));
        EXPECT_EQ(object.calls, 1) << "nothing is tried again";
    }
}

std::string Read(IErrorInfo* info, HRESULT (STDMETHODCALLTYPE IErrorInfo::*read)(BSTR*)) {
    BSTR text = nullptr;
    EXPECT_EQ((info->*read)(&text), S_OK);
    const std::string result = text ? std::string(text, text + SysStringLen(text)) : "(null)";
    SysFreeString(text);
    return result;
}

HRESULT STDMETHODCALLTYPE FillInLate(EXCEPINFO* exception) {
    exception->wCode = 3;
    exception->bstrDescription = SysAllocString(TEXT("late"));
    return S_OK;
}

TEST(DispatchInvoke, TheErrorObjectOfAnException) {
    for (const bool late : {false, true}) {
        Object object;
        object.answer = [&](VARIANT*, EXCEPINFO* exception) {
            exception->scode = E_FAIL;
            exception->dwHelpContext = 42;
            exception->bstrSource = SysAllocString(TEXT("Microsoft Excel"));
            if (late) {
                exception->pfnDeferredFillIn = FillInLate;
            } else {
                exception->bstrDescription = SysAllocString(TEXT("at once"));
                exception->bstrHelpFile = SysAllocString(TEXT("xlmain.chm"));
            }
            return DISP_E_EXCEPTION;
        };
        IErrorInfo* info = nullptr;
        EXPECT_EQ(Failure([&] { DispatchInvoke(&object, member, method, 0, nullptr, nullptr); }, &info),
                  late ? static_cast<HRESULT>(0x80040203U) : E_FAIL);
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(Read(info, &IErrorInfo::GetSource), "Microsoft Excel");
        EXPECT_EQ(Read(info, &IErrorInfo::GetDescription), late ? "late" : "at once");
        EXPECT_EQ(Read(info, &IErrorInfo::GetHelpFile), late ? "(null)" : "xlmain.chm");
        DWORD context = 0;
        GUID guid{};
        info->GetHelpContext(&context);
        info->GetGUID(&guid);
        EXPECT_TRUE(context == 42 && guid == IID_IDispatch);
        EXPECT_EQ(info->Release(), 0U) << "the exception was the only other owner";
    }
}

TEST(Allocations, APlainCallMakesNoneAndAnObjectIsOneBlock) {
    Object object;
    object.Gives(Made(VT_I4, 42));
    const auto application = MakeApplication(static_cast<IDispatch*>(&object));
    const auto range = MakeRange(static_cast<IDispatch*>(&object));
    const support::EmptyPool pool;
    std::size_t before = support::Allocations();
    EXPECT_EQ(range->GetCount(), 42);
    EXPECT_EQ(application->GetTop(), 42.0);
    EXPECT_TRUE(application->GetVisible());
    application->PutVisible(true);
    range->PutValue2(range->GetValue());
    EXPECT_TRUE(range->GetLocked());
    EXPECT_EQ(support::Allocations() - before, 0U);
    object.Gives(Made(VT_DISPATCH, nullptr));
    before = support::Allocations();
    const auto rows = range->GetRows();
    EXPECT_EQ(support::Allocations() - before, 1U);
}

TEST(Allocations, EachOneThatFailsIsAFailureThatLeavesNothing) {
    const support::EmptyPool pool;
    Object object;
    Object child;
    const CStringW text(TEXT("a text that is long enough to be nobody's inner buffer"));
    object.Gives(Made(VT_DISPATCH, static_cast<IDispatch*>(&object)));
    const auto range = MakeRange(static_cast<IDispatch*>(&object));
    const auto names = MakeApplication(static_cast<IDispatch*>(&object))->GetNames();
    object.Gives(Made(VT_DISPATCH, static_cast<IDispatch*>(&child)));
    const std::function<void()> operations[] = {
        [&] { static_cast<void>(range->GetRows()); },
        [&] { static_cast<void>(range->GetItem(1, 2)); },
        [&] {
            child.AddRef();
            static_cast<void>(names->Add(Made(VT_DISPATCH, static_cast<IDispatch*>(&child)), text));
        },
        [&] { range->PutID(text); },
        [&] { range->PutNumberFormat(text); },
    };
    std::size_t faults = 0;
    for (const auto& operation : operations) {
        const std::int64_t before = support::LiveBlocks();
        faults += support::FailEachAllocation(
            [&] {
                try {
                    operation();
                } catch (const std::bad_alloc&) {
                } catch (const _com_error& error) {
                    EXPECT_EQ(error.Error(), E_OUTOFMEMORY);
                }
            },
            [&] {
                EXPECT_EQ(support::LiveBlocks(), before);
                EXPECT_EQ(child.count, 1U);
            });
    }
    EXPECT_GE(faults, 3U) << "the objects' own; Windows takes texts from a heap of its own";

    // An address that can't be read is empty, and a parent that can't be had is none; but want of memory is no
    // refusal of an address.
    object.Gives(Made(VT_DISPATCH, static_cast<IDispatch*>(&object)));
    const auto name = names->GetItem(1);
    EXPECT_NE(name->GetWorksheet(), nullptr);
    {
        const support::AllocationFault fault(1);
        const bool none = name->GetWorksheet() == nullptr;
        EXPECT_TRUE(none && fault.Struck());
    }
    object.Gives(Made(VT_BSTR, SysAllocString(text)));
    bool raised = false;
    {
        const support::AllocationFault fault(1);
        try {
            static_cast<void>(range->GetAddress(true, true, true));
        } catch (const std::bad_alloc&) {
            raised = true;
        }
    }
    EXPECT_TRUE(raised);
}

}  // namespace
