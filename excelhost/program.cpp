#include "excelhost/program.h"

#include "excelhost/commandline.h"
#include "excelhost/companion.h"
#include "excelhost/session.h"
#include "excelhost/functions/functions.h"
#include "excelhost/sheetfiles.h"

#include <algorithm>
#include <array>
#include <deque>
#include <stdexcept>
#include <utility>

namespace excelhost {
namespace {

constexpr std::string_view kHelpOfCommands =
    R"(excelhost - a simulated Excel that loads, calls and checks add-ins (XLL)

Usage: excelhost run SHEET.csv [options]
       excelhost run NAME=SHEET.csv NAME=SHEET.csv ... [options]
       excelhost describe [--addin FILE]
       excelhost --help

run calculates a sheet: loads the add-ins, calculates every formula of the sheet and prints the values as CSV. Cells
are numbers, texts, TRUE, FALSE, error values and formulas (=...). Of several sheets, which formulas refer to as
NAME!A1, each is printed under a line "# NAME". The files are UTF-8.

Formulas know Excel's operators, references (A1, $A$1, A1:C3, A:C, 1:3, NAME!A1), the functions that the add-ins
have registered, and:
)";

constexpr std::string_view kHelpOfOptions = R"(
Values follow Excel's rules: 15 digits of a number count, in what is typed, in comparisons and where a sum that ends
a formula comes out near zero; 1,234.5 and 12% and $5 and (5) are read as numbers. Where it differs: what is typed
as a date, time or fraction stays a text (dates are serial numbers), texts are ordered by the units of their upper
case instead of a language, and a formula that gives an array shows its first element. A text that begins with "="
is printed as the formula ="=..." that gives it.

The add-in kestrolumen.xll meets its companion workbook first and then has:

  NetOutputPrediction(inputs, network, fallback, low, high)                the likeliest category
  NetOutputProbabilityOfPrediction(inputs, network, fallback, low, high)   its probability
  NetOutputProbabilityOfCategory(inputs, network, category, fallback, low, high)

describe prints what the add-in knows of this machine, its folders and the add-in's own file.

Options (--option VALUE or --option=VALUE; "--" ends them):
  --addin FILE           an add-in (XLL) to load, any that is written for Excel 2007 or later; may be given several
                         times; kestrolumen.xll beside this program if left out
  --companion NAME       the networks of the companion workbook: iris (its default), or none: no workbook is
                         loaded, so the add-in's functions aren't registered and give #NAME?
  --workbook-name NAME   the name under which the workbook is open: XLA (Kestrolumen.XLA, the default), XLS, or
                         none: it introduces itself but can't be called, so its functions give #VALUE!
  --manage               adds and removes each add-in as the add-in manager does: xlAddInManagerInfo12, xlAutoAdd,
                         xlAutoRemove
  --cancel-close         calls xlAutoClose ahead of the calculation, as Excel does when a user cancels its end
  --trace                prints every call of the add-in into Excel, in order, and the account of all values lent,
                         allocated and freed, to the standard error stream

Exit code: 0 done; 1 something is wrong with the sheet or the add-in; 2 something is wrong with the command line;
3 an add-in leaked a value, freed one twice, freed or changed one that it was only lent, or did what else is named;
4 an add-in ended the program: it crashed, aborted, exited or let an exception out.
)";

// The names of the functions that are built in, in lines.
std::string FunctionLines() {
    constexpr std::size_t width = 116;
    std::string lines;
    std::string line = " ";
    for (const std::string_view name : BuiltinNames()) {
        if (line.size() + 1 + name.size() > width) lines += std::exchange(line, " ") + "\n";
        line += " " + std::string(name);
    }
    return lines + line + "\n";
}

struct RunOptions {
    std::vector<std::string> sheets;
    std::vector<std::string> addIns;  // ours, beside the program, when empty
    std::string companion = "iris";
    std::string workbookName = "XLA";
    bool trace = false;
    bool isManaged = false;
    bool cancelsClose = false;
};

RunOptions ParseRunOptions(std::span<const std::string> arguments) {
    static constexpr std::array<std::string_view, 2> companions = {"iris", "none"};
    static constexpr std::array<std::string_view, 3> workbookNames = {"XLA", "XLS", "none"};
    RunOptions run;
    const std::array options = {
        SwitchOption("--trace", run.trace),
        SwitchOption("--manage", run.isManaged),
        SwitchOption("--cancel-close", run.cancelsClose),
        ListOption("--addin", run.addIns),
        ChoiceOption("--companion", companions, run.companion),
        ChoiceOption("--workbook-name", workbookNames, run.workbookName),
    };
    run.sheets = ParseOptions(arguments, options);
    const bool complete = std::none_of(run.sheets.begin(), run.sheets.end(),
                                       [](const std::string& sheet) { return sheet.empty(); });
    if (run.sheets.empty() || !complete) throw UsageError("the name of a sheet is missing");
    return run;
}

// Writes each entry as it is completed, and the milestones between them.
class TraceWriter {
  public:
    TraceWriter(Host& host, std::ostream* err) : err_(err) {
        host.KeepTrace(false);
        if (err_ != nullptr) host.OnEntry([this](const Entry& entry) { *err_ << Describe(entry) << '\n'; });
    }
    void Milestone(const std::string& text) {
        if (err_ != nullptr) *err_ << "-- " << text << '\n';
    }

  private:
    std::ostream* err_;
};

// What was found wrong with the add-ins; whether any of it is a fault.
bool PrintFindings(const Host& host, std::ostream& err) {
    bool isFaulty = false;
    for (const Finding& finding : host.Findings()) {
        err << "excelhost: " << Describe(finding) << '\n';
        isFaulty = isFaulty || finding.isFault;
    }
    return isFaulty;
}

// The whole session.
void Play(const RunOptions& options, std::span<const std::filesystem::path> addIns, Host& host,
          TraceWriter& trace, SheetFiles& sheets) {
    const bool hasWorkbook = options.companion != "none";
    static constexpr std::array<const Network*, 1> networks = {&kIrisNetwork};
    if (hasWorkbook && options.workbookName != "none") {
        OpenCompanion(host, Wide("Kestrolumen." + options.workbookName), networks);
    }
    std::deque<Session> sessions;
    const auto tell = [&](const std::string& what, const std::filesystem::path& addIn) {
        trace.Milestone(addIns.size() == 1 ? what : what + " of " + addIn.filename().string());
    };
    for (const std::filesystem::path& addIn : addIns) {
        tell("Excel loads the add-in: xlAutoOpen", addIn);
        Session& session = sessions.emplace_back(host, addIn);
        if (options.isManaged) {
            tell("the add-in manager asks for its name: xlAddInManagerInfo12", addIn);
            trace.Milestone("it is \"" + session.LongName() + "\"");
            tell("the add-in manager adds it: xlAutoAdd", addIn);
            session.Added();
        }
        if (!hasWorkbook || !session.KnowsWorkbook()) continue;
        tell("the companion workbook introduces itself: InitializeXlaInformationVB", addIn);
        session.Handshake();
    }
    for (std::size_t i = 0; options.cancelsClose && i < sessions.size(); ++i) {
        tell("Excel would end, and the user cancels: xlAutoClose", addIns[i]);
        sessions[i].CancelledClose();
    }
    trace.Milestone("the sheet is calculated");
    sheets.Calculate(host);
    host.CalculationEnded();
    for (std::size_t i = sessions.size(); i-- > 0;) {
        if (hasWorkbook && sessions[i].KnowsWorkbook()) {
            tell("the companion workbook leaves: UninitializeXlaInformation", addIns[i]);
            sessions[i].LeaveWorkbook();
        }
        if (options.isManaged) {
            tell("the add-in manager removes it: xlAutoRemove", addIns[i]);
            sessions[i].Removed();
        }
        tell("Excel closes the add-in: xlAutoClose", addIns[i]);
        sessions[i].Close();
    }
}

int Run(const RunOptions& options, const std::filesystem::path& folder, std::ostream& out,
        std::ostream& err) try {
    SheetFiles sheets(options.sheets, err);
    if (!sheets.Good()) return kBadInput;
    std::vector<std::filesystem::path> addIns;
    for (const std::string& addIn : options.addIns) addIns.push_back(PathFrom(addIn));
    if (addIns.empty()) addIns.push_back(folder / "kestrolumen.xll");
    Host host;
    TraceWriter trace(host, options.trace ? &err : nullptr);
    Play(options, addIns, host, trace, sheets);
    if (sheets.Good()) sheets.Print(out);
    out.flush();
    const bool isFaultless = sheets.PrintFaults(err);
    const Account account = host.GetAccount();
    if (options.trace || !account.Balanced()) err << "account: " << Describe(account) << '\n';
    const bool isFaulty = PrintFindings(host, err);
    if (!account.Balanced()) err << "excelhost: the add-in's account isn't balanced\n";
    if (!account.Balanced() || isFaulty) return kBadAccount;
    return isFaultless ? kDone : kBadInput;
} catch (const AddInDied& error) {
    err << "excelhost: " << error.what() << '\n';
    return kAddInDied;
} catch (const std::runtime_error& error) {
    err << "excelhost: " << error.what() << '\n';
    return kBadInput;
}

}  // namespace

int Finish(int code, std::ostream& out, std::ostream& err) {
    const bool written = static_cast<bool>(out.flush());
    if (!written) err << "excelhost: the output can't be written\n";
    const bool told = static_cast<bool>(err.flush());
    return code == kDone && !(written && told) ? kBadInput : code;
}

int RunProgram(std::span<const std::string> arguments, const std::filesystem::path& folder, std::ostream& out,
               std::ostream& err) try {
    if (arguments.empty()) throw UsageError("a command is missing");
    if (AsksForHelp(arguments)) {
        out << kHelpOfCommands << FunctionLines() << kHelpOfOptions;
        return Finish(kDone, out, err);
    }
    if (arguments.front() != "run") throw UsageError("unknown command '" + arguments.front() + "'");
    return Finish(Run(ParseRunOptions(arguments.subspan(1)), folder, out, err), out, err);
} catch (const UsageError& error) {
    err << "excelhost: " << error.what() << "; 'excelhost --help' tells more\n";
    return kBadUsage;
}

}  // namespace excelhost
