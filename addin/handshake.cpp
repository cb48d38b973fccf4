#include "addin/handshake.h"

#include "addin/detail/atborder.h"
#include "addin/detail/module.h"
#include "addin/resultstore.h"
#include "automation/automation.h"
#include "excelvalues/lent.h"
#include "excelvalues/xxloper.h"

#include <array>
#include <utility>

std::vector<double> RegisteredFunctionIds;
std::unique_ptr<Mutex> LoadedMarker;

namespace {

using kestrolumen::CountedText;

// What Excel is told about one function. The first letter of a type text stands for the result, each further
// one for an argument: Q is a value, U may be a reference too.
struct WorksheetFunction {
    XLOPER12 name;  // of the procedure and of the function
    XLOPER12 typeText;
};

constexpr CountedText Prediction(TEXT("NetOutputPrediction"));
constexpr CountedText ProbabilityOfPrediction(TEXT("NetOutputProbabilityOfPrediction"));
constexpr CountedText ProbabilityOfCategory(TEXT("NetOutputProbabilityOfCategory"));
constexpr CountedText FiveArguments(TEXT("QUQQUU"));
constexpr CountedText SixArguments(TEXT("QUQQQUU"));

std::array<WorksheetFunction, 3> WorksheetFunctions() noexcept {
    return {{{Prediction.Value(), FiveArguments.Value()},
             {ProbabilityOfPrediction.Value(), FiveArguments.Value()},
             {ProbabilityOfCategory.Value(), SixArguments.Value()}}};
}

void ReadText(const BSTR* text) {
    if (text != nullptr) static_cast<void>(CStringWFromBstr(*text, false));
}

void PutLoadedMarker() {
    const CStringW name = TEXT("Kestrolumen is loaded mutex name 129342734");
    LoadedMarker = std::make_unique<Mutex>(name, true, 0, nullptr);
}

// A store that was closed is opened again: when the user cancels the closing of Excel, xlAutoClose has run,
// and xlAutoOpen doesn't run again.
void BeReady() {
    NoteModuleUnlessNoted();
    OpenThreadResultStore();
    RegisterWorksheetFunctions();
    PutLoadedMarker();
}

}  // namespace

void RegisterWorksheetFunctions() {
    // All that takes memory comes first: without it nothing changes.
    const auto functions = WorksheetFunctions();
    const XXloperPtr file = XXloperFromString(AddInModule.fileName.GetString());
    RegisteredFunctionIds.reserve(functions.size());
    UnregisterAll();
    for (const auto& [name, typeText] : functions) {
        const ExcelResult result(xlfRegister, *file, name, typeText, name);
        RegisteredFunctionIds.push_back(result->val.num);
    }
}

void UnregisterAll() noexcept {
    for (const double id : RegisteredFunctionIds) {
        XLOPER12 number{};
        kestrolumen::detail::SetFromNumber(number, id);
        CallExcelForEffect(xlfUnregister, number);
    }
    RegisteredFunctionIds.clear();
}

void WINAPI InitializeXlaInformationVB(std::int32_t, std::int32_t, std::int32_t, BSTR* s1, std::int32_t,
                                       BSTR* s2, std::int32_t, BSTR* s3) {
    AtBorder([&] {
        ReadText(s1);
        ReadText(s2);
        ReadText(s3);
        BeReady();
    });
}

void WINAPI InitializeXlaInformationW(std::int32_t, std::int32_t, std::int32_t, BSTR* s1, std::int32_t,
                                      BSTR* s2, std::int32_t) {
    AtBorder([&] {
        ReadText(s1);
        ReadText(s2);
        BeReady();
    });
}

void WINAPI UninitializeXlaInformation(std::int32_t) {
    AtBorder([] { LoadedMarker.reset(); });
}
