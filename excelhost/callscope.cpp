#include "excelhost/callscope.h"

#include <utility>

namespace excelhost {
namespace {

// One object, so that whoever asks for the calls of a crashing thread finds its memory there already.
struct ThreadNotes {
    const CallScope* scope = nullptr;
    LastCalls calls;
};
thread_local ThreadNotes notes;

}  // namespace

const CallScope* CallScope::Current() noexcept {
    return notes.scope;
}

const CallScope* CallScope::Enter(const CallScope* scope) noexcept {
    return std::exchange(notes.scope, scope);
}

LastCalls& LastCalls::OfThisThread() noexcept {
    return notes.calls;
}

}  // namespace excelhost
