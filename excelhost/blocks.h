// Memory that is lent or given to an add-in. Each block lies between guard bytes, which tell afterwards
// whether somebody has written past its ends.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace excelhost {

class Block {
  public:
    // Of zero bytes, aligned for any value.
    explicit Block(std::size_t size);

    [[nodiscard]] std::byte* Payload() noexcept { return bytes_.get() + kGuard; }
    [[nodiscard]] std::size_t Size() const noexcept { return size_; }
    [[nodiscard]] bool GuardsAreIntact() const noexcept;
    // The block's bytes and its guards.
    [[nodiscard]] std::span<const std::byte> All() const noexcept {
        return {bytes_.get(), size_ + 2 * kGuard};
    }

  private:
    static constexpr std::size_t kGuard = 16;
    std::unique_ptr<std::byte[]> bytes_;
    std::size_t size_;
};

using Blocks = std::vector<Block>;

}  // namespace excelhost
