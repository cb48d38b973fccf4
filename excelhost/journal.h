// A journal of the calls between Excel and add-ins, in both directions: each with its operands, its result, its times
// and what was found wrong with it. It is written as it happens, so that what a program has left behind that an add-in
// ended reaches to the call that it ended in.
//
// Its lines are arrays in JSON without their brackets; report/page/journal.js reads them and tells what they are.
#pragma once

#include "excelhost/value.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace excelhost {

// What can be wrong with a call, as bits.
enum CallMark : unsigned {
    kLeaked = 1,      // what it gave never came back
    kFreedTwice = 2,  // it freed what was freed before
    kForeign = 4,     // it freed what isn't Excel's
    kAltered = 8,     // it changed what it was lent
    kFault = 16,      // any other fault
    kWord = 32,       // worth a word and no more
};

enum class CallKind { Callback, Function, Procedure };

struct CallBeginning {
    CallKind kind = CallKind::Callback;
    std::string name;
    std::string operands;  // for people; of a procedure its add-in
    std::optional<Reference> caller;
};

struct CallEnd {
    std::string result;  // for people; empty when there is none
    int returnCode = xlretSuccess;
    std::string note;  // what was found
    unsigned marks = 0;
};

class Journal {
  public:
    // Becomes the journal of the process until it goes; there is one at a time. `out` gets up to 4 MB of calls.
    // Later ones are counted, and those with a mark are written up to 0.1 MB more.
    explicit Journal(std::ostream& out);
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    // Null when none is kept.
    [[nodiscard]] static Journal* Current() noexcept;

    // Calls of one thread end in the reverse order of their beginnings. Gives the call's number, from 0 on.
    std::size_t Begin(CallBeginning call);
    void End(CallEnd end) noexcept;
    // Marks calls that are over.
    void Mark(CallMark mark, std::vector<std::size_t> numbers);

    // A line of the caller's own.
    void Write(std::string_view line);
    // [["name", calls, time in all, the longest], ...] in JSON; times in tenths of a microsecond.
    [[nodiscard]] std::string Functions() const;
    [[nodiscard]] std::size_t Count() const;

  private:
    struct Sum {
        std::size_t calls = 0;
        std::uint64_t time = 0;
        std::uint64_t longest = 0;
    };
    struct OpenCall {
        std::size_t number = 0;
        std::uint64_t start = 0;
        Sum* sum = nullptr;
        std::optional<CallBeginning> unwritten;
    };
    struct Thread {
        std::size_t number = 0;
        std::vector<OpenCall> open;
    };

    [[nodiscard]] std::uint64_t Now() const noexcept;
    Thread& ThisThread();
    void Append(std::string_view text);
    void AppendSlot(const std::string& text);
    void AppendPlace(const std::optional<Reference>& caller);
    void AppendTime(std::uint64_t now);
    void AppendEnd(const CallEnd& end);
    void Flush();

    std::ostream& out_;
    mutable std::mutex mutex_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::string line_;
    std::size_t written_ = 0;  // bytes of calls
    std::size_t apart_ = 0;    // bytes of calls beyond the limit
    std::size_t count_ = 0;
    std::uint64_t told_ = 0;  // the time that the last line told
    XLREF12 toldCell_{};      // and the cell, on
    IDSHEET toldSheet_ = 1;
    std::size_t tellingThread_ = 0;
    std::map<std::thread::id, Thread> threads_;
    std::unordered_map<std::string, std::size_t> slots_;
    std::map<std::string, Sum> sums_;
};

// A call in the journal for as long as it lives; nothing when none is kept.
class JournalCall {
  public:
    // `beginning` gives a CallBeginning.
    template <class Beginning>
    explicit JournalCall(Beginning beginning) : journal_(Journal::Current()) {
        if (journal_ != nullptr) number_ = journal_->Begin(beginning());
    }
    ~JournalCall() {
        if (journal_ != nullptr) journal_->End(std::move(end));
    }
    JournalCall(const JournalCall&) = delete;
    JournalCall& operator=(const JournalCall&) = delete;

    [[nodiscard]] bool IsKept() const noexcept { return journal_ != nullptr; }
    // Nothing when none is kept.
    [[nodiscard]] std::optional<std::size_t> Number() const noexcept { return number_; }
    // Adds to what was found.
    void Note(std::string_view what, unsigned marks) {
        if (journal_ == nullptr) return;
        end.note += (end.note.empty() ? "" : "; ") + std::string(what);
        end.marks |= marks;
    }

    CallEnd end;

  private:
    Journal* journal_;
    std::optional<std::size_t> number_;
};

// Describe, with the first elements of arrays: 2x3 array {1,2,3;4,5,...}.
[[nodiscard]] std::string DescribeWithElements(const Value& value);
[[nodiscard]] std::string DescribeWithElements(const XLOPER12* record);
// Separated by commas.
[[nodiscard]] std::string DescribeAll(std::span<const Value> values);
[[nodiscard]] std::string DescribeAll(std::span<const LPXLOPER12> records);

}  // namespace excelhost
