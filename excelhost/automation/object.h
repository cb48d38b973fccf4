// The one kind of automation object: a node of the model, seen through its class's table of members.
#pragma once

#include "excelhost/automation/invocation.h"
#include "excelhost/automation/refusal.h"

#include <map>
#include <memory>
#include <span>

namespace excelhost::automation {

class AutomationServer;
class Call;
class Object;
struct Node;
struct ObjectClass;

// A member of a class: how it may be called, how many arguments it takes, and what it does.
struct Member {
    using Handler = void (*)(Call&);

    DISPID dispid;
    unsigned parameters = 0;  // at most so many, a put's value not counted
    std::string_view name;
    Handler handler;
    double initial = 0;
    WORD flags;               // the DISPATCH_ flags under which it answers
    VARTYPE type = VT_EMPTY;  // of a stored property

    // A member with logic of its own.
    constexpr Member(DISPID id, std::string_view published, WORD allowed, Handler run, unsigned most = 0)
        : dispid(id), parameters(most), name(published), handler(run), flags(allowed) {}
    // A property that keeps what was put, in the type given.
    constexpr Member(DISPID id, std::string_view published, WORD allowed, VARTYPE stored, double first = 0);
};

inline constexpr WORD callOnly = DISPATCH_METHOD;
inline constexpr WORD getOnly = DISPATCH_PROPERTYGET;
inline constexpr WORD getPut = DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT;
inline constexpr WORD putOnly = DISPATCH_PROPERTYPUT;

// The usual object: IDispatch and nothing beside it.
[[nodiscard]] std::unique_ptr<Object> MakeObject(AutomationServer& server, std::shared_ptr<Node> node);

struct ObjectClass {
    std::string_view name;
    const IID* typed;  // the interface beside IUnknown and IDispatch that its objects answer to, or null
    std::span<const Member> members;
    // Makes the COM object over a node, without a reference yet.
    std::unique_ptr<Object> (*make)(AutomationServer&, std::shared_ptr<Node>) = &MakeObject;

    [[nodiscard]] const Member* Find(DISPID dispid) const noexcept;
    [[nodiscard]] const Member* Find(TextView member) const noexcept;
};

// What an automation object stands for. Nodes live on in the model when no client holds an object.
struct Node : std::enable_shared_from_this<Node> {
    explicit Node(const ObjectClass& itsClass) : objectClass(&itsClass) {}
    virtual ~Node() = default;
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    // The word by which a collection finds it, and that the record shows.
    [[nodiscard]] virtual Text Name() const { return {}; }
    // Closed or deleted, by itself or with what it belongs to: its objects answer RPC_E_DISCONNECTED.
    [[nodiscard]] virtual bool Gone() const noexcept { return gone; }

    const ObjectClass* objectClass;
    bool gone = false;
    std::map<DISPID, Variant> stored;  // what was put into stored properties
};

// One call on its way through a handler: typed access to the arguments, and the result.
// The accessors throw a Refusal for an argument that is missing or of a wrong type.
class Call {
  public:
    Call(AutomationServer& server, Node& node, const Member& member, WORD flags,
         const DISPPARAMS& parameters);

    [[nodiscard]] AutomationServer& Server() const noexcept { return server_; }
    [[nodiscard]] const Member& CalledMember() const noexcept { return member_; }
    [[nodiscard]] Node& Self() const noexcept { return node_; }
    template <class Kind>
    [[nodiscard]] Kind& As() const noexcept {
        return static_cast<Kind&>(node_);
    }

    [[nodiscard]] bool IsPut() const noexcept { return named_ != 0; }
    // Positional arguments, in published order. One that was omitted counts as absent.
    [[nodiscard]] bool Has(unsigned index) const noexcept;
    [[nodiscard]] const VARIANT& Argument(unsigned index) const;
    [[nodiscard]] LONG Number(unsigned index) const;
    [[nodiscard]] LONG Number(unsigned index, LONG otherwise) const;
    [[nodiscard]] bool Flag(unsigned index, bool otherwise) const;
    [[nodiscard]] Text Words(unsigned index) const;
    // The value of a put.
    [[nodiscard]] const VARIANT& Value() const;
    [[nodiscard]] Variant ValueAs(VARTYPE type) const;

    void Return(Variant value) noexcept { result_ = std::move(value); }
    // An object over the node, or a null object.
    void ReturnObject(std::shared_ptr<Node> node);
    [[nodiscard]] Variant& Result() noexcept { return result_; }

  private:
    [[nodiscard]] Variant Converted(const VARIANT& argument, VARTYPE type, UINT position) const;
    [[nodiscard]] UINT Position(unsigned index) const noexcept { return parameters_.cArgs - 1 - index; }

    AutomationServer& server_;
    Node& node_;
    const Member& member_;
    const DISPPARAMS& parameters_;
    UINT named_;
    Variant result_;
};

// The handler of stored properties.
void StoredProperty(Call& call);

constexpr Member::Member(DISPID id, std::string_view published, WORD allowed, VARTYPE stored, double first)
    : dispid(id), name(published), handler(&StoredProperty), initial(first), flags(allowed), type(stored) {}

// The part of an object that doesn't depend on its interface: the count, the class, the way of a call.
// When the count falls to 0 the server keeps the shell for a while, so that a call on it is seen as a fault.
class Object {
  public:
    Object(AutomationServer& server, std::shared_ptr<Node> node) noexcept;
    virtual ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    [[nodiscard]] virtual IDispatch* Interface() noexcept = 0;
    [[nodiscard]] const ObjectClass& Class() const noexcept { return class_; }
    [[nodiscard]] ULONG Count() const noexcept { return count_; }
    [[nodiscard]] Node* Model() const noexcept { return node_.get(); }
    // Counts the objects of the server in the order of their making.
    [[nodiscard]] std::uint64_t Serial() const noexcept { return serial_; }

    // The server goes away while clients still hold the object: from now on it answers RPC_E_DISCONNECTED.
    void Orphan() noexcept;

  protected:
    ULONG Hold() noexcept;
    ULONG Drop() noexcept;
    HRESULT Query(REFIID iid, void** object, IUnknown* errorInfo) noexcept;
    HRESULT Names(LPOLESTR* names, UINT count, DISPID* dispids) const noexcept;
    HRESULT Perform(DISPID dispid, WORD flags, LCID lcid, const DISPPARAMS& parameters, VARIANT* result,
                    EXCEPINFO* exception, UINT* argument, bool direct) noexcept;

  private:
    void Run(DISPID dispid, WORD flags, const DISPPARAMS& parameters, VARIANT* result, Invocation* record);

    AutomationServer* server_;
    std::shared_ptr<Node> node_;
    const ObjectClass& class_;
    const std::uint64_t serial_;
    ULONG count_ = 0;
};

// The COM side, once for all classes: `Derived` is IDispatch or an interface that extends it.
template <class Derived>
class ComObject : public Derived, public ISupportErrorInfo, public Object {
  public:
    using Object::Object;

    IDispatch* Interface() noexcept override { return static_cast<Derived*>(this); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override {
        return Query(iid, object, static_cast<ISupportErrorInfo*>(this));
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return Hold(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return Drop(); }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** info) noexcept override {
        *info = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) noexcept override {
        return Names(names, count, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispid, REFIID iid, LCID lcid, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception,
                                     UINT* argument) noexcept override {
        if (iid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        if (parameters == nullptr) return E_INVALIDARG;
        return Perform(dispid, flags, lcid, *parameters, result, exception, argument, false);
    }

    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) noexcept override {
        return Class().typed != nullptr && iid == *Class().typed ? S_OK : S_FALSE;
    }
};

}  // namespace excelhost::automation
