// excelhost eval: formulas of the command line, a value a line; many times over to see what it does to memory.
#include "excelhost/commands/formulas.h"
#include "excelhost/commands/play.h"
#include "excelhost/commands/progress.h"
#include "excelhost/commands/soak.h"
#include "excelhost/program.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>

namespace excelhost {
namespace {

constexpr const char* kDescription =
    R"(Calculates formulas through an add-in and prints a value a line, an array as {1,2;3,4}. A formula may begin with "=" or
not, and is calculated as an array formula. 'excelhost run --help' tells what formulas know. They refer to the cells of
the sheets that --sheet gives and are calculated as if they stood right of the first one; without it, a reference is
refused.
)";

struct EvalOptions {
    SessionOptions session;
    std::vector<std::string> sheets;
    std::uint64_t repeat = 1;
};

class Evaluator {
  public:
    Evaluator(const EvalOptions& options, std::span<const std::string> formulas, Surroundings& around)
        : options_(options), around_(around), formulas_(options.sheets, around.err) {
        for (const std::string& formula : formulas) formulas_.Add(formula);
        values_.resize(formulas.size());
    }

    [[nodiscard]] bool Good() const { return formulas_.Good(); }

    void Calculate(Host& host) {
        const OpenFormulas open(formulas_, host);
        for (std::size_t i = 0; i < formulas_.Count(); ++i) faults_.push_back(open.Faults(i));
        const auto once = [&] {
            for (std::size_t i = 0; i < values_.size(); ++i) values_[i] = open.Calculate(i);
        };
        if (options_.repeat == 1) return once();
        ProgressBar bar(options_.session.progress && around_.errIsTerminal, "eval", around_.err);
        const auto begin = std::chrono::steady_clock::now();
        course_ = Soak(options_.repeat, once, [&](auto done, auto all) { bar.Set(done, all); });
        seconds_ = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    }

    [[nodiscard]] std::vector<ReportedSheet> Reported() const {
        return formulas_.Reported([this](std::size_t index) { return LineOf(values_[index]); });
    }

    [[nodiscard]] int Tell() {
        bool isGood = formulas_.PrintFaults(around_.err);
        for (std::size_t i = 0; i < values_.size(); ++i) {
            around_.out << LineOf(values_[i]) << '\n';
            for (const std::string& fault : faults_[i]) {
                around_.err << "excelhost: formula " << i + 1 << ": " << fault << '\n';
                isGood = false;
            }
        }
        around_.out.flush();
        const bool isFlat = course_.samples.empty() || TellCourse();
        return !isFlat ? kBadAccount : isGood ? kDone : kBadInput;
    }

  private:
    // Whether memory stays flat.
    bool TellCourse() {
        const std::string calls = std::to_string(options_.repeat) + " repetitions";
        std::array<char, 64> time{};
        (void)std::snprintf(time.data(), time.size(), "%.2f s", seconds_);
        around_.err << calls << " in " << time.data() << "; resident memory "
                    << Mebibytes(course_.samples.front()) << " at the start, "
                    << Mebibytes(course_.samples.back()) << " at the end";
        const double growth = GrowthOf(course_);
        if (growth == 0) {
            around_.err << ": flat\n";
            return true;
        }
        around_.err << "\nexcelhost: memory grows by " << std::llround(growth) << " bytes a repetition\n";
        return false;
    }

    const EvalOptions& options_;
    Surroundings& around_;
    Formulas formulas_;
    std::vector<Value> values_;
    std::vector<std::vector<std::string>> faults_;
    MemoryCourse course_;
    double seconds_ = 0;
};

int Eval(EvalOptions& options, std::span<const std::string> operands, Surroundings& around) {
    if (operands.empty()) throw UsageError("the name of an add-in is missing");
    if (operands.size() == 1)
        throw UsageError("a formula is missing behind the add-in '" + operands[0] + "'");
    options.session.addIns.insert(options.session.addIns.begin(), operands[0]);
    Evaluator evaluator(options, operands.subspan(1), around);
    if (!evaluator.Good()) return kBadInput;
    const Act act{"the formulas are calculated", [&](Host& host) { evaluator.Calculate(host); },
                  [&](Host&) { return evaluator.Tell(); }, [&] { return evaluator.Reported(); }};
    return Play(options.session, act, around);
}

}  // namespace

Command EvalCommand() {
    const auto options = std::make_shared<EvalOptions>();
    std::vector<Option> all = {
        SheetOption(options->sheets),
        CountOption(
            "--repeat", "N",
            "calculates all N times, tells the time and the resident memory at the start and at the end, "
            "and gives exit code 3 when it keeps growing",
            1, options->repeat),
    };
    return {"eval",
            "calculates formulas through an add-in and prints a value a line",
            {"ADDIN.xll FORMULA... [options]"},
            kDescription,
            WithSessionOptions(std::move(all), options->session),
            [options](std::span<const std::string> operands, Surroundings& around) {
                return Eval(*options, operands, around);
            }};
}

}  // namespace excelhost
