// A pool without blocks, so that a test's heap sees all that is asked for.
#pragma once

#include "platform/detail/blockpool.h"

#include <array>

namespace support {

class EmptyPool {
  public:
    EmptyPool() {
        for (void*& block : taken_) block = Pool().Take(1);
    }
    ~EmptyPool() {
        for (void* block : taken_) Pool().GiveBack(block);
    }
    EmptyPool(const EmptyPool&) = delete;
    EmptyPool& operator=(const EmptyPool&) = delete;

  private:
    static kestrolumen::detail::BlockPool& Pool() noexcept { return kestrolumen::detail::blockPool; }

    std::array<void*, kestrolumen::detail::BlockPool::blockCount> taken_{};
};

}  // namespace support
