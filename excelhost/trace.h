// What a host has seen: each entry of an add-in into the callback, in order.
#pragma once

#include "excelhost/value.h"

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace excelhost {

// One operand or result as a trace keeps it.
struct TracedValue {
    const XLOPER12* record = nullptr;  // where it stood, for comparison only
    DWORD type = 0;                    // without flags; 0 for a null record
    std::string text;                  // Describe(record), "(null)" for a null record
};

// One entry into the callback.
struct Entry {
    std::size_t number = 0;  // 1 for the first entry into this host
    int function = 0;
    int count = 0;  // operands, as the caller gave it
    std::vector<TracedValue> operands;
    int returnCode = xlretSuccess;
    TracedValue result;     // as the callback left it; record is null when the caller wanted none
    bool messages = false;  // xlEnableXLMsgs was in force when the entry came
    bool alerts = true;     // alerts for macro errors were on when the entry came
    bool refused = false;   // by a script
    std::string note;       // why the host refused or what it found wrong; empty otherwise
};

// One line for people: 12 xlUDF("=Book!Function", 0.5, 1x4 array) -> 0.25
[[nodiscard]] std::string Describe(const Entry& entry);

[[nodiscard]] TracedValue Traced(const XLOPER12* record);

// What is wrong with a record that came from outside: a type that isn't one, or a pointer to memory that isn't there.
// Empty when it can be read.
[[nodiscard]] std::string Unreadable(const XLOPER12& record);

// Not locked: who shares it locks it.
class Trace {
  public:
    // Gives the entry its number and, when it is traced or listened to, its operands.
    void Begin(Entry& entry, std::span<const LPXLOPER12> operands);
    // The entry has its result.
    void Complete(const Entry& entry);

    // Whether entries are looked at, by a trace or a listener.
    [[nodiscard]] bool IsWatched() const noexcept { return keeps_ || listener_; }
    void Keep(bool keep) noexcept { keeps_ = keep; }
    void Clear() noexcept { entries_.clear(); }
    void Listen(std::function<void(const Entry&)> listener) { listener_ = std::move(listener); }

    [[nodiscard]] const std::vector<Entry>& Entries() const noexcept { return entries_; }
    [[nodiscard]] const std::function<void(const Entry&)>& Listener() const noexcept { return listener_; }

  private:
    std::vector<Entry> entries_;
    std::size_t count_ = 0;
    bool keeps_ = true;
    std::function<void(const Entry&)> listener_;
};

}  // namespace excelhost
