// The queue of posted messages that a thread has.
#pragma once

#include "winapi/messages.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

namespace winapi {

class MessageQueue {
  public:
    void Post(const MSG& message);
    void Quit(int exitCode);

    // The next message, which stays in the queue unless it is removed.
    [[nodiscard]] std::optional<MSG> Look(bool remove);
    // Removes the next message and waits for it.
    [[nodiscard]] MSG Take();

  private:
    [[nodiscard]] bool IsEmpty() const noexcept { return posted_.empty() && !quit_; }
    MSG Next(bool remove);

    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<MSG> posted_;
    std::optional<MSG> quit_;
};

// The queue of the calling thread, made by the first call. It ends with the thread.
[[nodiscard]] std::shared_ptr<MessageQueue> QueueOfThisThread();

}  // namespace winapi
