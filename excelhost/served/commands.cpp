// Commands: accepted, traced and without effect, since there is no screen, no menu and no key. Those that stand
// here have their name in the trace, any other its number.
#include "excelhost/served/table.h"
#include "excelhost/state.h"

namespace excelhost {
namespace {

Outcome Accept(HostState&, Operands) {
    return Outcome::Of(true, "accepted without effect");
}

constexpr ServedFunction kTable[] = {
    {kCommand | 0, "xlcBeep", 0, 255, From::Commands, Accept},
    {kCommand | 1, "xlcOpen", 0, 255, From::Commands, Accept},
    {kCommand | 4, "xlcSave", 0, 255, From::Commands, Accept},
    {kCommand | 5, "xlcSaveAs", 0, 255, From::Commands, Accept},
    {kCommand | 8, "xlcPrint", 0, 255, From::Commands, Accept},
    {kCommand | 10, "xlcQuit", 0, 255, From::Commands, Accept},
    {kCommand | 11, "xlcNewWindow", 0, 255, From::Commands, Accept},
    {kCommand | 16, "xlcClose", 0, 255, From::Commands, Accept},
    {kCommand | 17, "xlcRun", 0, 255, From::Commands, Accept},
    {kCommand | 31, "xlcCalculateNow", 0, 255, From::Commands, Accept},
    {kCommand | 32, "xlcCalculation", 0, 255, From::Commands, Accept},
    {kCommand | 42, "xlcFormatNumber", 0, 255, From::Commands, Accept},
    {kCommand | 43, "xlcAlignment", 0, 255, From::Commands, Accept},
    {kCommand | 47, "xlcColumnWidth", 0, 255, From::Commands, Accept},
    {kCommand | 48, "xlcUndo", 0, 255, From::Commands, Accept},
    {kCommand | 49, "xlcCut", 0, 255, From::Commands, Accept},
    {kCommand | 50, "xlcCopy", 0, 255, From::Commands, Accept},
    {kCommand | 51, "xlcPaste", 0, 255, From::Commands, Accept},
    {kCommand | 52, "xlcClear", 0, 255, From::Commands, Accept},
    {kCommand | 61, "xlcDefineName", 0, 255, From::Commands, Accept},
    {kCommand | 62, "xlcCreateNames", 0, 255, From::Commands, Accept},
    {kCommand | 63, "xlcFormulaGoto", 0, 255, From::Commands, Accept},
    {kCommand | 103, "xlcActivate", 0, 255, From::Commands, Accept},
    {kCommand | 109, "xlcSelect", 0, 255, From::Commands, Accept},
    {kCommand | 110, "xlcDeleteName", 0, 255, From::Commands, Accept},
    {kCommand | 118, "xlcAlert", 0, 255, From::Commands, Accept},
    {kCommand | 119, "xlcNew", 0, 255, From::Commands, Accept},
    {kCommand | 122, "xlcMessage", 0, 255, From::Commands, Accept},
    {kCommand | 131, "xlcSendKeys", 0, 255, From::Commands, Accept},
    {kCommand | 138, "xlcOnWindow", 0, 255, From::Commands, Accept},
    {kCommand | 139, "xlcOnData", 0, 255, From::Commands, Accept},
    {kCommand | 140, "xlcDisableInput", 0, 255, From::Commands, Accept},
    {kCommand | 141, "xlcEcho", 0, 255, From::Commands, Accept},
    {kCommand | 143, "xlcListNames", 0, 255, From::Commands, Accept},
    {kCommand | 144, "xlcFileClose", 0, 255, From::Commands, Accept},
    {kCommand | 148, "xlcOnTime", 0, 255, From::Commands, Accept},
    {kCommand | 149, "xlcWait", 0, 255, From::Commands, Accept},
    {kCommand | 167, "xlcCalculateDocument", 0, 255, From::Commands, Accept},
    {kCommand | 168, "xlcOnKey", 0, 255, From::Commands, Accept},
};

}  // namespace

std::span<const ServedFunction> ServedCommands() {
    return kTable;
}

}  // namespace excelhost
