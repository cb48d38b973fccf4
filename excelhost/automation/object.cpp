#include "excelhost/automation/object.h"

#include "excelhost/automation/server.h"

#include <algorithm>
#include <new>

namespace excelhost::automation {
namespace {

constexpr WORD anyPut = DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;

const VARIANT& Behind(const VARIANT& argument) noexcept {
    return argument.vt == (VT_BYREF | VT_VARIANT) ? *argument.pvarVal : argument;
}

bool IsOmitted(const VARIANT& argument) noexcept {
    const VARIANT& value = Behind(argument);
    return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND;
}

bool IsNamedValue(const DISPPARAMS& parameters) noexcept {
    return parameters.cNamedArgs == 1 && parameters.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
}

Variant InitialValue(const Member& member) {
    switch (member.type) {
        case VT_BSTR:
            return Variant(TextView());
        case VT_BOOL:
            return Variant(member.initial != 0);
        case VT_VARIANT:
            return Variant();
        default:
            return Variant(member.initial).As(member.type);
    }
}

}  // namespace

const Member* ObjectClass::Find(DISPID dispid) const noexcept {
    const auto found = std::ranges::find(members, dispid, &Member::dispid);
    return found == members.end() ? nullptr : &*found;
}

const Member* ObjectClass::Find(TextView member) const noexcept {
    const auto found = std::ranges::find_if(members, [&](const Member& each) {
        return SameName(Text(each.name.begin(), each.name.end()), member);
    });
    return found == members.end() ? nullptr : &*found;
}

Call::Call(AutomationServer& server, Node& node, const Member& member, WORD flags,
           const DISPPARAMS& parameters)
    : server_(server), node_(node), member_(member), parameters_(parameters), named_(parameters.cNamedArgs) {
    if ((flags & member.flags) == 0) throw Refusal::Result(DISP_E_MEMBERNOTFOUND);
    if (named_ != 0 && ((flags & anyPut) == 0 || !IsNamedValue(parameters))) {
        throw Refusal::Result(DISP_E_NONAMEDARGS);
    }
    if ((flags & anyPut) != 0 && named_ == 0) throw Refusal::Result(DISP_E_PARAMNOTOPTIONAL);
    if (parameters.cArgs - named_ > member.parameters) throw Refusal::Result(DISP_E_BADPARAMCOUNT);
}

bool Call::Has(unsigned index) const noexcept {
    return index < parameters_.cArgs - named_ && !IsOmitted(parameters_.rgvarg[Position(index)]);
}

const VARIANT& Call::Argument(unsigned index) const {
    if (!Has(index)) throw Refusal::Result(DISP_E_PARAMNOTOPTIONAL);
    return Behind(parameters_.rgvarg[Position(index)]);
}

Variant Call::Converted(const VARIANT& argument, VARTYPE type, UINT position) const {
    try {
        return Variant(argument).As(type);
    } catch (Refusal& refusal) {
        refusal.argument = position;
        throw;
    }
}

LONG Call::Number(unsigned index) const {
    return Converted(Argument(index), VT_I4, Position(index)).Get().lVal;
}

LONG Call::Number(unsigned index, LONG otherwise) const {
    return Has(index) ? Number(index) : otherwise;
}

bool Call::Flag(unsigned index, bool otherwise) const {
    return Has(index) ? Converted(Argument(index), VT_BOOL, Position(index)).Get().boolVal != VARIANT_FALSE
                      : otherwise;
}

Text Call::Words(unsigned index) const {
    return Text(BstrText(Converted(Argument(index), VT_BSTR, Position(index)).Get()));
}

const VARIANT& Call::Value() const {
    return Behind(parameters_.rgvarg[0]);
}

Variant Call::ValueAs(VARTYPE type) const {
    return Converted(Value(), type, 0);
}

void Call::ReturnObject(std::shared_ptr<Node> node) {
    result_ = Variant::Adopt(node == nullptr ? nullptr : server_.NewObject(std::move(node)));
}

void StoredProperty(Call& call) {
    const Member& member = call.CalledMember();
    auto& stored = call.Self().stored;
    if (call.IsPut()) {
        stored[member.dispid] = member.type == VT_VARIANT ? Variant(call.Value()) : call.ValueAs(member.type);
        return;
    }
    const auto found = stored.find(member.dispid);
    call.Return(found == stored.end() ? InitialValue(member) : found->second);
}

Object::Object(AutomationServer& server, std::shared_ptr<Node> node) noexcept
    : server_(&server), node_(std::move(node)), class_(*node_->objectClass), serial_(++server.objectsMade_) {}

void Object::Orphan() noexcept {
    server_ = nullptr;
    node_.reset();
}

ULONG Object::Hold() noexcept {
    if (count_ == 0 && node_ == nullptr && server_ != nullptr) server_->Fault(*this, "AddRef");
    return ++count_;
}

ULONG Object::Drop() noexcept {
    if (count_ == 0) {
        if (server_ != nullptr) server_->Fault(*this, "Release");
        return 0;
    }
    if (--count_ != 0) return count_;
    if (server_ == nullptr) {
        delete this;
    } else {
        node_.reset();
        server_->Retire(*this);
    }
    return 0;
}

HRESULT Object::Query(REFIID iid, void** object, IUnknown* errorInfo) noexcept {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (server_ == nullptr) return RPC_E_DISCONNECTED;
    if (node_ == nullptr) {
        server_->Fault(*this, "QueryInterface");
        return RPC_E_DISCONNECTED;
    }
    for (const auto& [refused, result] : server_->refusedInterfaces_) {
        if (iid == refused) return result;
    }
    if (iid == IID_IUnknown || iid == IID_IDispatch || (class_.typed != nullptr && iid == *class_.typed)) {
        *object = Interface();
    } else if (iid == IID_ISupportErrorInfo && server_->offersErrorInfo) {
        *object = errorInfo;
    } else {
        return E_NOINTERFACE;
    }
    Hold();
    return S_OK;
}

HRESULT Object::Names(LPOLESTR* names, UINT count, DISPID* dispids) const noexcept {
    std::fill_n(dispids, count, DISPID_UNKNOWN);
    const Member* member = count == 0 ? nullptr : class_.Find(TextView(names[0]));
    if (member == nullptr) return DISP_E_UNKNOWNNAME;
    dispids[0] = member->dispid;
    return count == 1 ? S_OK : DISP_E_UNKNOWNNAME;  // no names for parameters
}

HRESULT Object::Perform(DISPID dispid, WORD flags, LCID lcid, const DISPPARAMS& parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT* argument, bool direct) noexcept {
    if (server_ == nullptr) return RPC_E_DISCONNECTED;
    if (node_ == nullptr) {
        server_->Fault(*this, "Invoke");
        return RPC_E_DISCONNECTED;
    }
    AutomationServer& server = *server_;
    // A call may close the object's own workbook or drop the last reference to this object.
    const std::shared_ptr<Node> keep = node_;
    HRESULT outcome = S_OK;
    Invocation record;
    try {
        try {
            if (server.Watches()) {
                const Member* member = class_.Find(dispid);
                record = {class_.name,
                          member == nullptr ? "" : member->name,
                          dispid,
                          flags,
                          lcid,
                          direct,
                          IsNamedValue(parameters),
                          result != nullptr,
                          server.Describe(parameters),
                          S_OK};
            }
            Run(dispid, flags, parameters, result, server.Watches() ? &record : nullptr);
        } catch (const Refusal& refusal) {
            outcome = refusal.result;
            if (argument != nullptr) *argument = refusal.argument;
            if (outcome == DISP_E_EXCEPTION && exception != nullptr) refusal.Fill(*exception);
        }
        if (server.recording) {
            record.result = outcome;
            server.record_.push_back(std::move(record));
        }
    } catch (const std::bad_alloc&) {
        outcome = E_OUTOFMEMORY;
    }
    return outcome;
}

void Object::Run(DISPID dispid, WORD flags, const DISPPARAMS& parameters, VARIANT* result,
                 Invocation* record) {
    AutomationServer& server = *server_;
    if (server.busy) throw Refusal::Result(RPC_E_CALL_REJECTED);
    std::optional<Variant> answer = server.Scripted(class_, dispid, record);
    if (!answer) {
        if (node_->Gone()) throw Refusal::Result(RPC_E_DISCONNECTED);
        const Member* member = class_.Find(dispid);
        if (member == nullptr || !server.Offers(*member)) throw Refusal::Result(DISP_E_MEMBERNOTFOUND);
        Call call(server, *node_, *member, flags, parameters);
        member->handler(call);
        answer = std::move(call.Result());
    }
    if (result != nullptr) *result = answer->Detach();
}

}  // namespace excelhost::automation
