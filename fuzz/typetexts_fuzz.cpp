// Type texts, as an add-in hands them to xlfRegister. What the host takes reads the same when it is written anew from
// its parts, can be called with whatever a formula gives, and goes again; what it refuses leaves nothing.
#include "fuzz.h"

#include "excelhost/host.h"
#include "excelhost/worksheetcall.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>

using fuzz::Check;

namespace {

// Its own pointer is null and its own number nothing in particular.
INT_PTR WINAPI Function() {
    return 0;
}

std::string Described(const excelhost::TypeText& type) {
    const auto firstChanged = std::ranges::find_if(type.arguments, excelhost::CanBeChanged);
    std::string text;
    if (type.asynchronous ||
        type.inPlace == static_cast<std::size_t>(firstChanged - type.arguments.begin()) + 1) {
        text = ">";
    } else {
        text = type.inPlace != 0 ? std::to_string(type.inPlace) : Describe(type.result);
    }
    for (std::size_t i = 0; i <= type.arguments.size(); ++i) {
        if (type.asynchronous && type.handle == i) text += 'X';
        if (i < type.arguments.size()) text += Describe(type.arguments[i]);
    }
    if (type.recalculatesAlways) text += '!';
    if (type.threadSafe) text += '$';
    if (type.forMacroSheets) text += '#';
    if (type.clusterSafe) text += '&';
    return text;
}

// The parts of a type text as a type text; nothing for one that Excel wouldn't take.
std::optional<std::string> Rewritten(excelhost::TextView text) {
    try {
        return Described(excelhost::TypeTextFrom(text));
    } catch (const excelhost::TypeTextFault& fault) {
        Check(*fault.what() != '\0', "a fault is told");
        return std::nullopt;
    }
}

double Register(excelhost::Host& host, excelhost::TextView typeText) {
    std::array<excelhost::Text, 4> texts = {TEXT("fuzz.xll"), TEXT("Function"), excelhost::Text(typeText),
                                            TEXT("FUNCTION")};
    std::array<XLOPER12, 4> records{};
    std::array<LPXLOPER12, 4> operands{};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        texts[i].insert(texts[i].begin(), static_cast<WCHAR>(texts[i].size()));
        records[i].xltype = xltypeStr;
        records[i].val.str = texts[i].data();
        operands[i] = &records[i];
    }
    XLOPER12 id{};
    const int code = host.CallBack(xlfRegister, 4, operands.data(), &id);
    return code == xlretSuccess && id.xltype == xltypeNum ? id.val.num : 0;
}

void CallWithAnything(excelhost::Host& host, std::size_t count) {
    using excelhost::Value;
    const Value values[] = {1.5,
                            excelhost::Text(TEXT("text")),
                            excelhost::Array{1, 2, {2.0, excelhost::Text()}},
                            excelhost::ErrorValue{xlerrNA},
                            true,
                            excelhost::Missing{}};
    for (std::size_t first = 0; first < std::size(values); ++first) {
        std::vector<Value> arguments;
        for (std::size_t i = 0; i < count; ++i) arguments.push_back(values[(first + i) % std::size(values)]);
        static_cast<void>(host.Call(TEXT("FUNCTION"), arguments));
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const CStringW input = fuzz::Wide({data, size});
    const excelhost::TextView text(input.GetString(), static_cast<std::size_t>(input.GetLength()));
    const std::optional<std::string> rewritten = Rewritten(text);
    if (rewritten)
        Check(Rewritten(excelhost::Wide(*rewritten)) == rewritten, "what is read is written again");

    excelhost::SetAsyncLimit(std::chrono::milliseconds{0});  // nobody returns anything later
    excelhost::Host host;
    host.KeepTrace(false);
    host.AddModule(TEXT("fuzz.xll"), [](const char*) -> FARPROC { return &Function; });
    const double id = Register(host, text);
    const auto found = host.Find(TEXT("FUNCTION"));
    Check((id != 0) == (found != nullptr), "what is taken is there");
    if (found == nullptr) return 0;
    Check(rewritten.has_value() && found->typeText == text, "under its type text");
    CallWithAnything(host, found->Arity());
    XLOPER12 record{};
    record.xltype = xltypeNum;
    record.val.num = id;
    LPXLOPER12 operand = &record;
    XLOPER12 gone{};
    Check(host.CallBack(xlfUnregister, 1, &operand, &gone) == xlretSuccess && host.Registrations().empty(),
          "what is taken back is gone");
    Check(host.GetAccount().Balanced(), "and nothing is left of the calls");
    return 0;
}
