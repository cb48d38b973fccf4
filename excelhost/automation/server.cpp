#include "excelhost/automation/server.h"

#include "excelhost/automation/classes.h"
#include "excelhost/numbers.h"

#include <algorithm>
#include <cstdio>
#include <new>

namespace excelhost::automation {
namespace {

constexpr std::size_t watchedShells = 256;

std::string HexText(SCODE code) {
    char text[16];
    (void)std::snprintf(text, sizeof(text), "0x%08lX",
                        static_cast<unsigned long>(static_cast<std::uint32_t>(code)));
    return text;
}

std::string DescribeObject(const AutomationServer& server, const IDispatch* object) {
    if (object == nullptr) return "DISPATCH null";
    const Object* known = server.Find(object);
    if (known == nullptr) return "DISPATCH stranger";
    std::string text = "DISPATCH " + std::string(known->Class().name);
    const std::string name = Utf8(known->Model()->Name());
    return name.empty() ? text : text + ' ' + name;
}

std::string DescribeValue(const AutomationServer& server, const VARIANT& value) {
    switch (value.vt) {
        case VT_EMPTY:
            return "EMPTY";
        case VT_NULL:
            return "NULL";
        case VT_I2:
            return "I2 " + std::to_string(value.iVal);
        case VT_I4:
            return "I4 " + std::to_string(value.lVal);
        case VT_INT:
            return "INT " + std::to_string(value.intVal);
        case VT_R4:
            return "R4 " + NumberText(static_cast<double>(value.fltVal));
        case VT_R8:
            return "R8 " + NumberText(value.dblVal);
        case VT_BSTR:
            return "BSTR " + Utf8(BstrText(value));
        case VT_DISPATCH:
            return DescribeObject(server, value.pdispVal);
        case VT_BOOL:
            if (value.boolVal == VARIANT_TRUE) return "BOOL true";
            return value.boolVal == VARIANT_FALSE ? "BOOL false" : "BOOL " + std::to_string(value.boolVal);
        case VT_ERROR:
            return value.scode == DISP_E_PARAMNOTFOUND ? "missing" : "ERROR " + HexText(value.scode);
        case VT_BYREF | VT_VARIANT:
            return "BYREF " + DescribeValue(server, *value.pvarVal);
        default:
            return "type " + std::to_string(value.vt);
    }
}

}  // namespace

AutomationServer::AutomationServer() : model_(std::make_shared<ApplicationNode>()) {
    model_->AddWorkbook(TEXT("Book1"));
}

AutomationServer::~AutomationServer() {
    for (auto& [identity, object] : live_) object.release()->Orphan();
}

SheetNode& AutomationServer::FirstSheet() noexcept {
    return static_cast<SheetNode&>(*static_cast<WorkbookNode&>(*model_->workbooks.front()).sheets.front());
}

IDispatch* AutomationServer::NewObject(std::shared_ptr<Node> node) {
    const auto make = node->objectClass->make;
    std::unique_ptr<Object> object = make(*this, std::move(node));
    IDispatch* pointer = object->Interface();
    live_.emplace(static_cast<IUnknown*>(pointer), std::move(object));
    pointer->AddRef();
    return pointer;
}

IDispatch* AutomationServer::NewRange(SheetNode& sheet, const WCHAR* address) {
    auto parsed = ParseAddress(address, sheet.Limits());
    if (!parsed) throw Refusal::Exception(TEXT("The address can't be read."));
    return NewObject(std::make_shared<RangeNode>(sheet, std::move(parsed->areas)));
}

void AutomationServer::Refuse(std::string_view objectClass, DISPID dispid, Refusal refusal, int times) {
    scripts_.push_back({objectClass, dispid, std::move(refusal), times});
}

void AutomationServer::Answer(std::string_view objectClass, DISPID dispid, Variant answer, int times) {
    scripts_.push_back({objectClass, dispid, std::move(answer), times});
}

void AutomationServer::ClearScripts() noexcept {
    scripts_.clear();
    refusedInterfaces_.clear();
    judge_ = nullptr;
    busy = false;
}

std::vector<AutomationServer::LiveObject> AutomationServer::Live() const {
    std::vector<const Object*> objects;
    objects.reserve(live_.size());
    for (const auto& [identity, object] : live_) objects.push_back(object.get());
    std::ranges::sort(objects, {}, &Object::Serial);
    std::vector<LiveObject> live;
    live.reserve(objects.size());
    for (const Object* object : objects) {
        live.push_back({object->Class().name, Utf8(object->Model()->Name()), object->Count()});
    }
    return live;
}

const Object* AutomationServer::Find(const IUnknown* object) const noexcept {
    const auto found = live_.find(object);
    return found == live_.end() ? nullptr : found->second.get();
}

std::vector<SentArgument> AutomationServer::Describe(const DISPPARAMS& parameters) const {
    std::vector<SentArgument> arguments;
    arguments.reserve(parameters.cArgs);
    for (UINT i = parameters.cArgs; i-- > 0;) {
        arguments.push_back({parameters.rgvarg[i].vt, DescribeValue(*this, parameters.rgvarg[i])});
    }
    return arguments;
}

bool AutomationServer::Offers(const Member& member) const noexcept {
    const bool formula2 = member.name == "Formula2" || member.name == "Formula2Local";
    const bool spill =
        member.name == "HasSpill" || member.name == "SpillParent" || member.name == "SpillingToRange";
    return (hasFormula2 || !formula2) && (hasSpill || !spill);
}

std::optional<Variant> AutomationServer::Scripted(const ObjectClass& objectClass, DISPID dispid,
                                                  const Invocation* record) {
    if (judge_ != nullptr && record != nullptr) {
        if (auto refusal = judge_(*record)) throw *std::move(refusal);
    }
    const auto script = std::ranges::find_if(scripts_, [&](const Script& each) {
        return each.dispid == dispid && each.times != 0 &&
               (each.objectClass.empty() || each.objectClass == objectClass.name);
    });
    if (script == scripts_.end()) return std::nullopt;
    if (script->times > 0) --script->times;
    if (const auto* refusal = std::get_if<Refusal>(&script->outcome)) throw Refusal(*refusal);
    return std::get<Variant>(script->outcome);
}

void AutomationServer::Retire(Object& object) noexcept {
    const auto found = live_.find(static_cast<IUnknown*>(object.Interface()));
    if (found == live_.end()) return;
    std::unique_ptr<Object> shell = std::move(found->second);
    live_.erase(found);
    try {
        retired_.push_back(std::move(shell));
        if (retired_.size() > watchedShells) retired_.pop_front();
    } catch (const std::bad_alloc&) {
        return;
    }
}

void AutomationServer::Fault(const Object& object, std::string_view call) noexcept {
    try {
        faults_.push_back(std::string(call) + " of " + std::string(object.Class().name) +
                          " after its last Release");
    } catch (const std::bad_alloc&) {
        return;
    }
}

}  // namespace excelhost::automation
