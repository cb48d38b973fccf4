#include "excelhost/callscope.h"

namespace excelhost {

ThreadNotes& ThreadNotes::OfThisThread() noexcept {
    thread_local ThreadNotes notes;
    return notes;
}

const CallScope* CallScope::Current() noexcept {
    return ThreadNotes::OfThisThread().scope.load(std::memory_order_relaxed);
}

const CallScope* CallScope::Enter(const CallScope* scope) noexcept {
    std::atomic<const CallScope*>& current = ThreadNotes::OfThisThread().scope;
    const CallScope* before = current.load(std::memory_order_relaxed);
    current.store(scope, std::memory_order_release);
    return before;
}

LastCalls& LastCalls::OfThisThread() noexcept {
    return ThreadNotes::OfThisThread().calls;
}

}  // namespace excelhost
