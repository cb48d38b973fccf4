#include "excelhost/asynccalls.h"

#include <utility>

namespace excelhost {

std::uintptr_t AsyncCalls::Open() {
    const std::lock_guard lock(mutex_);
    open_.emplace(next_, std::nullopt);
    return next_++;
}

std::optional<Value> AsyncCalls::WaitFor(std::uintptr_t handle, std::chrono::milliseconds most) {
    std::unique_lock lock(mutex_);
    returned_.wait_for(lock, most, [&] { return open_.at(handle).has_value(); });
    auto value = std::move(open_.at(handle));
    open_.erase(handle);
    return value;
}

bool AsyncCalls::Return(std::uintptr_t handle, Value value) {
    const std::lock_guard lock(mutex_);
    const auto waiting = open_.find(handle);
    if (waiting == open_.end() || waiting->second) return false;
    waiting->second = std::move(value);
    returned_.notify_all();
    return true;
}

XLOPER12 HandleRecord(std::uintptr_t handle) noexcept {
    XLOPER12 record{};
    record.xltype = xltypeBigData;
    record.val.bigdata.h.hdata = reinterpret_cast<HANDLE>(handle);
    record.val.bigdata.cbData = sizeof handle;
    return record;
}

std::uintptr_t HandleFrom(const XLOPER12& record) noexcept {
    return TypeOf(record) == xltypeBigData ? reinterpret_cast<std::uintptr_t>(record.val.bigdata.h.hdata) : 0;
}

}  // namespace excelhost
