#include "excelhost/commands/play.h"

#include "excelhost/companion.h"
#include "excelhost/machine/allocations.h"
#include "excelhost/program.h"
#include "excelhost/session.h"
#include "excelhost/sheetfiles.h"

#include <array>
#include <deque>
#include <mutex>
#include <optional>
#include <span>

namespace excelhost {
namespace {

// Writes each entry as it is completed, and the milestones between them.
class TraceWriter {
  public:
    TraceWriter(Host& host, std::ostream* err, const std::function<void(const Entry&)>& watch)
        : err_(err), watch_(watch) {
        host.KeepTrace(false);
        if (err_ != nullptr || watch_) host.OnEntry([this](const Entry& entry) { Take(entry); });
    }
    void Milestone(const std::string& text) {
        const std::lock_guard lock(mutex_);
        if (err_ != nullptr) *err_ << "-- " << text << '\n';
    }

  private:
    void Take(const Entry& entry) {
        const std::lock_guard lock(mutex_);
        if (err_ != nullptr) *err_ << Describe(entry) << '\n';
        if (watch_) watch_(entry);
    }

    std::ostream* err_;
    const std::function<void(const Entry&)>& watch_;
    std::mutex mutex_;
};

// The page of the session, as far as it gets.
class ReportWriter {
  public:
    ReportWriter(const std::filesystem::path& file, std::span<const std::filesystem::path> addIns,
                 const Act& act)
        : report_(file, addIns), sheets_(act.sheets ? act.sheets() : std::vector<ReportedSheet>{}) {
        report_.ShowSheets(sheets_);
    }
    void Finish(const Host& host) {
        report_.ShowValues(sheets_);
        report_.Close(host);
    }
    // What ended the session is the greater trouble.
    void GiveUp(const Host& host, std::string_view why) noexcept try {
        report_.Close(host, why);
    } catch (const std::exception&) {
    }

  private:
    Report report_;
    std::vector<ReportedSheet> sheets_;
};

// The add-ins, from their opening to their close.
class Troupe {
  public:
    Troupe(const SessionOptions& options, std::span<const std::filesystem::path> addIns, Host& host,
           TraceWriter& trace)
        : options_(options), addIns_(addIns), host_(host), trace_(trace) {}

    void Open() {
        static constexpr std::array<const Network*, 1> networks = {&kIrisNetwork};
        if (HasWorkbook() && options_.workbookName != "none") {
            OpenCompanion(host_, Wide("Kestrolumen." + options_.workbookName), networks);
        }
        for (const std::filesystem::path& addIn : addIns_) OpenOne(addIn);
        for (std::size_t i = 0; options_.cancelsClose && i < sessions_.size(); ++i) {
            Tell("Excel would end, and the user cancels: xlAutoClose", addIns_[i]);
            sessions_[i].CancelledClose();
        }
    }

    // In the reverse order of their opening.
    void Close() {
        for (std::size_t i = sessions_.size(); i-- > 0;) {
            if (HasWorkbook() && sessions_[i].KnowsWorkbook()) {
                Tell("the companion workbook leaves: UninitializeXlaInformation", addIns_[i]);
                sessions_[i].LeaveWorkbook();
            }
            if (options_.isManaged) {
                Tell("the add-in manager removes it: xlAutoRemove", addIns_[i]);
                sessions_[i].Removed();
            }
            Tell("Excel closes the add-in: xlAutoClose", addIns_[i]);
            sessions_[i].Close();
        }
    }

  private:
    [[nodiscard]] bool HasWorkbook() const { return options_.companion != "none"; }

    void Tell(const std::string& what, const std::filesystem::path& addIn) {
        trace_.Milestone(addIns_.size() == 1 ? what : what + " of " + addIn.filename().string());
    }

    void OpenOne(const std::filesystem::path& addIn) {
        Tell("Excel loads the add-in: xlAutoOpen", addIn);
        Session& session = sessions_.emplace_back(host_, addIn, [&](HMODULE module) {
            if (options_.failAllocation == 0 || WatchAllocations(module)) return;
            throw AddInError("the add-in '" + addIn.filename().string() +
                             "' takes no allocator from a library: --fail-allocation can't reach it");
        });
        if (options_.isManaged) {
            Tell("the add-in manager asks for its name: xlAddInManagerInfo12", addIn);
            trace_.Milestone("it is \"" + session.LongName() + "\"");
            Tell("the add-in manager adds it: xlAutoAdd", addIn);
            session.Added();
        }
        if (!HasWorkbook() || !session.KnowsWorkbook()) return;
        Tell("the companion workbook introduces itself: InitializeXlaInformationVB", addIn);
        session.Handshake();
    }

    const SessionOptions& options_;
    std::span<const std::filesystem::path> addIns_;
    Host& host_;
    TraceWriter& trace_;
    std::deque<Session> sessions_;
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

}  // namespace

std::vector<std::filesystem::path> AddInsOf(const SessionOptions& options,
                                            const std::filesystem::path& ownFolder) {
    std::vector<std::filesystem::path> addIns;
    for (const std::string& addIn : options.addIns) addIns.push_back(PathFrom(addIn));
    if (addIns.empty()) addIns.push_back(ownFolder / "kestrolumen.xll");
    return addIns;
}

int Play(const SessionOptions& options, const Act& act, Surroundings& around) {
    const std::vector<std::filesystem::path> addIns = AddInsOf(options, around.folder);
    std::optional<ReportWriter> report;
    if (!options.report.empty()) report.emplace(PathFrom(options.report), addIns, act);
    Host host;
    for (const ScriptedRefusal& refusal : options.refusals) {
        host.RefuseNth(refusal.function, refusal.nth, refusal.returnCode);
    }
    FailAllocation(options.failAllocation);
    if (options.timeout > 0 && around.limitTime) around.limitTime(options.timeout);
    TraceWriter trace(host, options.trace ? &around.err : nullptr, act.watch);
    try {
        Troupe troupe(options, addIns, host, trace);
        troupe.Open();
        trace.Milestone(act.milestone);
        act.perform(host);
        host.CalculationEnded();
        troupe.Close();
    } catch (const std::exception& error) {
        if (report) report->GiveUp(host, error.what());
        throw;
    }
    const int code = act.tell(host);
    around.out.flush();
    if (options.failAllocation > 0) {
        const std::uint64_t seen = AllocationsSeen();
        around.err << "excelhost: the add-in allocated " << seen << " times"
                   << (seen < options.failAllocation
                           ? ", none failed\n"
                           : ", of which number " + std::to_string(options.failAllocation) + " failed\n");
    }
    const Account account = host.GetAccount();
    if (options.trace || !account.Balanced()) around.err << "account: " << Describe(account) << '\n';
    const bool isFaulty = PrintFindings(host, around.err);
    if (!account.Balanced()) around.err << "excelhost: the add-in's account isn't balanced\n";
    if (report) report->Finish(host);
    return account.Balanced() && !isFaulty ? code : kBadAccount;
}

}  // namespace excelhost
