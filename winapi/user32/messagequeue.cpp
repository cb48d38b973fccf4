#include "messagequeue.h"

#include "kernel32/failure.h"
#include "sysinfoapi.h"

namespace winapi {

void MessageQueue::Post(const MSG& message) {
    const std::lock_guard lock(mutex_);
    posted_.push_back(message);
    posted_.back().time = GetTickCount();
    arrived_.notify_one();
}

void MessageQueue::Quit(int exitCode) {
    const std::lock_guard lock(mutex_);
    quit_ = MSG{nullptr, WM_QUIT, static_cast<WPARAM>(exitCode), 0, GetTickCount(), {}};
    arrived_.notify_one();
}

MSG MessageQueue::Next(bool remove) {
    const bool quits = posted_.empty();
    const MSG message = quits ? *quit_ : posted_.front();
    if (remove && quits) quit_.reset();
    if (remove && !quits) posted_.pop_front();
    return message;
}

std::optional<MSG> MessageQueue::Look(bool remove) {
    const std::lock_guard lock(mutex_);
    if (IsEmpty()) return std::nullopt;
    return Next(remove);
}

MSG MessageQueue::Take() {
    std::unique_lock lock(mutex_);
    arrived_.wait(lock, [this] { return !IsEmpty(); });
    return Next(true);
}

std::shared_ptr<MessageQueue> QueueOfThisThread() {
    thread_local const auto queue = std::make_shared<MessageQueue>();
    return queue;
}

}  // namespace winapi

using winapi::AtBorder;
using winapi::Failure;
using winapi::QueueOfThisThread;

namespace {

void RefuseFilters(HWND window, UINT first, UINT last) {
    if (window != nullptr || first != 0 || last != 0) throw Failure{ERROR_INVALID_PARAMETER};
}

}  // namespace

BOOL WINAPI PeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT remove) noexcept {
    return AtBorder(FALSE, [&] {
        RefuseFilters(window, first, last);
        const auto next = QueueOfThisThread()->Look((remove & PM_REMOVE) != 0);
        if (next) *message = *next;
        return next ? TRUE : FALSE;
    });
}

BOOL WINAPI GetMessageW(LPMSG message, HWND window, UINT first, UINT last) noexcept {
    return AtBorder(-1, [&] {
        RefuseFilters(window, first, last);
        *message = QueueOfThisThread()->Take();
        return message->message != WM_QUIT ? TRUE : FALSE;
    });
}

BOOL WINAPI TranslateMessage(const MSG*) noexcept {
    return FALSE;
}

void WINAPI PostQuitMessage(int exitCode) noexcept {
    static_cast<void>(AtBorder(FALSE, [&] {
        QueueOfThisThread()->Quit(exitCode);
        return TRUE;
    }));
}
