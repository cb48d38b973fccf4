#include "addin/bridge.h"

#include "addin/detail/atborder.h"
#include "addin/resultstore.h"
#include "excelvalues/xxloper.h"

namespace {

using kestrolumen::CountedText;

// One function of the companion workbook, under the workbook's two names.
struct Targets {
    XLOPER12 first;
    XLOPER12 second;
};

// Excel shows no alerts for macro errors within this scope, and shows them behind it whatever happens:
// neither switch takes memory.
class MacroAlertsOff {
  public:
    MacroAlertsOff() noexcept { Switch(0); }
    ~MacroAlertsOff() { Switch(1); }
    MacroAlertsOff(const MacroAlertsOff&) = delete;
    MacroAlertsOff& operator=(const MacroAlertsOff&) = delete;

  private:
    static void Switch(std::int32_t on) noexcept {
        CallExcelForEffect(xlfError, {.val = {.w = on}, .xltype = xltypeInt});
    }
};

// Whether Excel refused the call. A function that answered with an error value leaves no return code.
bool IsRefusedCall(const XXloper& result) noexcept {
    return TypeOf(result) == xltypeErr && result.val.failure.returnCode != xlretSuccess;
}

template <typename... Handles>
XXloperPtr CallTarget(const XLOPER12& target, const Handles&... arguments) {
    return CallExcel(xlUDF, LentXXloper(&target).Handle(), arguments...);
}

template <typename... Handles>
XXloperPtr CallEitherTarget(const Targets& targets, const Handles&... arguments) {
    XXloperPtr result = CallTarget(targets.first, arguments...);
    if (IsRefusedCall(*result)) result = CallTarget(targets.second, arguments...);
    return result;
}

template <typename... Handles>
XXloperPtr CallWithoutAlerts(const Targets& targets, const Handles&... arguments) {
    const MacroAlertsOff scope;
    return CallEitherTarget(targets, arguments...);
}

template <typename... Records>
LPXLOPER12 CallCompanionWorkbook(const Targets& targets, Records... arguments) {
    return AtBorder(
        [&] { return StoreThreadResult(CallWithoutAlerts(targets, LentXXloper(arguments).Handle()...)); });
}

}  // namespace

LPXLOPER12 WINAPI NetOutputPrediction(LPXLOPER12 a1, LPXLOPER12 a2, LPXLOPER12 a3, LPXLOPER12 a4,
                                      LPXLOPER12 a5) {
    static constexpr CountedText first(TEXT("=Kestrolumen.XLA!NetOutputPredictionVBA"));
    static constexpr CountedText second(TEXT("=Kestrolumen.XLS!NetOutputPredictionVBA"));
    return CallCompanionWorkbook({first.Value(), second.Value()}, a1, a2, a3, a4, a5);
}

LPXLOPER12 WINAPI NetOutputProbabilityOfPrediction(LPXLOPER12 a1, LPXLOPER12 a2, LPXLOPER12 a3, LPXLOPER12 a4,
                                                   LPXLOPER12 a5) {
    static constexpr CountedText first(TEXT("=Kestrolumen.XLA!NetOutputProbabilityOfPredictionVBA"));
    static constexpr CountedText second(TEXT("=Kestrolumen.XLS!NetOutputProbabilityOfPredictionVBA"));
    return CallCompanionWorkbook({first.Value(), second.Value()}, a1, a2, a3, a4, a5);
}

LPXLOPER12 WINAPI NetOutputProbabilityOfCategory(LPXLOPER12 a1, LPXLOPER12 a2, LPXLOPER12 a3, LPXLOPER12 a4,
                                                 LPXLOPER12 a5, LPXLOPER12 a6) {
    static constexpr CountedText first(TEXT("=Kestrolumen.XLA!NetOutputProbabilityOfCategoryVBA"));
    static constexpr CountedText second(TEXT("=Kestrolumen.XLS!NetOutputProbabilityOfCategoryVBA"));
    return CallCompanionWorkbook({first.Value(), second.Value()}, a1, a2, a3, a4, a5, a6);
}
