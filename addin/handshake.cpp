#include "addin/handshake.h"

#include "addin/detail/module.h"
#include "automation/automation.h"
#include "excelvalues/xxloper.h"

#include <array>
#include <utility>

std::vector<double> RegisteredFunctionIds;
std::unique_ptr<Mutex> LoadedMarker;

namespace {

// What Excel is told about one function. The first letter of a type text stands for the result, each further
// one for an argument: Q is a value, U may be a reference too.
struct WorksheetFunction {
    const char* procedure;
    const char* typeText;
    const char* functionText;
};

constexpr std::array<WorksheetFunction, 3> WorksheetFunctions = {{
    {"NetOutputPrediction", "QUQQUU", "NetOutputPrediction"},
    {"NetOutputProbabilityOfPrediction", "QUQQUU", "NetOutputProbabilityOfPrediction"},
    {"NetOutputProbabilityOfCategory", "QUQQQUU", "NetOutputProbabilityOfCategory"},
}};

void ReadText(const BSTR* text) {
    if (text != nullptr) static_cast<void>(CStringWFromBstr(*text, false));
}

void PutLoadedMarker() {
    const CStringW name = TEXT("Kestrolumen is loaded mutex name 129342734");
    LoadedMarker = std::make_unique<Mutex>(name, true, 0, nullptr);
}

}  // namespace

void RegisterWorksheetFunctions() {
    UnregisterAll();
    // Room first: an id that can't be kept would leave its function registered for good.
    RegisteredFunctionIds.reserve(WorksheetFunctions.size());
    for (const WorksheetFunction& function : WorksheetFunctions) {
        const XXloperPtr result =
            CallExcel(xlfRegister, XXloperFromString(AddInModule.fileName.GetString()),
                      XXloperFromString(function.procedure), XXloperFromString(function.typeText),
                      XXloperFromString(function.functionText));
        RegisteredFunctionIds.push_back(result->val.num);
    }
}

void UnregisterAll() {
    for (const double id : RegisteredFunctionIds) CallExcel(xlfUnregister, XXloperFromNumber(id));
    RegisteredFunctionIds.clear();
}

void WINAPI InitializeXlaInformationVB(std::int32_t, std::int32_t, std::int32_t, BSTR* s1, std::int32_t,
                                       BSTR* s2, std::int32_t, BSTR* s3) {
    ReadText(s1);
    ReadText(s2);
    ReadText(s3);
    RegisterWorksheetFunctions();
    PutLoadedMarker();
}

void WINAPI InitializeXlaInformationW(std::int32_t, std::int32_t, std::int32_t, BSTR* s1, std::int32_t,
                                      BSTR* s2, std::int32_t) {
    ReadText(s1);
    ReadText(s2);
    RegisterWorksheetFunctions();
    PutLoadedMarker();
}

void WINAPI UninitializeXlaInformation(std::int32_t) {
    LoadedMarker.reset();
}
