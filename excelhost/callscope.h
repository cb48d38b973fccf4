// Whose code runs on a thread, and what it has called of Excel lately: what Excel knows when an add-in calls it,
// and what is told when the program ends in an add-in.
#pragma once

#include "excelhost/journal.h"
#include "excelhost/registrations.h"
#include "excelhost/value.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace excelhost {

// Names the code that the host calls on this thread for as long as it lives; scopes may be nested.
class CallScope {
  public:
    // A procedure of an add-in's life, xlAutoOpen and its kin.
    CallScope(TextView module, const char* procedure)
        : module_(module),
          procedure_(procedure),
          name_(procedure_ + " of " + Utf8(FileNameOf(module))),
          outer_(Enter(this)) {
        journal_.emplace([&] {
            return CallBeginning{CallKind::Procedure, procedure_, Utf8(FileNameOf(module)), {}};
        });
    }
    // A worksheet function, called from a cell if one is given.
    CallScope(const Registration& function, std::optional<Reference> caller) noexcept
        : module_(function.module), function_(&function), caller_(std::move(caller)), outer_(Enter(this)) {}
    ~CallScope() { (void)Enter(outer_); }
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

    // The innermost one of this thread; null outside any.
    [[nodiscard]] static const CallScope* Current() noexcept;

    // As a path or a file name.
    [[nodiscard]] TextView Module() const noexcept { return module_; }
    // Null in a procedure of the add-in's life.
    [[nodiscard]] const Registration* Function() const noexcept { return function_; }
    [[nodiscard]] const std::optional<Reference>& Caller() const noexcept { return caller_; }
    // Empty in a worksheet function.
    [[nodiscard]] const std::string& Procedure() const noexcept { return procedure_; }
    // For people: "'TRY.ADD' of try.xll", "xlAutoOpen of try.xll".
    [[nodiscard]] std::string_view Name() const noexcept {
        return function_ != nullptr ? function_->shownName : name_;
    }

  private:
    // Gives the scope that was current.
    static const CallScope* Enter(const CallScope* scope) noexcept;

    TextView module_;
    std::string procedure_;
    std::string name_;
    const Registration* function_ = nullptr;
    std::optional<Reference> caller_;
    std::optional<JournalCall> journal_;  // of a procedure
    const CallScope* outer_;
};

struct LastCall {
    int function = 0;
    int returnCode = xlretSuccess;
};

// The latest calls of a thread into Excel, however few are traced.
class LastCalls {
  public:
    [[nodiscard]] static LastCalls& OfThisThread() noexcept;

    // Gives the call's number, for its end. Calls may be nested.
    std::size_t Begin(int function) noexcept {
        ring_[count_ % ring_.size()] = {function, xlretSuccess};
        return count_++;
    }
    void End(std::size_t call, int returnCode) noexcept {
        if (count_ - call <= ring_.size()) ring_[call % ring_.size()].returnCode = returnCode;
    }

    // Calls `use` with each, the latest one last.
    template <class Use>
    void Each(Use use) const {
        for (std::size_t i = count_ - std::min(count_, ring_.size()); i < count_; ++i) {
            use(ring_[i % ring_.size()]);
        }
    }

  private:
    std::array<LastCall, 8> ring_{};
    std::size_t count_ = 0;
};

// What is known of a thread. One object, so that whoever asks for the calls of a crashing thread finds its memory there
// already.
struct ThreadNotes {
    std::atomic<const CallScope*> scope = nullptr;  // null outside any
    LastCalls calls;
    std::span<const ThreadNotes* const> awaited;  // the threads that it waits for, while it does

    // Another thread may look at it while the thread stands still.
    [[nodiscard]] static ThreadNotes& OfThisThread() noexcept;
};

}  // namespace excelhost
