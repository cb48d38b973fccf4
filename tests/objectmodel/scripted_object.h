// An automation object that a test scripts: it notes each call, answers as it is told and counts references.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace scripted {

// An argument by type and value, as in "I4 5" or "BSTR abc".
inline std::string Shown(const VARIANT& variant) {
    char text[64];
    switch (variant.vt) {
        case VT_EMPTY:
            return "EMPTY";
        case VT_I1:
            return "I1 " + std::to_string(static_cast<signed char>(variant.cVal));
        case VT_UI1:
            return "UI1 " + std::to_string(variant.bVal);
        case VT_I2:
            return "I2 " + std::to_string(variant.iVal);
        case VT_UI2:
            return "UI2 " + std::to_string(variant.uiVal);
        case VT_I4:
            return "I4 " + std::to_string(variant.lVal);
        case VT_UI4:
            return "UI4 " + std::to_string(variant.ulVal);
        case VT_INT:
            return "INT " + std::to_string(variant.intVal);
        case VT_UINT:
            return "UINT " + std::to_string(variant.uintVal);
        case VT_I8:
            return "I8 " + std::to_string(variant.llVal);
        case VT_UI8:
            return "UI8 " + std::to_string(variant.ullVal);
        case VT_CY:
            return "CY " + std::to_string(variant.cyVal.int64);
        case VT_BOOL:
            return "BOOL " + std::to_string(variant.boolVal);
        case VT_DECIMAL:
            return "DECIMAL " + std::to_string(variant.decVal.Lo64);
        case VT_R4:
        case VT_R8:
        case VT_DATE:
            std::snprintf(text, sizeof text, "%s %g",
                          variant.vt == VT_R8   ? "R8"
                          : variant.vt == VT_R4 ? "R4"
                                                : "DATE",
                          variant.dblVal);
            return text;
        case VT_ERROR:
            std::snprintf(text, sizeof text, "ERROR %08X", static_cast<unsigned>(variant.scode));
            return text;
        case VT_BSTR:
            if (!variant.bstrVal) return "BSTR null";
            return "BSTR " + std::string(variant.bstrVal, variant.bstrVal + SysStringLen(variant.bstrVal));
        case VT_DISPATCH:
            return variant.pdispVal ? "DISPATCH object" : "DISPATCH null";
        case VT_UNKNOWN:
            return variant.punkVal ? "UNKNOWN object" : "UNKNOWN null";
        default:
            std::snprintf(text, sizeof text, "type %04X", variant.vt);
            return text;
    }
}

struct Call {
    DISPID dispid;
    WORD flags;
    LCID locale;
    bool wantsResult;
    std::vector<VARIANT> raw;            // as they came, last first; what they point to may be gone
    std::vector<std::string> arguments;  // in the published order
    std::vector<DISPID> named;           // the names of the first in the raw order
};

using Answer = std::function<HRESULT(VARIANT* result, EXCEPINFO* exception)>;

class Object final : public IDispatch {
  public:
    // Owned by the test, which holds the one reference that must be left at the end.
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() { EXPECT_EQ(count, 1U) << "a reference was lost or given back twice"; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        queries.push_back(iid);
        *object = nullptr;
        if (FAILED(queryFailure)) return queryFailure;
        if (iid == IID_ISupportErrorInfo && supportsErrorInfo) {
            *object = static_cast<ISupportErrorInfo*>(&support);
        } else if (iid == IID_IUnknown || iid == IID_IDispatch || HasInterface(iid)) {
            *object = static_cast<IDispatch*>(this);
        } else {
            return E_NOINTERFACE;
        }
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
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispid, REFIID reserved, LCID locale, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argument) override {
        EXPECT_TRUE(reserved == IID_NULL);
        EXPECT_TRUE(argument && *argument == static_cast<UINT>(-1));
        EXPECT_TRUE(!result || result->vt == VT_EMPTY);
        EXPECT_TRUE(exception && !exception->wCode && !exception->bstrSource &&
                    !exception->pfnDeferredFillIn);
        EXPECT_GT(count, 0U) << "a call on an object that was given back";
        Call& call = calls.emplace_back(Call{dispid, flags, locale, result != nullptr, {}, {}, {}});
        call.raw.assign(parameters->rgvarg, parameters->rgvarg + parameters->cArgs);
        for (auto each = call.raw.rbegin(); each != call.raw.rend(); ++each)
            call.arguments.push_back(Shown(*each));
        call.named.assign(parameters->rgdispidNamedArgs,
                          parameters->rgdispidNamedArgs + parameters->cNamedArgs);

        const auto found = answers.find(dispid);
        const Answer& answer = found != answers.end() ? found->second : otherwise;
        return answer ? answer(result, exception) : S_OK;
    }

    ULONG count = 1;
    std::vector<IID> interfaces;  // those it has beside IUnknown and IDispatch
    HRESULT queryFailure = S_OK;  // what each QueryInterface fails with
    bool supportsErrorInfo = false;
    std::map<DISPID, Answer> answers;
    Answer otherwise;  // to all other DISPIDs; none is success with nothing
    std::vector<Call> calls;
    std::vector<IID> queries;

  private:
    struct Support final : ISupportErrorInfo {
        explicit Support(Object& whole) : object(whole) {}
        virtual ~Support() = default;
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override {
            return object.QueryInterface(iid, result);
        }
        ULONG STDMETHODCALLTYPE AddRef() override { return object.AddRef(); }
        ULONG STDMETHODCALLTYPE Release() override { return object.Release(); }
        HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override {
            return object.HasInterface(iid) ? S_OK : S_FALSE;
        }
        Object& object;
    };

    [[nodiscard]] bool HasInterface(REFIID iid) const {
        for (const IID& each : interfaces) {
            if (each == iid) return true;
        }
        return false;
    }

    Support support{*this};
};

// An object that keeps no notes, so that a call of it allocates nothing but its answer.
class PlainObject final : public IDispatch {
  public:
    explicit PlainObject(Answer everything) : answer(std::move(everything)) {}
    PlainObject(const PlainObject&) = delete;
    PlainObject& operator=(const PlainObject&) = delete;
    virtual ~PlainObject() { EXPECT_EQ(count, 1U) << "a reference was lost or given back twice"; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        ++count;
        *object = static_cast<IDispatch*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++count; }
    ULONG STDMETHODCALLTYPE Release() override { return --count; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result,
                                     EXCEPINFO* exception, UINT*) override {
        ++calls;
        return answer(result, exception);
    }

    Answer answer;
    ULONG count = 1;
    int calls = 0;
};

// Answers. A text is made anew for each call, an object gets a reference for each.
inline Answer Gives(const VARIANT& value) {
    return [value](VARIANT* result, EXCEPINFO*) {
        if (result) *result = value;
        return S_OK;
    };
}
template <class Set>
VARIANT Make(VARTYPE type, Set set) {
    VARIANT value{};
    set(value);
    value.vt = type;
    return value;
}
inline VARIANT Empty(VARTYPE type = VT_EMPTY) {
    return Make(type, [](VARIANT&) {});
}
inline VARIANT I4(LONG number) {
    return Make(VT_I4, [&](VARIANT& v) { v.lVal = number; });
}
inline VARIANT R8(double number) {
    return Make(VT_R8, [&](VARIANT& v) { v.dblVal = number; });
}
inline VARIANT Bool(VARIANT_BOOL word) {
    return Make(VT_BOOL, [&](VARIANT& v) { v.boolVal = word; });
}
inline VARIANT NewText(const WCHAR* text) {
    return Make(VT_BSTR, [&](VARIANT& v) { v.bstrVal = SysAllocString(text); });
}
inline Answer GivesText(const WCHAR* text) {
    return [text](VARIANT* result, EXCEPINFO*) {
        if (result) *result = NewText(text);
        return S_OK;
    };
}
template <class Kind>
Answer GivesObject(Kind& object, VARTYPE type = VT_DISPATCH) {
    return [&object, type](VARIANT* result, EXCEPINFO*) {
        if (!result) return S_OK;
        object.AddRef();
        result->vt = type;
        if (type == VT_UNKNOWN) {
            result->punkVal = static_cast<IDispatch*>(&object);
        } else {
            result->pdispVal = &object;
        }
        return S_OK;
    };
}
inline Answer Fails(HRESULT hresult) {
    return [hresult](VARIANT*, EXCEPINFO*) { return hresult; };
}

}  // namespace scripted
