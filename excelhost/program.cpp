#include "excelhost/program.h"

#include "excelhost/companion.h"
#include "excelhost/session.h"
#include "excelhost/sheet.h"

#include <array>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace excelhost {
namespace {

constexpr std::string_view kHelp = R"(excelhost - a simulated Excel for the add-in kestrolumen.xll

Usage: excelhost run SHEET.csv [options]
       excelhost describe [--addin FILE]
       excelhost --help

run calculates a sheet: loads the add-in, lets the companion workbook introduce itself, calculates every formula of
the sheet and prints the values as CSV. Cells are numbers, texts, TRUE, FALSE, error values and formulas (=...);
formulas know Excel's operators, references, IF, ABS, AVERAGE, COUNT, EXACT, IFERROR, MAX, MIN, NA, ROUND, SUM and
the add-in's functions:

  NetOutputPrediction(inputs, network, fallback, low, high)                the likeliest category
  NetOutputProbabilityOfPrediction(inputs, network, fallback, low, high)   its probability
  NetOutputProbabilityOfCategory(inputs, network, category, fallback, low, high)

describe prints what the add-in knows of this machine, its folders and the add-in's own file.

Options:
  --addin FILE           the add-in; kestrolumen.xll beside this program if left out
  --companion NAME       the networks of the companion workbook: iris (its default), or none: no workbook is
                         loaded, so the add-in's functions aren't registered and give #NAME?
  --workbook-name NAME   the name under which the workbook is open: XLA (Kestrolumen.XLA, the default), XLS, or
                         none: it introduces itself but can't be called, so its functions give #VALUE!
  --trace                prints every call of the add-in into Excel, in order, and the account of all values lent,
                         allocated and freed, to the standard error stream

Exit code: 0 done; 1 something is wrong with the sheet or the add-in; 2 something is wrong with the command line;
3 the add-in leaked a value, freed one twice, or freed or changed one that it was only lent.
)";

// A mistake on the command line.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Something wrong with what the command line names.
class InputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct RunOptions {
    std::string sheet;
    std::optional<std::string> addIn;
    std::string companion = "iris";
    std::string workbookName = "XLA";
    bool trace = false;
};

std::filesystem::path PathFrom(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

void RequireOneOf(const std::string& option, const std::string& value,
                  std::span<const std::string_view> known) {
    std::string names;
    for (const std::string_view name : known) {
        if (value == name) return;
        names += (names.empty() ? "" : ", ") + std::string(name);
    }
    throw UsageError(option + " takes one of " + names + ", not '" + value + "'");
}

RunOptions ParseRunOptions(std::span<const std::string> arguments) {
    RunOptions options;
    for (auto next = arguments.begin(); next != arguments.end(); ++next) {
        const std::string& argument = *next;
        const auto value = [&]() -> const std::string& {
            if (++next == arguments.end()) throw UsageError(argument + " needs a value");
            return *next;
        };
        if (argument == "--trace") {
            options.trace = true;
        } else if (argument == "--addin") {
            options.addIn = value();
        } else if (argument == "--companion") {
            options.companion = value();
        } else if (argument == "--workbook-name") {
            options.workbookName = value();
        } else if (argument.starts_with("-")) {
            throw UsageError("unknown option '" + argument + "'");
        } else if (options.sheet.empty() && !argument.empty()) {
            options.sheet = argument;
        } else {
            throw UsageError("one sheet is expected; what is '" + argument + "'?");
        }
    }
    if (options.sheet.empty()) throw UsageError("the name of a sheet is missing");
    RequireOneOf("--companion", options.companion, std::array<std::string_view, 2>{"iris", "none"});
    RequireOneOf("--workbook-name", options.workbookName,
                 std::array<std::string_view, 3>{"XLA", "XLS", "none"});
    return options;
}

std::string ReadFile(const std::string& name) {
    const std::filesystem::path path = PathFrom(name);
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) throw InputError(name + ": is a folder");
    std::ifstream file(path, std::ios::binary);
    if (!file) throw InputError(name + ": can't be opened");
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
    void Milestone(const char* text) {
        if (err_ != nullptr) *err_ << "-- " << text << '\n';
    }

  private:
    std::ostream* err_;
};

// The whole session; the faults found in calculated cells.
std::vector<CellFault> Play(const RunOptions& options, const std::filesystem::path& addIn, Host& host,
                            TraceWriter& trace, Sheet& sheet) {
    const bool hasWorkbook = options.companion != "none";
    static constexpr std::array<const Network*, 1> networks = {&kIrisNetwork};
    if (hasWorkbook && options.workbookName != "none") {
        OpenCompanion(host, Wide("Kestrolumen." + options.workbookName), networks);
    }
    trace.Milestone("Excel loads the add-in: xlAutoOpen");
    Session session(host, addIn);
    if (hasWorkbook) {
        trace.Milestone("the companion workbook introduces itself: InitializeXlaInformationVB");
        session.Handshake();
    }
    trace.Milestone("the sheet is calculated");
    std::vector<CellFault> faults = sheet.Calculate(host, 1, SheetName(options.sheet));
    if (hasWorkbook) {
        trace.Milestone("the companion workbook leaves: UninitializeXlaInformation");
        session.LeaveWorkbook();
    }
    trace.Milestone("Excel closes the add-in: xlAutoClose");
    session.Close();
    return faults;
}

int Run(const RunOptions& options, const std::filesystem::path& folder, std::ostream& out,
        std::ostream& err) try {
    Sheet sheet(ReadFile(options.sheet));
    const std::filesystem::path addIn = options.addIn ? PathFrom(*options.addIn) : folder / "kestrolumen.xll";
    Host host;
    TraceWriter trace(host, options.trace ? &err : nullptr);
    const std::vector<CellFault> faults = Play(options, addIn, host, trace, sheet);
    out << sheet.Csv();
    out.flush();
    PrintFaults(options.sheet, faults, err);
    const Account account = host.GetAccount();
    if (options.trace || !account.Balanced()) err << "account: " << Describe(account) << '\n';
    if (!account.Balanced()) {
        err << "excelhost: the add-in's account isn't balanced\n";
        return kBadAccount;
    }
    if (!out) throw InputError("the result can't be written");
    return faults.empty() ? kDone : kBadInput;
} catch (const SheetFaults& faults) {
    PrintFaults(options.sheet, faults.All(), err);
    return kBadInput;
} catch (const std::runtime_error& error) {
    err << "excelhost: " << error.what() << '\n';
    return kBadInput;
}

}  // namespace

int RunProgram(std::span<const std::string> arguments, const std::filesystem::path& folder, std::ostream& out,
               std::ostream& err) try {
    if (arguments.empty()) throw UsageError("a command is missing");
    for (const std::string& argument : arguments) {
        if (argument == "--help" || argument == "-h") {
            out << kHelp;
            return kDone;
        }
    }
    if (arguments.front() == "run") return Run(ParseRunOptions(arguments.subspan(1)), folder, out, err);
    throw UsageError("unknown command '" + arguments.front() + "'");
} catch (const UsageError& error) {
    err << "excelhost: " << error.what() << "; 'excelhost --help' tells more\n";
    return kBadUsage;
}

}  // namespace excelhost
