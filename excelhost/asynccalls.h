// Results that asynchronous functions give later, from any thread, through xlAsyncReturn.
#pragma once

#include "excelhost/value.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>

namespace excelhost {

// Locks itself.
class AsyncCalls {
  public:
    // A new handle, which a call waits for.
    [[nodiscard]] std::uintptr_t Open();
    // The value under the handle, when it comes in time; the handle is over then.
    [[nodiscard]] std::optional<Value> WaitFor(std::uintptr_t handle, std::chrono::milliseconds most);
    // False when nobody waits for the handle.
    [[nodiscard]] bool Return(std::uintptr_t handle, Value value);

  private:
    std::mutex mutex_;
    std::condition_variable returned_;
    std::map<std::uintptr_t, std::optional<Value>> open_;
    std::uintptr_t next_ = 1;
};

// The record that carries a handle (xltypeBigData), and back; 0 for any other record.
[[nodiscard]] XLOPER12 HandleRecord(std::uintptr_t handle) noexcept;
[[nodiscard]] std::uintptr_t HandleFrom(const XLOPER12& record) noexcept;

}  // namespace excelhost
