#include "excelhost/machine/crashstack.h"

#include <array>
#include <csignal>
#include <cstddef>

namespace excelhost {

// A sanitizer's report takes much of it, and a sanitizer's own stack is put back.
struct CrashStack::Room {
    std::array<std::byte, std::size_t{1} << 20> stack;
    stack_t before;
};

CrashStack::CrashStack() : room_(new Room) {
    const stack_t own{room_->stack.data(), 0, room_->stack.size()};
    sigaltstack(&own, &room_->before);
}

CrashStack::~CrashStack() {
    sigaltstack(&room_->before, nullptr);
}

}  // namespace excelhost
