#include "platform/detail/blockpool.h"

#include "support/allocations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

namespace {

using kestrolumen::detail::BlockPool;

constexpr std::size_t all = KESTROLUMEN_ADDRESS_SANITIZER ? 0 : BlockPool::blockCount;

TEST(BlockPool, GivesEachBlockToOneTakerAndThenTheHeaps) {
    BlockPool pool;
    const std::int64_t before = support::LiveBlocks();
    std::set<void*> blocks;
    for (std::size_t i = 0; i < BlockPool::blockCount + 3; ++i) {
        void* const block = pool.Take(BlockPool::blockSize);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(double), 0U);
        std::memset(block, 0xAB, BlockPool::blockSize);
        blocks.insert(block);
    }
    EXPECT_EQ(blocks.size(), BlockPool::blockCount + 3);
    for (void* block : blocks) pool.GiveBack(block);
    blocks.clear();
    EXPECT_EQ(support::LiveBlocks(), before);

    const auto takenFromHeap = [&](std::size_t bytes) {
        const std::size_t asked = support::Allocations();
        pool.GiveBack(pool.Take(bytes));
        return support::Allocations() - asked;
    };
    EXPECT_EQ(takenFromHeap(1), all == 0 ? 1U : 0U) << "a block that came back is there again";
    EXPECT_EQ(takenFromHeap(BlockPool::blockSize + 1), 1U);
}

TEST(BlockPool, IsSharedByThreadsThatGiveBackEachOthersBlocks) {
    constexpr std::size_t threads = 4, rounds = 20'000, held = 12;  // more than there are blocks
    BlockPool pool;
    std::atomic<void*> handedOn = nullptr;
    std::atomic<int> faults = 0;
    const auto work = [&](unsigned char mark) {
        std::vector<void*> mine;
        const auto release = [&](void* block) {
            const auto* bytes = static_cast<const unsigned char*>(block);
            if (std::count(bytes, bytes + BlockPool::blockSize, bytes[0]) != BlockPool::blockSize) ++faults;
            pool.GiveBack(block);
        };
        for (std::size_t i = 0; i < rounds; ++i) {
            void* const block = pool.Take(BlockPool::blockSize);
            std::memset(block, mark, BlockPool::blockSize);
            mine.push_back(block);
            if (mine.size() < held) continue;
            if (void* const other = handedOn.exchange(mine.back())) release(other);
            mine.pop_back();
            for (std::size_t keep = i % held; mine.size() > keep; mine.pop_back()) release(mine.back());
        }
        for (void* block : mine) release(block);
    };
    std::vector<std::thread> workers;
    for (std::size_t i = 0; i < threads; ++i) workers.emplace_back(work, static_cast<unsigned char>(i + 1));
    for (std::thread& worker : workers) worker.join();
    if (void* const last = handedOn.exchange(nullptr)) pool.GiveBack(last);
    EXPECT_EQ(faults, 0);

    std::vector<void*> blocks(all);
    const std::size_t asked = support::Allocations();
    for (void*& block : blocks) block = pool.Take(1);
    EXPECT_EQ(support::Allocations(), asked) << "all have come back";
    for (void* block : blocks) pool.GiveBack(block);
}

}  // namespace
