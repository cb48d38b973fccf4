#include "excelhost/blocks.h"

#include <algorithm>
#include <cstring>

namespace excelhost {
namespace {

constexpr std::byte kGuardByte{0xFD};

}  // namespace

Block::Block(std::size_t size)
    : bytes_(std::make_unique_for_overwrite<std::byte[]>(size + 2 * kGuard)), size_(size) {
    std::memset(bytes_.get(), static_cast<int>(kGuardByte), kGuard);
    std::memset(bytes_.get() + kGuard, 0, size);
    std::memset(bytes_.get() + kGuard + size, static_cast<int>(kGuardByte), kGuard);
}

bool Block::GuardsAreIntact() const noexcept {
    const auto isGuard = [](std::byte b) { return b == kGuardByte; };
    const std::span<const std::byte> all = All();
    return std::all_of(all.begin(), all.begin() + kGuard, isGuard) &&
           std::all_of(all.end() - kGuard, all.end(), isGuard);
}

}  // namespace excelhost
