#include "excelhost/lastwords.h"

#include "excelhost/served/table.h"

#include <algorithm>
#include <charconv>

namespace excelhost {

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
    const CallScope* scope = thread.scope;
    if (scope == nullptr) return false;
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

}  // namespace excelhost
