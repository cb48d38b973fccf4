#include "objectmodel/dispatch.h"

#include <string>

#include "objectmodel/com_ptr.h"

constinit const VARIANT MissingArgument = [] {
    VARIANT missing{};
    missing.vt = VT_ERROR;
    missing.scode = DISP_E_PARAMNOTFOUND;
    return missing;
}();

namespace kestrolumen {

// Reads arguments by the rules of their parameter types.
class ArgumentEncoder {
  public:
    // Stores the argument in a zero-filled VARIANT.
    static HRESULT Encode(VARTYPE type, const DispatchArgument& argument, VARIANT& variant) noexcept;

  private:
    using Kind = DispatchArgument::Kind;

    [[nodiscard]] static bool Takes(VARTYPE type, Kind kind) noexcept;
    static void EncodeWhole(VARTYPE type, std::int64_t whole, VARIANT& variant) noexcept;
    static HRESULT EncodePointer(VARTYPE type, const void* pointer, VARIANT& variant) noexcept;
};

// Whether an argument of that kind fits a parameter of that type; false for a type that has no rule.
bool ArgumentEncoder::Takes(VARTYPE type, Kind kind) noexcept {
    const bool isNull = kind == Kind::Null;
    if (type & VT_BYREF) {
        const Kind wanted = type == (VT_BYREF | VT_VARIANT)   ? Kind::Variant
                            : type == (VT_BYREF | VT_DECIMAL) ? Kind::Decimal
                                                              : Kind::Variable;
        return kind == wanted || isNull;
    }
    if (type & VT_ARRAY) return kind == Kind::Array || isNull;
    switch (type) {
        case VT_I1:
        case VT_UI1:
        case VT_I2:
        case VT_UI2:
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_I8:
        case VT_UI8:
        case VT_CY:
        case VT_ERROR:
        case VT_BOOL:
            return kind == Kind::Whole;
        case VT_R4:
        case VT_R8:
        case VT_DATE:
            return kind == Kind::Floating;
        case VT_BSTR:
            return kind == Kind::Text || isNull;
        case VT_DISPATCH:
            return kind == Kind::Dispatch || isNull;
        case VT_UNKNOWN:
            return kind == Kind::Unknown || kind == Kind::Dispatch || isNull;
        case VT_DECIMAL:
            return kind == Kind::Decimal || isNull;
        case VT_VARIANT:
            return kind == Kind::Variant || isNull;
        default:
            return false;
    }
}

void ArgumentEncoder::EncodeWhole(VARTYPE type, std::int64_t whole, VARIANT& variant) noexcept {
    switch (type) {
        case VT_I1:
        case VT_UI1:
            variant.bVal = static_cast<BYTE>(whole);
            break;
        case VT_I2:
        case VT_UI2:
            variant.iVal = static_cast<SHORT>(whole);
            break;
        case VT_BOOL:
            variant.boolVal = whole != 0 ? VARIANT_TRUE : VARIANT_FALSE;
            break;
        case VT_CY:
        case VT_I8:
        case VT_UI8:
            variant.llVal = whole;
            break;
        default:
            variant.lVal = static_cast<LONG>(whole);
    }
}

HRESULT ArgumentEncoder::EncodePointer(VARTYPE type, const void* pointer, VARIANT& variant) noexcept {
    if (type == VT_VARIANT || type == VT_DECIMAL) {
        if (!pointer) return E_POINTER;
        if (type == VT_VARIANT) {
            variant = *static_cast<const VARIANT*>(pointer);
        } else {
            variant.decVal = *static_cast<const DECIMAL*>(pointer);
            variant.vt = VT_DECIMAL;
        }
    } else {
        variant.byref = const_cast<void*>(pointer);
    }
    return S_OK;
}

HRESULT ArgumentEncoder::Encode(VARTYPE type, const DispatchArgument& argument, VARIANT& variant) noexcept {
    if (!Takes(type, argument.kind)) return E_INVALIDARG;
    variant.vt = type;
    switch (argument.kind) {
        case Kind::Whole:
            EncodeWhole(type, argument.whole, variant);
            return S_OK;
        case Kind::Floating:
            variant.vt = type == VT_R4 ? VARTYPE{VT_R8} : type;
            variant.dblVal = argument.floating;
            return S_OK;
        default:
            return EncodePointer(type, argument.pointer, variant);
    }
}

}  // namespace kestrolumen

namespace {

using namespace kestrolumen;

// An argument list as Invoke takes it: the last parameter first, and in a put the value named.
class ArgumentList {
  public:
    ArgumentList(const WCHAR* parameterTypes, std::span<VARIANT> room, bool isPut) noexcept
        : types(parameterTypes), variants(room), put(isPut) {}

    HRESULT LayOut(std::span<const DispatchArgument> arguments) noexcept {
        const std::size_t count = variants.size();
        for (std::size_t i = 0; i < count; ++i) {
            VARIANT& variant = variants[count - 1 - i];
            variant = VARIANT{};
            const auto type = static_cast<VARTYPE>(types[i] & ~OptionalParameter);
            if (const HRESULT hresult = ArgumentEncoder::Encode(type, arguments[i], variant);
                FAILED(hresult)) {
                return hresult;
            }
        }
        return S_OK;
    }

    // Shortens the list by the omitted arguments that nothing follows; the value of a put moves up behind
    // them.
    void DropOmitted() noexcept {
        const std::size_t count = variants.size();
        const std::size_t firstPositional = put ? 1 : 0;
        std::size_t first = firstPositional;
        while (first < count && IsOmitted(types[count - 1 - first], variants[first])) ++first;
        if (first == firstPositional) return;
        if (put) variants[--first] = variants[0];
        variants = variants.subspan(first);
    }

    [[nodiscard]] DISPPARAMS Parameters() noexcept {
        DISPPARAMS parameters{};
        parameters.rgvarg = variants.data();
        parameters.cArgs = static_cast<UINT>(variants.size());
        if (put) {
            parameters.rgdispidNamedArgs = &valueName;
            parameters.cNamedArgs = 1;
        }
        return parameters;
    }

  private:
    [[nodiscard]] static bool IsOmitted(WCHAR type, const VARIANT& variant) noexcept {
        if ((type & ~VT_BYREF) != (OptionalParameter | VT_VARIANT)) return false;
        const VARIANT* const argument = type & VT_BYREF ? variant.pvarVal : &variant;
        return argument && argument->vt == VT_ERROR && argument->scode == DISP_E_PARAMNOTFOUND;
    }

    const WCHAR* types;
    std::span<VARIANT> variants;
    bool put;
    DISPID valueName = DISPID_PROPERTYPUT;
};

[[noreturn]] void Raise(HRESULT hresult, ComPtr<IErrorInfo> errorInfo) {
    throw _com_error(hresult, errorInfo.release());
}

// The texts of an EXCEPINFO that Invoke filled.
class ExceptionTexts {
  public:
    explicit ExceptionTexts(const EXCEPINFO& filled) noexcept : exception(filled) {}
    ExceptionTexts(const ExceptionTexts&) = delete;
    ExceptionTexts& operator=(const ExceptionTexts&) = delete;
    ~ExceptionTexts() {
        SysFreeString(exception.bstrSource);
        SysFreeString(exception.bstrDescription);
        SysFreeString(exception.bstrHelpFile);
    }

  private:
    const EXCEPINFO& exception;
};

// The error object that says what the EXCEPINFO says; null when none can be made.
ComPtr<IErrorInfo> ErrorInfoFrom(const EXCEPINFO& exception) noexcept {
    ComPtr<ICreateErrorInfo> writer;
    if (FAILED(CreateErrorInfo(writer.receive()))) return nullptr;
    writer->SetGUID(IID_IDispatch);
    if (exception.bstrSource) writer->SetSource(exception.bstrSource);
    if (exception.bstrDescription) writer->SetDescription(exception.bstrDescription);
    if (exception.bstrHelpFile) writer->SetHelpFile(exception.bstrHelpFile);
    writer->SetHelpContext(exception.dwHelpContext);

    void* reader = nullptr;
    if (FAILED(writer->QueryInterface(IID_IErrorInfo, &reader))) return nullptr;
    return ComPtr<IErrorInfo>::Adopt(static_cast<IErrorInfo*>(reader));
}

// A server that reports an exception without a failure in it has failed nevertheless.
HRESULT HresultFrom(const EXCEPINFO& exception) noexcept {
    if (exception.wCode != 0) return _com_error::WCodeToHRESULT(exception.wCode);
    return FAILED(exception.scode) ? exception.scode : DISP_E_EXCEPTION;
}

[[noreturn]] void RaiseInvokeFailure(HRESULT hresult, EXCEPINFO& exception) {
    if (hresult == DISP_E_EXCEPTION && exception.pfnDeferredFillIn) exception.pfnDeferredFillIn(&exception);
    const ExceptionTexts texts(exception);
    if (hresult != DISP_E_EXCEPTION) IssueError(hresult);
    Raise(HresultFrom(exception), ErrorInfoFrom(exception));
}

// Turns the result into `type` and stores it; the result is the caller's to clear when that fails.
HRESULT StoreResult(VARIANT& value, VARTYPE type, void* result) noexcept {
    if (type != VT_VARIANT && type != value.vt) {
        const HRESULT hresult = VariantChangeType(&value, &value, 0, type);
        if (FAILED(hresult)) return hresult;
    }
    switch (type) {
        case VT_VARIANT:
            if (result) *static_cast<VARIANT*>(result) = value;
            break;
        case VT_BOOL:
            if (result) *static_cast<VARIANT_BOOL*>(result) = value.boolVal;
            break;
        case VT_I4:
            if (result) *static_cast<LONG*>(result) = value.lVal;
            break;
        case VT_R4:
            if (result) *static_cast<float*>(result) = value.fltVal;
            break;
        case VT_R8:
            if (result) *static_cast<double*>(result) = value.dblVal;
            break;
        case VT_BSTR:
            if (result) *static_cast<BSTR*>(result) = value.bstrVal;
            break;
        case VT_DISPATCH:
            if (result) *static_cast<IDispatch**>(result) = value.pdispVal;
            break;
        default:
            return E_INVALIDARG;
    }
    if (!result) VariantClear(&value);
    return S_OK;
}

bool IsPut(WORD flags) noexcept {
    return (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
}

// The call with its arguments laid out, and what follows it.
HRESULT Invoke(IDispatch* dispatch, DISPID dispid, WORD flags, DISPPARAMS parameters, VARTYPE resultType,
               void* result) {
    VARIANT value{};
    EXCEPINFO exception{};
    UINT badArgument = static_cast<UINT>(-1);
    const HRESULT hresult = dispatch->Invoke(dispid, IID_NULL, 0, flags, &parameters,
                                             resultType ? &value : nullptr, &exception, &badArgument);
    if (FAILED(hresult)) {
        VariantClear(&value);
        RaiseInvokeFailure(hresult, exception);
    }
    if (resultType) {
        if (const HRESULT stored = StoreResult(value, resultType, result); FAILED(stored)) {
            VariantClear(&value);
            IssueError(stored);
        }
    }
    return hresult;
}

}  // namespace

HRESULT DispatchInvoke(IDispatch* dispatch, DISPID dispid, WORD flags, VARTYPE resultType, void* result) {
    if (!dispatch) IssueError(E_POINTER);
    if (IsPut(flags)) IssueError(E_INVALIDARG);
    return Invoke(dispatch, dispid, flags, DISPPARAMS{}, resultType, result);
}

HRESULT DispatchInvokeV(IDispatch* dispatch, DISPID dispid, WORD flags, VARTYPE resultType, void* result,
                        const WCHAR* parameterTypes, std::span<const DispatchArgument> arguments,
                        std::span<VARIANT> room) {
    if (!dispatch) IssueError(E_POINTER);
    const std::size_t count = parameterTypes ? std::char_traits<WCHAR>::length(parameterTypes) : 0;
    if (count != arguments.size() || count != room.size()) IssueError(E_INVALIDARG);
    if (count == 0) return DispatchInvoke(dispatch, dispid, flags, resultType, result);

    ArgumentList list(parameterTypes, room, IsPut(flags));
    if (const HRESULT hresult = list.LayOut(arguments); FAILED(hresult)) IssueError(hresult);
    list.DropOmitted();
    return Invoke(dispatch, dispid, flags, list.Parameters(), resultType, result);
}

void IssueError(HRESULT hresult) {
    throw _com_error(hresult);
}

void IssueErrorEx(HRESULT hresult, IUnknown* object, REFIID iid) {
    ComPtr<IErrorInfo> errorInfo;
    void* supporter = nullptr;
    if (object && SUCCEEDED(object->QueryInterface(IID_ISupportErrorInfo, &supporter))) {
        const auto support = ComPtr<ISupportErrorInfo>::Adopt(static_cast<ISupportErrorInfo*>(supporter));
        if (support->InterfaceSupportsErrorInfo(iid) == S_OK) GetErrorInfo(0, errorInfo.receive());
    }
    Raise(hresult, std::move(errorInfo));
}
