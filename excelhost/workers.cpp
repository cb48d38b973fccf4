#include "excelhost/workers.h"

#include "excelhost/callscope.h"
#include "excelhost/machine/crashstack.h"

#include <utility>

namespace excelhost {

Workers::Workers(std::size_t threads) {
    notes_.reserve(threads);
    threads_.reserve(threads);
    for (std::size_t i = 1; i < threads; ++i) {
        threads_.emplace_back([this](const std::stop_token& stop) { Wait(stop); });
    }
}

void Workers::Wait(const std::stop_token& stop) {
    const CrashStack stack;
    std::size_t done = 0;  // rounds
    std::unique_lock lock(mutex_);
    notes_.push_back(&ThreadNotes::OfThisThread());
    while (begun_.wait(lock, stop, [&] { return job_ != nullptr && round_ != done; })) {
        done = round_;
        const Job& job = *job_;
        ++busy_;
        lock.unlock();
        Work(job);
        lock.lock();
        if (--busy_ == 0) ended_.notify_one();
    }
}

void Workers::Work(const Job& job) noexcept {
    for (std::size_t number = next_++; number < count_; number = next_++) {
        try {
            job(number);
        } catch (...) {
            const std::lock_guard lock(mutex_);
            if (!failure_) failure_ = std::current_exception();
        }
    }
}

// A thread that wakes up when all is done finds no job any more.
void Workers::Share(std::size_t count, const Job& job) {
    {
        const std::lock_guard lock(mutex_);
        job_ = &job;
        count_ = count;
        next_ = 0;
        ++round_;
    }
    begun_.notify_all();
    Work(job);
    std::unique_lock lock(mutex_);
    job_ = nullptr;
    ThreadNotes& own = ThreadNotes::OfThisThread();
    own.awaited = notes_;
    ended_.wait(lock, [&] { return busy_ == 0; });
    own.awaited = {};
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

}  // namespace excelhost
