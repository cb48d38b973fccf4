#include "excelhost/lastwords.h"

#include "excelhost/served/table.h"

#include <algorithm>
#include <atomic>
#include <charconv>

namespace excelhost {
namespace {

std::atomic<const LastFile*> last_file{nullptr};

}  // namespace

Message& Message::operator<<(std::string_view text) noexcept {
    const std::size_t count = std::min(text.size(), text_.size() - size_);
    std::copy_n(text.data(), count, text_.data() + size_);
    size_ += count;
    return *this;
}

Message& Message::operator<<(int number) noexcept {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    return *this << std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

bool AddLastWords(Message& message, const ThreadNotes& thread) noexcept {
    const CallScope* scope = thread.scope.load(std::memory_order_acquire);
    if (scope == nullptr) {
        return std::any_of(thread.awaited.begin(), thread.awaited.end(),
                           [&](const ThreadNotes* other) { return AddLastWords(message, *other); });
    }
    message << "in " << scope->Name() << "; its last calls into Excel:";
    bool any = false;
    thread.calls.Each([&](const LastCall& call) {
        const FunctionLabel label = LabelOf(call.function);
        message << " " << label.name;
        if (label.number) message << *label.number;
        if (call.returnCode != xlretSuccess) message << " (failed with code " << call.returnCode << ")";
        any = true;
    });
    if (!any) message << " none";
    return true;
}

void SetLastFile(const LastFile* file) noexcept {
    last_file.store(file);
}

// The line isn't on the stack, of which little may be left. What would end its quotes or its script is shown as something
// like it.
void TellLastFile(std::string_view message) noexcept {
    static constinit Message line;
    const LastFile* file = last_file.load();
    if (file == nullptr) return;
    constexpr std::string_view name = "excelhost: ";
    if (message.starts_with(name)) message.remove_prefix(name.size());
    if (message.ends_with('\n')) message.remove_suffix(1);
    // A line that another thread was writing may have no end.
    line << "\n13,\"";
    for (const char c : message) {
        const bool isSafe = static_cast<unsigned char>(c) >= 0x20 && c != '"' && c != '\\' && c != '<';
        line << (isSafe ? std::string_view(&c, 1) : std::string_view(c == '<' ? "(" : "'"));
    }
    line << "\"\n";
    file->Append(line.Text());
}

}  // namespace excelhost
