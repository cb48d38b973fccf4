#pragma once

#include <cerrno>
#include <utility>

#include <unistd.h>

namespace winapi {

// An open file descriptor.
class Descriptor {
  public:
    explicit Descriptor(int number = -1) noexcept : number_(number) {}
    ~Descriptor() {
        if (IsOpen()) close(number_);
    }
    Descriptor(Descriptor&& other) noexcept : number_(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    [[nodiscard]] int Get() const noexcept { return number_; }
    [[nodiscard]] bool IsOpen() const noexcept { return number_ >= 0; }
    // Gives the descriptor to the caller.
    [[nodiscard]] int Release() noexcept { return std::exchange(number_, -1); }

  private:
    int number_;
};

// Repeats a system call that a signal interrupts.
template <class Call>
auto Retry(Call call) noexcept {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

}  // namespace winapi
