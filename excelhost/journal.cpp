#include "excelhost/journal.h"

#include "excelhost/characters.h"
#include "excelhost/trace.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <utility>

namespace excelhost {
namespace {

constexpr std::size_t kLimit = 4'000'000;
constexpr std::size_t kApartLimit = 100'000;
constexpr std::size_t kShownElements = 8;

std::atomic<Journal*> current_journal{nullptr};

// The lines' first elements, as report/page/journal.js names them.
constexpr std::string_view kKinds = "012";
constexpr std::string_view kEnd = "3,";
constexpr std::string_view kThread = "4,";
constexpr std::string_view kMarks = "6,";
constexpr std::string_view kApart = "11,";

template <class Number>
void AppendNumber(std::string& text, Number number) {
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    text.append(digits.data(), end);
}

// The elements by `describe(index)`.
template <class Describe>
std::string Elements(std::size_t rows, std::size_t columns, Describe describe) {
    std::string text = std::to_string(rows) + "x" + std::to_string(columns) + " array ";
    const std::size_t count = rows * columns;
    for (std::size_t i = 0; i < std::min(count, kShownElements); ++i) {
        text += (i == 0 ? "{" : i % columns == 0 ? ";" : ",") + describe(i);
    }
    return text + (count > kShownElements ? ",...}" : "}");
}

template <class Item>
std::string Joined(std::span<const Item> items) {
    std::string text;
    for (const auto& item : items) text += (text.empty() ? "" : ", ") + DescribeWithElements(item);
    return text;
}

}  // namespace

Journal::Journal(std::ostream& out) : out_(out) {
    current_journal.store(this);
}

Journal::~Journal() {
    current_journal.store(nullptr);
}

Journal* Journal::Current() noexcept {
    return current_journal.load(std::memory_order_acquire);
}

std::uint64_t Journal::Now() const noexcept {
    const auto time = std::chrono::steady_clock::now() - start_;
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(time).count()) /
           100;
}

Journal::Thread& Journal::ThisThread() {
    return threads_.try_emplace(std::this_thread::get_id(), Thread{threads_.size(), {}}).first->second;
}

// Lines that aren't told in the order of their thread name it first.
void Journal::Append(std::string_view text) {
    const std::size_t thread = ThisThread().number;
    if (std::exchange(tellingThread_, thread) != thread) {
        line_ += kThread;
        AppendNumber(line_, thread);
        line_ += '\n';
    }
    line_ += text;
}

void Journal::AppendSlot(const std::string& text) {
    line_ += ',';
    const auto [slot, isNew] = slots_.try_emplace(text, slots_.size());
    if (isNew) {
        AppendJson(line_, text);
    } else {
        AppendNumber(line_, slot->second);
    }
}

void Journal::AppendPlace(const std::optional<Reference>& caller) {
    if (!caller || caller->areas.empty()) return;
    const XLREF12& cell = caller->areas.front().rectangle;
    AppendNumber(line_ += ',', cell.rwFirst - toldCell_.rwFirst);
    AppendNumber(line_ += ',', cell.colFirst - toldCell_.colFirst);
    toldCell_ = cell;
    if (std::exchange(toldSheet_, caller->sheet) == caller->sheet) return;
    AppendNumber(line_ += ',', static_cast<std::uint64_t>(caller->sheet));
}

void Journal::AppendTime(std::uint64_t now) {
    AppendNumber(line_, now - std::min(now, told_));
    told_ = std::max(now, told_);
}

// What has nothing to tell behind it is left out.
void Journal::AppendEnd(const CallEnd& end) {
    const int fields = end.marks != 0                   ? 4
                       : !end.note.empty()              ? 3
                       : end.returnCode != xlretSuccess ? 2
                       : !end.result.empty()            ? 1
                                                        : 0;
    const auto slot = [&](const std::string& text) {
        text.empty() ? void(line_ += ",null") : AppendSlot(text);
    };
    if (fields > 0) slot(end.result);
    if (fields > 1) AppendNumber(line_ += ',', end.returnCode);
    if (fields > 2) slot(end.note);
    if (fields > 3) AppendNumber(line_ += ',', end.marks);
}

void Journal::Flush() {
    out_.write(line_.data(), static_cast<std::streamsize>(line_.size())).flush();
    line_.clear();
}

std::size_t Journal::Begin(CallBeginning call) {
    const std::lock_guard lock(mutex_);
    Sum& sum = sums_[call.name];
    ++sum.calls;
    OpenCall open{count_++, 0, &sum, {}};
    if (written_ > kLimit) {
        open.unwritten = std::move(call);
    } else {
        Append(kKinds.substr(static_cast<std::size_t>(call.kind), 1));
        AppendSlot(call.name);
        AppendSlot(call.operands);
        line_ += ',';
        AppendTime(Now());
        AppendPlace(call.caller);
        line_ += '\n';
        written_ += line_.size();
        Flush();
    }
    open.start = Now();
    ThisThread().open.push_back(std::move(open));
    return count_ - 1;
}

void Journal::End(CallEnd end) noexcept try {
    const std::uint64_t now = Now();
    const std::lock_guard lock(mutex_);
    std::vector<OpenCall>& stack = ThisThread().open;
    const OpenCall open = std::move(stack.back());
    stack.pop_back();
    const std::uint64_t took = now - open.start;
    open.sum->time += took;
    open.sum->longest = std::max(open.sum->longest, took);
    if (!open.unwritten) {
        Append(kEnd);
        AppendTime(now);
        AppendEnd(end);
        line_ += '\n';
        written_ += line_.size();
        Flush();
        return;
    }
    if (end.marks == 0 || apart_ > kApartLimit) return;
    Append(kApart);
    AppendNumber(line_, open.number);
    AppendNumber(line_ += ',', static_cast<int>(open.unwritten->kind));
    AppendSlot(open.unwritten->name);
    AppendSlot(open.unwritten->operands);
    AppendNumber(line_ += ',', open.start);
    AppendNumber(line_ += ',', took);
    end.note += end.note.empty() ? " " : "";
    AppendEnd(end);
    AppendPlace(open.unwritten->caller);
    line_ += '\n';
    apart_ += line_.size();
    Flush();
} catch (...) {
    out_.setstate(std::ios::failbit);
}

void Journal::Mark(CallMark mark, std::vector<std::size_t> numbers) {
    if (numbers.empty()) return;
    std::sort(numbers.begin(), numbers.end());
    const std::lock_guard lock(mutex_);
    line_ += kMarks;
    AppendNumber(line_, static_cast<unsigned>(mark));
    std::size_t before = 0;
    for (const std::size_t number : numbers)
        AppendNumber(line_ += ',', number - std::exchange(before, number));
    line_ += '\n';
    Flush();
}

void Journal::Write(std::string_view line) {
    const std::lock_guard lock(mutex_);
    (line_ += line) += '\n';
    Flush();
}

std::string Journal::Functions() const {
    const std::lock_guard lock(mutex_);
    std::string json = "[";
    for (const auto& [name, sum] : sums_) {
        json += json.size() > 1 ? ",[" : "[";
        AppendJson(json, name);
        AppendNumber(json += ',', sum.calls);
        AppendNumber(json += ',', sum.time);
        AppendNumber(json += ',', sum.longest);
        json += ']';
    }
    return json + "]";
}

std::size_t Journal::Count() const {
    const std::lock_guard lock(mutex_);
    return count_;
}

std::string DescribeWithElements(const Value& value) {
    const Array* array = value.If<Array>();
    if (array == nullptr) return Describe(value);
    return Elements(array->rows, array->columns, [&](std::size_t i) { return Describe(array->cells[i]); });
}

std::string DescribeWithElements(const XLOPER12* record) {
    const TracedValue traced = Traced(record);
    if (traced.type != xltypeMulti || record->val.array.lparray == nullptr || !Unreadable(*record).empty()) {
        return traced.text;
    }
    const auto& array = record->val.array;
    return Elements(static_cast<std::size_t>(array.rows), static_cast<std::size_t>(array.columns),
                    [&](std::size_t i) { return Traced(&array.lparray[i]).text; });
}

std::string DescribeAll(std::span<const Value> values) {
    return Joined(values);
}

std::string DescribeAll(std::span<const LPXLOPER12> records) {
    return Joined(records);
}

}  // namespace excelhost
