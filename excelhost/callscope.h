// Whose code runs on a thread: what Excel knows when an add-in calls it.
#pragma once

#include "excelhost/registrations.h"
#include "excelhost/value.h"

#include <optional>
#include <string>

namespace excelhost {

// Names the code that the host calls on this thread for as long as it lives; scopes may be nested.
class CallScope {
  public:
    // A procedure of an add-in's life, xlAutoOpen and its kin.
    CallScope(TextView module, const char* procedure) noexcept : module_(module), procedure_(procedure) {
        Enter();
    }
    // A worksheet function, called from a cell if one is given.
    CallScope(const Registration& function, std::optional<Reference> caller) noexcept
        : module_(function.module), function_(&function), caller_(std::move(caller)) {
        Enter();
    }
    ~CallScope() { current_ = outer_; }
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

    // The innermost one of this thread; null outside any.
    [[nodiscard]] static const CallScope* Current() noexcept { return current_; }

    // As a path or a file name.
    [[nodiscard]] TextView Module() const noexcept { return module_; }
    // Null in a procedure of the add-in's life.
    [[nodiscard]] const Registration* Function() const noexcept { return function_; }
    [[nodiscard]] const std::optional<Reference>& Caller() const noexcept { return caller_; }
    // Empty in a worksheet function.
    [[nodiscard]] const std::string& Procedure() const noexcept { return procedure_; }
    // For people: "'TRY.ADD' of try.xll", "xlAutoOpen of try.xll".
    [[nodiscard]] std::string Name() const {
        return (function_ != nullptr ? "'" + Utf8(function_->functionText) + "'" : procedure_) + " of " +
               Utf8(FileNameOf(module_));
    }

  private:
    void Enter() noexcept {
        outer_ = current_;
        current_ = this;
    }

    TextView module_;
    std::string procedure_;
    const Registration* function_ = nullptr;
    std::optional<Reference> caller_;
    const CallScope* outer_ = nullptr;
    static inline thread_local const CallScope* current_ = nullptr;
};

}  // namespace excelhost
