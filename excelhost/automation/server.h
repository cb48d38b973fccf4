// An automation server in memory that plays Excel: it answers the members that an add-in calls, by DISPID
// through IDispatch, refuses what Excel refuses, and keeps books: every call with its arguments, every object
// with its count. It is one apartment: all calls come on one thread.
#pragma once

#include "excelhost/automation/model.h"

#include <deque>
#include <functional>
#include <optional>
#include <unordered_map>
#include <variant>
#include <vector>

namespace excelhost::automation {

class AutomationServer {
  public:
    // One application with one workbook, "Book1", with one sheet, "Sheet1".
    AutomationServer();
    // Objects that clients still hold live on and answer RPC_E_DISCONNECTED.
    ~AutomationServer();
    AutomationServer(const AutomationServer&) = delete;
    AutomationServer& operator=(const AutomationServer&) = delete;

    // What the application holds, to arrange and to look at.
    [[nodiscard]] ApplicationNode& Model() noexcept { return *model_; }
    // The sheet that a fresh server starts with, while its workbook is the first one.
    [[nodiscard]] SheetNode& FirstSheet() noexcept;

    // An automation object over the application or any other node, with one reference that the caller owns.
    [[nodiscard]] IDispatch* NewApplication() { return NewObject(model_); }
    [[nodiscard]] IDispatch* NewObject(std::shared_ptr<Node> node);
    [[nodiscard]] IDispatch* NewRange(SheetNode& sheet, const WCHAR* address);

    // The host that is played.
    bool hasFormula2 = true;      // Range.Formula2 and Formula2Local
    bool hasSpill = true;         // Range.HasSpill, SpillParent and SpillingToRange
    bool busy = false;            // every call is rejected with RPC_E_CALL_REJECTED
    bool offersErrorInfo = true;  // objects answer to ISupportErrorInfo

    // Scripts: what happens instead of a member's own work, the first that fits. The call is recorded all the
    // same.
    static constexpr int everyTime = -1;
    // Refuses calls of the member of the class, or of any class when the name is empty.
    void Refuse(std::string_view objectClass, DISPID dispid, Refusal refusal, int times = everyTime);
    // Answers with a copy of the value, whatever its type.
    void Answer(std::string_view objectClass, DISPID dispid, Variant answer, int times = everyTime);
    // Refuses QueryInterface for the interface.
    void RefuseInterface(REFIID iid, HRESULT result) { refusedInterfaces_.emplace_back(iid, result); }
    // Asked at every call; what it gives is the refusal of that call.
    using Judge = std::function<std::optional<Refusal>(const Invocation&)>;
    void Interpose(Judge judge) { judge_ = std::move(judge); }
    // Takes back all scripts.
    void ClearScripts() noexcept;

    // The record of calls.
    bool recording = true;
    [[nodiscard]] const std::vector<Invocation>& Record() const noexcept { return record_; }
    void ClearRecord() noexcept { record_.clear(); }

    // The account of objects.
    struct LiveObject {
        std::string_view objectClass;
        std::string name;  // as the record shows it, such as "$A$1" of a range
        ULONG count;
        friend bool operator==(const LiveObject&, const LiveObject&) = default;
    };
    // The objects that clients hold, oldest first.
    [[nodiscard]] std::vector<LiveObject> Live() const;
    // The object of this server behind a pointer, or null for a stranger or one that is gone.
    [[nodiscard]] const Object* Find(const IUnknown* object) const noexcept;
    // Calls on objects after their last Release, one line each; the last 256 such objects are watched.
    [[nodiscard]] const std::vector<std::string>& Faults() const noexcept { return faults_; }

  private:
    friend class Object;

    struct Script {
        std::string_view objectClass;
        DISPID dispid;
        std::variant<Refusal, Variant> outcome;
        int times;
    };

    [[nodiscard]] bool Watches() const noexcept { return recording || judge_ != nullptr; }
    [[nodiscard]] std::vector<SentArgument> Describe(const DISPPARAMS& parameters) const;
    [[nodiscard]] bool Offers(const Member& member) const noexcept;
    std::optional<Variant> Scripted(const ObjectClass& objectClass, DISPID dispid, const Invocation* record);
    void Retire(Object& object) noexcept;
    void Fault(const Object& object, std::string_view call) noexcept;

    std::shared_ptr<ApplicationNode> model_;
    std::vector<Script> scripts_;
    std::vector<std::pair<IID, HRESULT>> refusedInterfaces_;
    Judge judge_;
    std::vector<Invocation> record_;
    std::unordered_map<const void*, std::unique_ptr<Object>> live_;
    std::deque<std::unique_ptr<Object>> retired_;
    std::vector<std::string> faults_;
    std::uint64_t objectsMade_ = 0;
};

}  // namespace excelhost::automation
