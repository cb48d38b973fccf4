// The account of what the host gave to an add-in: which result records it filled, which memory it put into
// them, and what of it came back. Freed memory is poisoned and kept for a while, so that a second free is
// told from a foreign pointer and a late reader sees nonsense instead of the old value.
#pragma once

#include "excelhost/value.h"

#include <array>
#include <compare>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace excelhost {

// What became of the memory and the records that crossed the border. "Value" below is a value with memory of
// its own, a string, an array or a reference, counted once however many pieces it has.
struct Account {
    std::size_t lent = 0;         // argument records lent to worksheet functions
    std::size_t lentAltered = 0;  // calls after which the lent arguments were found changed
    std::size_t results = 0;      // result records of successful calls
    std::size_t failures = 0;     // result records offered to failed calls
    std::size_t returned = 0;     // of both, came back through xlFree
    std::size_t allocated = 0;    // values allocated for results
    std::size_t freed = 0;        // of these, freed
    std::size_t freedTwice = 0;   // records or values offered to xlFree again after they were freed
    std::size_t foreign = 0;      // offered to xlFree without having come from a call into this host

    std::size_t flagged = 0;  // results of worksheet functions flagged xlbitDLLFree and freed by the add-in
    std::size_t unfreeable = 0;  // of the same, where the add-in exports no function to free them

    // Values that never came back.
    [[nodiscard]] std::size_t Leaked() const noexcept { return allocated - freed; }
    // Result records that never came back, with or without memory.
    [[nodiscard]] std::size_t Outstanding() const noexcept { return results + failures - returned; }
    // Nothing leaked, freed twice, foreign, altered or unfreeable.
    [[nodiscard]] bool Balanced() const noexcept {
        return Leaked() == 0 && freedTwice == 0 && foreign == 0 && lentAltered == 0 && unfreeable == 0;
    }
    friend bool operator==(const Account&, const Account&) = default;
};

// One line for people, naming every count.
[[nodiscard]] std::string Describe(const Account& account);

// Each count by a name for programs, which stays.
[[nodiscard]] std::array<std::pair<std::string_view, std::size_t>, 12> NamedCounts(
    const Account& account) noexcept;

// A value that never came back.
struct Leak {
    std::string giver;                // "'TRY.ADD' of try.xll in a result of xlGetName"
    std::optional<std::size_t> call;  // in whose result it was, by its number in the journal, if one is kept
    friend auto operator<=>(const Leak&, const Leak&) = default;  // NOLINT(modernize-use-nullptr)
};

// What is wrong with a record that is freed and can't be.
inline constexpr std::string_view kFreedBefore = "freed a second time";
inline constexpr std::string_view kNotOurs = "not from this host";

class Ledger {
  public:
    // Fills the result record of a successful call. An error value writes its number and type alone, as Excel
    // does: the rest of the record stays what the caller left there.
    // Whether the value has memory of its own.
    bool Give(const Value& value, XLOPER12& record);
    // Names the call that gave such a value, for when it leaks.
    void SetGiver(const XLOPER12& record, Leak giver);
    // Notes the result record of a failed call, which stays untouched.
    void Fail(XLOPER12& record);
    // Frees what Excel put into the record and resets its pointer to null, as Microsoft describes xlFree.
    // What is wrong with the record otherwise; then nothing is freed.
    [[nodiscard]] std::string TakeBack(XLOPER12& record);
    // In the order of their givers' names.
    [[nodiscard]] std::vector<Leak> Leaks() const;
    void Lent(std::size_t records, bool altered) noexcept;
    void Flagged(bool freed) noexcept { ++(freed ? account_.flagged : account_.unfreeable); }

    [[nodiscard]] const Account& Counts() const noexcept { return account_; }

  private:
    struct LiveValue {
        Blocks blocks;
        const XLOPER12* record = nullptr;
        Leak giver;
    };
    void Offer(const XLOPER12* record);
    void Retire(const void* payload, Blocks blocks);

    Account account_;
    std::unordered_map<const void*, LiveValue> live_;  // by payload
    std::unordered_set<const XLOPER12*> outstanding_;  // result records, with or without memory
    std::unordered_set<const XLOPER12*> returned_;     // came back and were not offered anew
    struct RetiredValue {
        const void* payload = nullptr;
        Blocks blocks;
        std::size_t size = 0;
    };
    std::deque<RetiredValue> retired_;
    std::unordered_set<const void*> retiredPayloads_;
    std::size_t retiredSize_ = 0;
};

}  // namespace excelhost
