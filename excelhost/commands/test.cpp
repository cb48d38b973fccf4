// excelhost test: the cases of a file, held against what an add-in gives.
#include "excelhost/commands/cases.h"
#include "excelhost/commands/formulas.h"
#include "excelhost/commands/play.h"
#include "excelhost/commands/progress.h"
#include "excelhost/program.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <memory>
#include <optional>

namespace excelhost {
namespace {

constexpr const char* kDescription =
    R"help(Calculates the formulas of a file of cases through an add-in and compares each with the value that it must give. The
file is CSV in UTF-8, a row a case:

  formula,expected,tolerance,name           a first row like this one is skipped
  "ADDTWO(1,2)",3
  "ADDTWO(0.1,1)",1.1,0.001,nearly          a number may be off by 0.001,
  "ADDTWO(1000,2)",1000,1%                  or by a part of the expected one
  "ADDTWO(""x"",1)",#VALUE!                 error values, TRUE, FALSE and texts as cells hold them;
  "ADDTWO(2,2)&""""","=""4"""               a text that looks like a number is written ="4"
  A1:B2*2,"{2,4;6,8}"                       an array

Without a tolerance numbers must agree in 15 digits. Formulas are those of 'excelhost eval'; --sheet gives the cells that
they may refer to. A line is printed for each case that fails, and a summary.

Exit code: 0 all cases pass; 1 a case fails, or the input is wrong; any other as 'excelhost --help' tells.
)help";

struct TestOptions {
    SessionOptions session;
    std::vector<std::string> sheets;
    std::string junit;
};

// What was found wrong with the add-in, in words.
std::vector<std::string> FaultsOf(const Host& host) {
    std::vector<std::string> faults;
    for (const Finding& finding : host.Findings()) {
        if (finding.isFault) faults.push_back(Describe(finding));
    }
    if (const Account account = host.GetAccount(); !account.Balanced()) faults.push_back(Describe(account));
    return faults;
}

class TestRun {
  public:
    TestRun(const TestOptions& options, const std::string& file, Surroundings& around)
        : options_(options),
          file_(file),
          around_(around),
          cases_(ReadCases(file)),
          verdicts_(cases_.size()),
          formulas_(options.sheets, around.err) {
        for (std::size_t i = 0; i < cases_.size(); ++i) {
            verdicts_[i].problem =
                Excerpt(cases_[i].formula) + " isn't calculated: the add-in ended the program";
            places_.push_back(formulas_.Count());
            try {
                formulas_.Add(cases_[i].formula);
            } catch (const InputError& fault) {
                places_.back().reset();
                verdicts_[i].problem = fault.what();
            }
        }
    }

    [[nodiscard]] bool Good() const { return formulas_.Good(); }

    void Report(const std::vector<std::string>& faults) const {
        if (options_.junit.empty()) return;
        std::ofstream file(PathFrom(options_.junit), std::ios::binary);
        file << JUnitReport(file_, cases_, verdicts_, faults);
        file.close();
        if (!file) throw InputError(Excerpt(options_.junit) + ": can't be written");
    }

    void Calculate(Host& host) {
        const OpenFormulas open(formulas_, host);
        ProgressBar bar(options_.session.progress && around_.errIsTerminal, "test", around_.err);
        for (std::size_t i = 0; i < cases_.size(); ++i) {
            bar.Set(i, cases_.size());
            if (places_[i]) verdicts_[i] = Run(open, *places_[i], cases_[i]);
        }
    }

    [[nodiscard]] int Tell(const Host& host) {
        const bool isGood = formulas_.PrintFaults(around_.err);
        std::size_t failed = 0;
        for (std::size_t i = 0; i < cases_.size(); ++i) {
            if (verdicts_[i].kind == Verdict::Kind::Passed) continue;
            ++failed;
            const Case& one = cases_[i];
            const std::string name = one.name != one.formula ? " (" + Excerpt(one.name) + ")" : "";
            around_.out << Excerpt(file_) << ": row " << one.row << name << ": "
                        << Describe(one, verdicts_[i]) << '\n';
        }
        around_.out << cases_.size() << (cases_.size() == 1 ? " case, " : " cases, ");
        if (failed == 0) {
            around_.out << (cases_.size() == 1 ? "passed\n" : "all passed\n");
        } else {
            around_.out << failed << " failed\n";
        }
        Report(FaultsOf(host));
        return failed == 0 && isGood ? kDone : kBadInput;
    }

    // The formulas as a report shows them.
    [[nodiscard]] std::vector<ReportedSheet> Reported() const {
        std::vector<std::string> got(formulas_.Count());
        for (std::size_t i = 0; i < cases_.size(); ++i) {
            if (places_[i]) got[*places_[i]] = verdicts_[i].got;
        }
        return formulas_.Reported([got = std::move(got)](std::size_t i) { return got[i]; });
    }

  private:
    static Verdict Run(const OpenFormulas& open, std::size_t place, const Case& one) {
        const auto begin = std::chrono::steady_clock::now();
        const Value value = open.Calculate(place);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        Verdict verdict{Meets(value, one) ? Verdict::Kind::Passed : Verdict::Kind::Failed,
                        LineOf(value),
                        {},
                        time.count()};
        for (const std::string& fault : open.Faults(place)) {
            verdict.kind = Verdict::Kind::Failed;
            verdict.problem += (verdict.problem.empty() ? "" : "; ") + fault;
        }
        return verdict;
    }

    const TestOptions& options_;
    std::string file_;
    Surroundings& around_;
    std::vector<Case> cases_;
    std::vector<Verdict> verdicts_;
    Formulas formulas_;
    std::vector<std::optional<std::size_t>> places_;  // of the cases among the formulas
};

int Test(TestOptions& options, std::span<const std::string> operands, Surroundings& around) {
    if (operands.size() != 2) throw UsageError("test takes the names of an add-in and of a file of cases");
    options.session.addIns.insert(options.session.addIns.begin(), operands[0]);
    TestRun run(options, operands[1], around);
    if (!run.Good()) return kBadInput;
    // Whoever reads the report of an add-in that ends the program finds every case in it.
    run.Report({});
    const Act act{"the cases are calculated", [&](Host& host) { run.Calculate(host); },
                  [&](Host& host) { return run.Tell(host); }, [&] { return run.Reported(); }};
    return Play(options.session, act, around);
}

}  // namespace

Command TestCommand() {
    const auto options = std::make_shared<TestOptions>();
    std::vector<Option> all = {
        SheetOption(options->sheets),
        TextOption("--junit", "FILE", "writes a report in JUnit's XML format, which build servers show",
                   options->junit),
    };
    return {"test",
            "compares what formulas give with a file of expected values (CSV)",
            {"ADDIN.xll CASES.csv [options]"},
            kDescription,
            WithSessionOptions(std::move(all), options->session),
            [options](std::span<const std::string> operands, Surroundings& around) {
                return Test(*options, operands, around);
            }};
}

}  // namespace excelhost
