#include "excelhost/commands/sessionoptions.h"

#include <array>
#include <string_view>
#include <utility>

namespace excelhost {

std::vector<Option> OptionsOf(SessionOptions& session) {
    static constexpr std::array<std::string_view, 2> companions = {"iris", "none"};
    static constexpr std::array<std::string_view, 3> workbookNames = {"XLA", "XLS", "none"};
    return {
        ListOption(
            "--addin", "FILE",
            "an add-in (XLL) to load, any that is written for Excel 2007 or later; may be given several "
            "times; kestrolumen.xll beside this program if left out",
            session.addIns),
        SwitchOption(
            "--manage",
            "adds and removes each add-in as the add-in manager does: xlAddInManagerInfo12, xlAutoAdd, "
            "xlAutoRemove",
            session.isManaged),
        SwitchOption("--cancel-close",
                     "calls xlAutoClose ahead of the calculation, as Excel does when a user cancels its end",
                     session.cancelsClose),
        SwitchOption(
            "--trace",
            "prints every call of the add-in into Excel, in order, and the account of all values lent, "
            "allocated and freed, to the standard error stream",
            session.trace),
        {"--refuse",
         "FUNCTION[:N]=CODE",
         "lets each call of this function of Excel fail, or the Nth one alone: --refuse "
         "xlCoerce:2=xlretFailed; may "
         "be given several times. The function is named as in a trace or by its number, the code by its name "
         "or "
         "number",
         {},
         [&session](const std::string& given) { session.refusals.push_back(RefusalFrom(given)); }},
        CountOption(
            "--fail-allocation", "N",
            "lets the Nth allocation of the add-ins fail, from xlAutoOpen on: of malloc, calloc, realloc and "
            "operator new, as far as an add-in takes them from a library; tells how many there were",
            1, session.failAllocation),
        CountOption("--timeout", "SECONDS",
                    "ends the program after that time with exit code 5; what the add-in was doing is told", 1,
                    session.timeout),
        SwitchOption("--progress",
                     "shows how far it is, in a bar on the standard error stream, if that is a terminal",
                     session.progress),
        TextOption("--report", "FILE.html",
                   "writes a page to look at: the sheets, each call on a time line with its operands and its "
                   "result, and the account with a mark at each value in trouble",
                   session.report),
        ChoiceOption("--companion", "NAME",
                     "the networks of kestrolumen.xll's companion workbook: iris (its default), or none: no "
                     "workbook is loaded, so the add-in's functions aren't registered and give #NAME?",
                     companions, session.companion),
        ChoiceOption(
            "--workbook-name", "NAME",
            "the name under which that workbook is open: XLA (Kestrolumen.XLA, the default), XLS, or "
            "none: it introduces itself but can't be called, so its functions give #VALUE!",
            workbookNames, session.workbookName),
    };
}

std::vector<Option> WithSessionOptions(std::vector<Option> own, SessionOptions& session) {
    for (Option& option : OptionsOf(session)) own.push_back(std::move(option));
    return own;
}

}  // namespace excelhost
