#include "excelhost/callscope.h"

#include <utility>

namespace excelhost {

ThreadNotes& ThreadNotes::OfThisThread() noexcept {
    thread_local ThreadNotes notes;
    return notes;
}

const CallScope* CallScope::Current() noexcept {
    return ThreadNotes::OfThisThread().scope;
}

const CallScope* CallScope::Enter(const CallScope* scope) noexcept {
    return std::exchange(ThreadNotes::OfThisThread().scope, scope);
}

LastCalls& LastCalls::OfThisThread() noexcept {
    return ThreadNotes::OfThisThread().calls;
}

}  // namespace excelhost
