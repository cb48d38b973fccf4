#include "addin/bridge.h"

#include "addin/resultstore.h"
#include "excelvalues/xxloper.h"

#include <utility>

namespace {

// One function of the companion workbook, under the workbook's two names.
struct Targets {
    const WCHAR* first;
    const WCHAR* second;
};

void SwitchMacroAlerts(bool on) {
    CallExcel(xlfError, XXloperFromInt(on ? 1 : 0));
}

// Whether Excel refused the call. A function that answered with an error value leaves no return code.
bool IsRefusedCall(const XXloper& result) noexcept {
    return TypeOf(result) == xltypeErr && result.val.returnCode != xlretSuccess;
}

template <typename... Handles>
XXloperPtr CallEitherTarget(const Targets& targets, const Handles&... arguments) {
    XXloperPtr result = CallExcel(xlUDF, XXloperFromString(targets.first), arguments...);
    if (IsRefusedCall(*result)) result = CallExcel(xlUDF, XXloperFromString(targets.second), arguments...);
    return result;
}

template <typename... Handles>
XXloperPtr CallWithoutAlerts(const Targets& targets, const Handles&... arguments) {
    XXloperPtr result;
    try {
        SwitchMacroAlerts(false);
        result = CallEitherTarget(targets, arguments...);
    } catch (...) {
        SwitchMacroAlerts(true);
        throw;
    }
    SwitchMacroAlerts(true);
    return result;
}

template <typename... Records>
LPXLOPER12 CallCompanionWorkbook(const Targets& targets, Records... arguments) {
    return StoreThreadResult(CallWithoutAlerts(targets, XXloperLentByExcel(arguments)...));
}

}  // namespace

LPXLOPER12 WINAPI NetOutputPrediction(LPXLOPER12 a1, LPXLOPER12 a2, LPXLOPER12 a3, LPXLOPER12 a4,
                                      LPXLOPER12 a5) {
    constexpr Targets targets = {TEXT("=Kestrolumen.XLA!NetOutputPredictionVBA"),
                                 TEXT("=Kestrolumen.XLS!NetOutputPredictionVBA")};
    return CallCompanionWorkbook(targets, a1, a2, a3, a4, a5);
}

LPXLOPER12 WINAPI NetOutputProbabilityOfPrediction(LPXLOPER12 a1, LPXLOPER12 a2, LPXLOPER12 a3, LPXLOPER12 a4,
                                                   LPXLOPER12 a5) {
    constexpr Targets targets = {TEXT("=Kestrolumen.XLA!NetOutputProbabilityOfPredictionVBA"),
                                 TEXT("=Kestrolumen.XLS!NetOutputProbabilityOfPredictionVBA")};
    return CallCompanionWorkbook(targets, a1, a2, a3, a4, a5);
}

LPXLOPER12 WINAPI NetOutputProbabilityOfCategory(LPXLOPER12 a1, LPXLOPER12 a2, LPXLOPER12 a3, LPXLOPER12 a4,
                                                 LPXLOPER12 a5, LPXLOPER12 a6) {
    constexpr Targets targets = {TEXT("=Kestrolumen.XLA!NetOutputProbabilityOfCategoryVBA"),
                                 TEXT("=Kestrolumen.XLS!NetOutputProbabilityOfCategoryVBA")};
    return CallCompanionWorkbook(targets, a1, a2, a3, a4, a5, a6);
}
