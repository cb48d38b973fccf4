// Threads that share out jobs.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace excelhost {

struct ThreadNotes;

class Workers {
  public:
    using Job = std::function<void(std::size_t number)>;

    // As many threads in all, the one that shares out the jobs among them; at least 1.
    explicit Workers(std::size_t threads);
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    [[nodiscard]] std::size_t Threads() const noexcept { return threads_.size() + 1; }

    // Does the job for each number below `count`, on any of the threads and in any order, and returns when all is
    // done. The first exception of a job is thrown on when the others are through.
    void Share(std::size_t count, const Job& job);

  private:
    void Wait(const std::stop_token& stop);
    void Work(const Job& job) noexcept;

    std::mutex mutex_;
    std::condition_variable_any begun_;
    std::condition_variable ended_;
    const Job* job_ = nullptr;  // while it is shared out
    std::size_t round_ = 0;
    std::size_t busy_ = 0;
    std::size_t count_ = 0;
    std::atomic<std::size_t> next_ = 0;
    std::exception_ptr failure_;
    std::vector<const ThreadNotes*> notes_;  // of the threads
    std::vector<std::jthread> threads_;      // the first member to go
};

}  // namespace excelhost
