// DocumentProperties and DocumentProperty of Office: dual interfaces, which clients also call through the
// virtual table. A failure of such a call leaves an error object with the thread.
#include "excelhost/automation/classes.h"
#include "excelhost/automation/server.h"

#include "objectmodel/detail/interfaces.h"

namespace excelhost::automation {
namespace {

constexpr IID iidDocumentProperties{
    0x2DF8D04D, 0x5BFA, 0x101B, {0xBD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0xDE, 0x52}};
constexpr IID iidDocumentProperty{
    0x2DF8D04E, 0x5BFA, 0x101B, {0xBD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0xDE, 0x52}};

constexpr DISPID dispidItem = DISPID_VALUE;
constexpr DISPID dispidValue = DISPID_VALUE;
constexpr DISPID dispidCount = 4;

struct ErrorRecord {
    EXCEPINFO info{};
    ~ErrorRecord() {
        SysFreeString(info.bstrSource);
        SysFreeString(info.bstrDescription);
        SysFreeString(info.bstrHelpFile);
    }
};

// What a late-bound client would read from the EXCEPINFO, as the thread's error object.
void LeaveErrorObject(const EXCEPINFO& info, REFIID iid) {
    ICreateErrorInfo* made = nullptr;
    if (FAILED(CreateErrorInfo(&made))) return;
    made->SetGUID(iid);
    made->SetSource(info.bstrSource);
    made->SetDescription(info.bstrDescription);
    IErrorInfo* readable = nullptr;
    if (SUCCEEDED(made->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&readable)))) {
        SetErrorInfo(0, readable);
        readable->Release();
    }
    made->Release();
}

// Calls through the virtual table go the way of the late-bound ones, and so into the record.
template <class Interface>
class DualObject : public ComObject<Interface> {
  public:
    using ComObject<Interface>::ComObject;

  protected:
    HRESULT Direct(DISPID dispid, WORD flags, LCID lcid, std::span<VARIANT> arguments,
                   VARIANT* result) noexcept {
        DISPID name = DISPID_PROPERTYPUT;
        const bool put = flags == DISPATCH_PROPERTYPUT;
        const DISPPARAMS parameters{arguments.data(), put ? &name : nullptr,
                                    static_cast<UINT>(arguments.size()), put ? 1U : 0U};
        ErrorRecord error;
        const HRESULT outcome =
            this->Perform(dispid, flags, lcid, parameters, result, &error.info, nullptr, true);
        if (outcome != DISP_E_EXCEPTION) return outcome;
        if (error.info.pfnDeferredFillIn != nullptr) error.info.pfnDeferredFillIn(&error.info);
        LeaveErrorObject(error.info, *this->Class().typed);
        return error.info.scode;
    }
    HRESULT DirectObject(DISPID dispid, LCID lcid, std::span<VARIANT> arguments,
                         IDispatch** object) noexcept {
        VARIANT result;
        VariantInit(&result);
        const HRESULT outcome = Direct(dispid, DISPATCH_PROPERTYGET, lcid, arguments, &result);
        *object = SUCCEEDED(outcome) && result.vt == VT_DISPATCH ? result.pdispVal : nullptr;
        return outcome;
    }
};

class DocumentPropertyObject final : public DualObject<IDocumentProperty> {
  public:
    using DualObject::DualObject;

    HRESULT STDMETHODCALLTYPE get_Value(LCID lcid, VARIANT* value) noexcept override {
        VariantInit(value);
        return Direct(dispidValue, DISPATCH_PROPERTYGET, lcid, {}, value);
    }
    HRESULT STDMETHODCALLTYPE put_Value(LCID lcid, VARIANT value) noexcept override {
        return Direct(dispidValue, DISPATCH_PROPERTYPUT, lcid, {&value, 1}, nullptr);
    }

    HRESULT STDMETHODCALLTYPE get_Parent(IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Delete() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Name(LCID, BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Name(LCID, BSTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Type(LCID, INT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Type(LCID, INT) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_LinkToContent(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_LinkToContent(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_LinkSource(BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_LinkSource(BSTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Application(IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Creator(LONG*) noexcept override { return E_NOTIMPL; }
};

class DocumentPropertiesObject final : public DualObject<IDocumentProperties> {
  public:
    using DualObject::DualObject;

    HRESULT STDMETHODCALLTYPE get_Item(VARIANT index, LCID lcid,
                                       IDocumentProperty** property) noexcept override {
        IDispatch* object = nullptr;
        const HRESULT outcome = DirectObject(dispidItem, lcid, {&index, 1}, &object);
        *property = static_cast<IDocumentProperty*>(object);
        return outcome;
    }

    HRESULT STDMETHODCALLTYPE get_Parent(IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Count(LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Add(BSTR, VARIANT_BOOL, VARIANT, VARIANT, VARIANT, LCID,
                                  IDocumentProperty**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get__NewEnum(IUnknown**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Application(IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Creator(LONG*) noexcept override { return E_NOTIMPL; }
};

void PropertyValue(Call& call) {
    auto& property = call.As<DocumentPropertyNode>();
    if (!call.IsPut()) return call.Return(property.value);
    property.value = Variant(call.Value());
}

const Member documentPropertiesMembers[] = {
    {dispidItem, "Item", getOnly, TakeItem, 1},
    {dispidCount, "Count", getOnly, CountItems},
};

const Member documentPropertyMembers[] = {
    {dispidValue, "Value", getPut, PropertyValue},
};

template <class Kind>
std::unique_ptr<Object> Make(AutomationServer& server, std::shared_ptr<Node> node) {
    return std::make_unique<Kind>(server, std::move(node));
}

}  // namespace

const ObjectClass documentPropertiesClass{"DocumentProperties", &iidDocumentProperties,
                                          documentPropertiesMembers, &Make<DocumentPropertiesObject>};
const ObjectClass documentPropertyClass{"DocumentProperty", &iidDocumentProperty, documentPropertyMembers,
                                        &Make<DocumentPropertyObject>};

}  // namespace excelhost::automation
