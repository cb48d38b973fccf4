#include "excelhost/ledger.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace excelhost {
namespace {

constexpr int kPoison = 0xDD;
constexpr std::size_t kRetiredLimit = std::size_t{16} << 20;  // bytes
// Small values take more for their keeping than they hold: a soak with many of them would look like a leak.
constexpr std::size_t kRetiredValues = 10000;

void ResetPointer(XLOPER12& record) noexcept {
    switch (TypeOf(record)) {
        case xltypeStr:
            record.val.str = nullptr;
            break;
        case xltypeRef:
            record.val.mref.lpmref = nullptr;
            break;
        case xltypeMulti:
            record.val.array.lparray = nullptr;
            break;
        default:
            break;
    }
}

}  // namespace

void Ledger::Offer(const XLOPER12* record) {
    outstanding_.insert(record);
    returned_.erase(record);
}

bool Ledger::Give(const Value& value, XLOPER12& record) {
    Blocks blocks;
    const XLOPER12 made = RecordFrom(value, blocks);
    if (TypeOf(made) == xltypeErr) {
        record.val.err = made.val.err;
        record.xltype = made.xltype;
    } else {
        record = made;
    }
    ++account_.results;
    Offer(&record);
    if (const void* payload = PayloadOf(record)) {
        ++account_.allocated;
        live_.insert_or_assign(payload, LiveValue{std::move(blocks), &record, {}});
        return true;
    }
    return false;
}

void Ledger::SetGiver(const XLOPER12& record, Leak giver) {
    live_.at(PayloadOf(record)).giver = std::move(giver);
}

void Ledger::Fail(XLOPER12& record) {
    ++account_.failures;
    Offer(&record);
}

std::string Ledger::TakeBack(XLOPER12& record) {
    const void* payload = PayloadOf(record);
    if (const auto value = live_.find(payload); payload != nullptr && value != live_.end()) {
        // A copy of the record may be offered in its place: Excel knows its memory, not the record.
        outstanding_.erase(value->second.record);
        returned_.insert(value->second.record);
        returned_.insert(&record);
        ++account_.returned;
        ++account_.freed;
        Retire(payload, std::move(value->second.blocks));
        live_.erase(value);
        ResetPointer(record);
        return {};
    }
    if (payload == nullptr && outstanding_.erase(&record) != 0) {
        returned_.insert(&record);
        ++account_.returned;
        return {};
    }
    if (payload == nullptr ? returned_.contains(&record) : retiredPayloads_.contains(payload)) {
        ++account_.freedTwice;
        return std::string(kFreedBefore);
    }
    ++account_.foreign;
    return std::string(kNotOurs);
}

std::vector<Leak> Ledger::Leaks() const {
    std::vector<Leak> leaks;
    for (const auto& [payload, value] : live_) leaks.push_back(value.giver);
    std::sort(leaks.begin(), leaks.end());
    return leaks;
}

void Ledger::Lent(std::size_t records, bool altered) noexcept {
    account_.lent += records;
    account_.lentAltered += altered ? 1 : 0;
}

void Ledger::Retire(const void* payload, Blocks blocks) {
    RetiredValue value{payload, std::move(blocks), 0};
    for (Block& block : value.blocks) {
        std::memset(block.Payload(), kPoison, block.Size());
        value.size += block.Size();
    }
    retiredSize_ += value.size;
    retiredPayloads_.insert(payload);
    retired_.push_back(std::move(value));
    while ((retiredSize_ > kRetiredLimit || retired_.size() > kRetiredValues) && retired_.size() > 1) {
        retiredSize_ -= retired_.front().size;
        retiredPayloads_.erase(retired_.front().payload);
        retired_.pop_front();
    }
}

std::array<std::pair<std::string_view, std::size_t>, 12> NamedCounts(const Account& account) noexcept {
    return {{
        {"lent", account.lent},
        {"lentAltered", account.lentAltered},
        {"results", account.results},
        {"failures", account.failures},
        {"returned", account.returned},
        {"allocated", account.allocated},
        {"freed", account.freed},
        {"leaked", account.Leaked()},
        {"freedTwice", account.freedTwice},
        {"foreign", account.foreign},
        {"flagged", account.flagged},
        {"unfreeable", account.unfreeable},
    }};
}

std::string Describe(const Account& account) {
    const auto count = [](const char* name, std::size_t number) {
        return std::string(name) + " " + std::to_string(number);
    };
    return count("lent", account.lent) + count(", lent and altered", account.lentAltered) +
           count("; flagged for the add-in", account.flagged) + count(", unfreeable", account.unfreeable) +
           count("; results", account.results) + count(", failures", account.failures) +
           count(", returned", account.returned) + count("; allocated", account.allocated) +
           count(", freed", account.freed) + count(", leaked", account.Leaked()) +
           count(", freed twice", account.freedTwice) + count(", foreign", account.foreign);
}

}  // namespace excelhost
