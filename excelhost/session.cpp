#include "excelhost/session.h"

#include "excelhost/callscope.h"
#include "excelhost/characters.h"
#include "excelhost/failure.h"
#include "excelhost/lastwords.h"
#include "excelhost/modulefile.h"

#include <oleauto.h>

#include <memory>
#include <utility>

namespace excelhost {
namespace {

constexpr const char* kHandshake = "the handshake";

HMODULE Load(const std::filesystem::path& addIn) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(addIn, error)) {
        throw AddInError("there is no add-in '" + Utf8From(addIn) + "'");
    }
    const auto refuse = [&](const std::string& why) {
        throw AddInError("the add-in '" + Utf8From(addIn) + "' can't be loaded: " + why);
    };
    if (const std::string why = WrongKindOfModule(addIn); !why.empty()) refuse(why);
    HMODULE module = LoadLibraryW(Wide(Utf8From(std::filesystem::absolute(addIn))).c_str());
    if (module == nullptr) refuse(WhyNotLoaded(std::filesystem::absolute(addIn)));
    return module;
}

// A string of the workbook's code.
class WorkbookString {
  public:
    explicit WorkbookString(const WCHAR* text) : bstr_(SysAllocString(text)) {}
    ~WorkbookString() { SysFreeString(bstr_); }
    WorkbookString(const WorkbookString&) = delete;
    WorkbookString& operator=(const WorkbookString&) = delete;
    BSTR* Address() noexcept { return &bstr_; }

  private:
    BSTR bstr_;
};

using AutoFunction = std::int32_t(WINAPI*)();
using InitializeVB = void(WINAPI*)(std::int32_t, std::int32_t, std::int32_t, BSTR*, std::int32_t, BSTR*,
                                   std::int32_t, BSTR*);
using InitializeW = void(WINAPI*)(std::int32_t, std::int32_t, std::int32_t, BSTR*, std::int32_t, BSTR*,
                                  std::int32_t);
using Uninitialize = void(WINAPI*)(std::int32_t);

}  // namespace

std::string HandshakeFailure(const std::string& why) {
    const CallScope* scope = CallScope::Current();
    if (scope == nullptr || scope->Procedure() != kHandshake) return {};
    return "the add-in '" + Utf8(scope->Module()) + "' failed in the workbook's handshake: " + why;
}

template <class Function>
Function Session::Find(const char* name) const noexcept {
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module_, name)));
}

template <class Function>
Function Session::Export(const char* name) const {
    const auto function = Find<Function>(name);
    if (function == nullptr) {
        throw AddInError("the add-in '" + Utf8(fileName_) + "' exports no '" + std::string(name) + "'");
    }
    return function;
}

Session::Session(Host& host, const std::filesystem::path& addIn, const std::function<void(HMODULE)>& loaded)
    : module_(Load(addIn)), fileName_(Wide(Utf8From(addIn.filename()))) {
    try {
        host.AddModule(
            Wide(Utf8From(std::filesystem::absolute(addIn))),
            [module = module_](const char* name) { return GetProcAddress(module, name); }, module_);
        if (loaded) loaded(module_);
        Open();
    } catch (...) {
        FreeLibrary(module_);
        throw;
    }
    open_ = true;
}

Session::~Session() {
    Close();
    FreeLibrary(module_);
}

void Session::Open() {
    const auto open = Export<AutoFunction>("xlAutoOpen");
    const CallScope scope(fileName_, "xlAutoOpen");
    std::int32_t opened = 0;
    try {
        opened = open();
    } catch (...) {
        Message words;
        (void)AddLastWords(words);
        throw AddInDied("an exception got out: " + CurrentExceptionText() + ", " + std::string(words.Text()));
    }
    if (opened != 1) throw AddInError("the add-in '" + Utf8(fileName_) + "' refuses to open");
}

bool Session::KnowsWorkbook() const noexcept {
    return GetProcAddress(module_, "InitializeXlaInformationVB") != nullptr;
}

void Session::Handshake(Form form) {
    const CallScope scope(fileName_, kHandshake);
    WorkbookString name(TEXT("Kestrolumen"));
    WorkbookString version(TEXT("8.2"));
    WorkbookString none(TEXT(""));
    try {
        if (form == Form::VB) {
            Export<InitializeVB>("InitializeXlaInformationVB")(8, 2, 0, name.Address(), 0, version.Address(),
                                                               0, none.Address());
        } else {
            Export<InitializeW>("InitializeXlaInformationW")(8, 2, 0, name.Address(), 0, version.Address(),
                                                             0);
        }
    } catch (const AddInError&) {
        throw;
    } catch (...) {
        throw AddInError(HandshakeFailure(CurrentExceptionText()));
    }
}

void Session::LeaveWorkbook() {
    const CallScope scope(fileName_, "UninitializeXlaInformation");
    Export<Uninitialize>("UninitializeXlaInformation")(0);
}

void Session::Close() {
    if (!std::exchange(open_, false)) return;
    CallIfThere("xlAutoClose");
}

void Session::CancelledClose() {
    CallIfThere("xlAutoClose");
}

void Session::Added() {
    CallIfThere("xlAutoAdd");
}

void Session::Removed() {
    CallIfThere("xlAutoRemove");
}

std::string Session::LongName() {
    using Info = LPXLOPER12(WINAPI*)(LPXLOPER12);
    const auto info = Find<Info>("xlAddInManagerInfo12");
    if (info == nullptr) return {};
    const CallScope scope(fileName_, "xlAddInManagerInfo12");
    XLOPER12 action{};
    action.xltype = xltypeInt;
    action.val.w = 1;
    const LPXLOPER12 answer = info(&action);
    const auto name = answer != nullptr ? TextOf(*answer) : std::nullopt;
    if (answer != nullptr && (answer->xltype & xlbitDLLFree) != 0) {
        using Free = void(WINAPI*)(LPXLOPER12);
        if (const auto free = Find<Free>("xlAutoFree12")) free(answer);
    }
    return name ? Utf8(*name) : std::string();
}

void Session::CallIfThere(const char* procedure) {
    const CallScope scope(fileName_, procedure);
    if (const auto function = Find<AutoFunction>(procedure)) function();
}

}  // namespace excelhost
