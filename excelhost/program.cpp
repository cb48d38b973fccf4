#include "excelhost/program.h"

#include "excelhost/commandline.h"
#include "excelhost/companion.h"
#include "excelhost/session.h"
#include "excelhost/sheet.h"

#include <array>
#include <deque>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace excelhost {
namespace {

constexpr std::string_view kHelp = R"(excelhost - a simulated Excel for add-ins (XLL)

Usage: excelhost run SHEET.csv [options]
       excelhost describe [--addin FILE]
       excelhost --help

run calculates a sheet: loads the add-ins, calculates every formula of the sheet and prints the values as CSV. Cells
are numbers, texts, TRUE, FALSE, error values and formulas (=...); formulas know Excel's operators, references, IF,
ABS, AVERAGE, COUNT, EXACT, IFERROR, MAX, MIN, NA, ROUND, SUM and the functions that the add-ins have registered.
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
  --trace                prints every call of the add-in into Excel, in order, and the account of all values lent,
                         allocated and freed, to the standard error stream

Exit code: 0 done; 1 something is wrong with the sheet or the add-in; 2 something is wrong with the command line;
3 the add-in leaked a value, freed one twice, or freed or changed one that it was only lent.
)";

// Something wrong with what the command line names.
class InputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct RunOptions {
    std::string sheet;
    std::vector<std::string> addIns;  // ours, beside the program, when empty
    std::string companion = "iris";
    std::string workbookName = "XLA";
    bool trace = false;
};

std::filesystem::path PathFrom(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

RunOptions ParseRunOptions(std::span<const std::string> arguments) {
    static constexpr std::array<std::string_view, 2> companions = {"iris", "none"};
    static constexpr std::array<std::string_view, 3> workbookNames = {"XLA", "XLS", "none"};
    RunOptions run;
    const std::array options = {
        SwitchOption("--trace", run.trace),
        ListOption("--addin", run.addIns),
        ChoiceOption("--companion", companions, run.companion),
        ChoiceOption("--workbook-name", workbookNames, run.workbookName),
    };
    const std::vector<std::string> operands = ParseOptions(arguments, options);
    if (operands.empty()) throw UsageError("the name of a sheet is missing");
    if (operands.size() > 1) throw UsageError("one sheet is expected; what is '" + operands[1] + "'?");
    run.sheet = operands.front();
    return run;
}

std::string ReadFile(const std::string& name) {
    const std::filesystem::path path = PathFrom(name);
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) throw InputError(name + ": is a folder");
    std::ifstream file(path, std::ios::binary);
    if (!file && !std::filesystem::exists(path, error) && !error) {
        throw InputError(name + ": there is no such file");
    }
    if (!file) throw InputError(name + ": can't be opened, though it is there");
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (file.bad()) throw InputError(name + ": can't be read");
    return text;
}

void PrintFaults(const std::string& sheet, const std::vector<CellFault>& faults, std::ostream& err) {
    for (const CellFault& fault : faults) {
        err << sheet << ": row " << fault.Row() << ", column " << fault.Column() << " ("
            << CellName(static_cast<RW>(fault.Row() - 1), static_cast<COL>(fault.Column() - 1))
            << "): " << fault.what() << '\n';
    }
}

// The name that xlSheetNm gives: "[iris.csv]iris".
Text SheetName(const std::string& file) {
    const std::filesystem::path path = PathFrom(file);
    const auto book = path.filename().u8string();
    const auto sheet = path.stem().u8string();
    return Wide("[" + std::string(book.begin(), book.end()) + "]" + std::string(sheet.begin(), sheet.end()));
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

// The whole session; the faults found in calculated cells.
std::vector<CellFault> Play(const RunOptions& options, std::span<const std::filesystem::path> addIns,
                            Host& host, TraceWriter& trace, Sheet& sheet) {
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
        if (!hasWorkbook || !session.KnowsWorkbook()) continue;
        tell("the companion workbook introduces itself: InitializeXlaInformationVB", addIn);
        session.Handshake();
    }
    trace.Milestone("the sheet is calculated");
    std::vector<CellFault> faults = sheet.Calculate(host, 1, SheetName(options.sheet));
    for (std::size_t i = sessions.size(); i-- > 0;) {
        if (hasWorkbook && sessions[i].KnowsWorkbook()) {
            tell("the companion workbook leaves: UninitializeXlaInformation", addIns[i]);
            sessions[i].LeaveWorkbook();
        }
        tell("Excel closes the add-in: xlAutoClose", addIns[i]);
        sessions[i].Close();
    }
    return faults;
}

int Run(const RunOptions& options, const std::filesystem::path& folder, std::ostream& out,
        std::ostream& err) try {
    Sheet sheet(ReadFile(options.sheet));
    std::vector<std::filesystem::path> addIns;
    for (const std::string& addIn : options.addIns) addIns.push_back(PathFrom(addIn));
    if (addIns.empty()) addIns.push_back(folder / "kestrolumen.xll");
    Host host;
    TraceWriter trace(host, options.trace ? &err : nullptr);
    const std::vector<CellFault> faults = Play(options, addIns, host, trace, sheet);
    out << sheet.Csv();
    out.flush();
    PrintFaults(options.sheet, faults, err);
    const Account account = host.GetAccount();
    if (options.trace || !account.Balanced()) err << "account: " << Describe(account) << '\n';
    if (!account.Balanced()) {
        err << "excelhost: the add-in's account isn't balanced\n";
        return kBadAccount;
    }
    return faults.empty() ? kDone : kBadInput;
} catch (const SheetFaults& faults) {
    PrintFaults(options.sheet, faults.All(), err);
    return kBadInput;
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
        out << kHelp;
        return Finish(kDone, out, err);
    }
    if (arguments.front() != "run") throw UsageError("unknown command '" + arguments.front() + "'");
    return Finish(Run(ParseRunOptions(arguments.subspan(1)), folder, out, err), out, err);
} catch (const UsageError& error) {
    err << "excelhost: " << error.what() << "; 'excelhost --help' tells more\n";
    return kBadUsage;
}

}  // namespace excelhost
