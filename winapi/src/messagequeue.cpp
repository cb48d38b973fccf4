#include "messagequeue.h"

#include "failure.h"
#include "sysinfoapi.h"

#include <map>

namespace winapi {
namespace {

// The queues of all threads by the threads' numbers.
class QueueTable {
  public:
    void Add(DWORD thread, const std::shared_ptr<MessageQueue>& queue) {
        const std::lock_guard lock(mutex_);
        queues_[thread] = queue;
    }

    void Remove(DWORD thread) noexcept {
        const std::lock_guard lock(mutex_);
        queues_.erase(thread);
    }

    std::shared_ptr<MessageQueue> Find(DWORD thread) {
        const std::lock_guard lock(mutex_);
        const auto entry = queues_.find(thread);
        return entry == queues_.end() ? nullptr : entry->second.lock();
    }

  private:
    std::mutex mutex_;
    std::map<DWORD, std::weak_ptr<MessageQueue>> queues_;
};

QueueTable& Queues() {
    static QueueTable& queues = *new QueueTable;  // threads may outlive the static objects
    return queues;
}

struct OwnQueue {
    const DWORD thread = GetCurrentThreadId();
    const std::shared_ptr<MessageQueue> queue = std::make_shared<MessageQueue>();

    OwnQueue() { Queues().Add(thread, queue); }
    ~OwnQueue() { Queues().Remove(thread); }
    OwnQueue(const OwnQueue&) = delete;
    OwnQueue& operator=(const OwnQueue&) = delete;
};

}  // namespace

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
    thread_local const OwnQueue own;
    return own.queue;
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

BOOL WINAPI PostThreadMessageW(DWORD thread, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    return AtBorder(FALSE, [&] {
        const auto queue = winapi::Queues().Find(thread);
        if (!queue) throw Failure{ERROR_INVALID_THREAD_ID};
        queue->Post({nullptr, message, wParam, lParam, 0, {}});
        return TRUE;
    });
}

void WINAPI PostQuitMessage(int exitCode) noexcept {
    static_cast<void>(AtBorder(FALSE, [&] {
        QueueOfThisThread()->Quit(exitCode);
        return TRUE;
    }));
}
