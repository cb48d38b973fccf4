// The heap under a test's control: the nth allocation fails, and what is alive is counted. It sees malloc and
// its kin in everything that is linked into the test program, and operator new everywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

namespace support {

// Blocks that are alive now, whichever thread allocated them.
[[nodiscard]] std::int64_t LiveBlocks() noexcept;

// How many blocks more are alive when `body` has run. It runs twice and the second time counts, since what
// keeps a block for its next use, such as a thread's record of exceptions, does so the first time.
template <typename Body>
[[nodiscard]] std::int64_t BlocksLeftBy(Body body) {
    body();
    const std::int64_t before = LiveBlocks();
    body();
    return LiveBlocks() - before;
}

// Allocations so far, of all threads, and the bytes they asked for.
[[nodiscard]] std::size_t Allocations() noexcept;
[[nodiscard]] std::size_t AllocatedBytes() noexcept;

// Lets the nth allocation of the thread that makes this fail (1 is the next one), once. An operator new that
// fails raises std::bad_alloc, or what `raise` raises. One at a time in the process.
class AllocationFault {
  public:
    explicit AllocationFault(std::size_t nth, void (*raise)() = nullptr) noexcept;
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    // Whether that allocation has been asked for.
    [[nodiscard]] bool Struck() const noexcept;
};

// Runs `body` with its first allocation failing, with its second, and so on, until it makes fewer. `check` is
// called after each run that was struck. Gives the count of those runs: the allocations of one body.
template <typename Body, typename Check>
std::size_t FailEachAllocation(Body body, Check check) {
    for (std::size_t nth = 1;; ++nth) {
        bool struck = false;
        {
            const AllocationFault fault(nth);
            body();
            struck = fault.Struck();
        }
        if (!struck) return nth - 1;
        check();
    }
}

// The allocations that `operation` makes, where each of them may fail: the failure passes on as
// std::bad_alloc and leaves no block behind. -1 where one doesn't.
template <typename Operation>
[[nodiscard]] int AllocationsThatMayFail(Operation operation) {
    std::size_t faults = 0, raised = 0;
    const auto attempt = [&] {
        try {
            operation();
        } catch (const std::bad_alloc&) {
            ++raised;
        }
    };
    const std::int64_t left = BlocksLeftBy([&] { faults = FailEachAllocation(attempt, [] {}); });
    return left == 0 && raised == 2 * faults ? static_cast<int>(faults) : -1;  // of two rounds
}

}  // namespace support
