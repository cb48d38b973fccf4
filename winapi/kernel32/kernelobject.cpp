#include "kernelobject.h"

#include <algorithm>
#include <mutex>

namespace winapi {
namespace {

// Handles may still be closed by destructors that run at the very end of the process: the table is never
// destroyed. It holds no memory while no handle is open.
class Table {
  public:
    HANDLE Add(std::shared_ptr<KernelObject> object) {
        const std::lock_guard lock(mutex_);
        const auto free = std::find(objects_.begin(), objects_.end(), nullptr);
        const auto index = static_cast<std::size_t>(free - objects_.begin());
        if (free == objects_.end()) objects_.emplace_back();
        objects_[index] = std::move(object);
        ++open_;
        return reinterpret_cast<HANDLE>((index + 1) * step);
    }

    std::shared_ptr<KernelObject> Find(HANDLE handle) {
        const std::lock_guard lock(mutex_);
        return Slot(handle);
    }

    // The object of the handle that ends. The caller lets it go when the table is no longer locked.
    std::shared_ptr<KernelObject> Remove(HANDLE handle) {
        const std::lock_guard lock(mutex_);
        std::shared_ptr<KernelObject> object = std::move(Slot(handle));
        if (--open_ == 0) std::vector<std::shared_ptr<KernelObject>>().swap(objects_);
        return object;
    }

    std::vector<std::shared_ptr<KernelObject>> All() {
        const std::lock_guard lock(mutex_);
        return objects_;
    }

  private:
    static constexpr std::uintptr_t step = 4;

    std::shared_ptr<KernelObject>& Slot(HANDLE handle) {
        const auto value = reinterpret_cast<std::uintptr_t>(handle);
        const std::uintptr_t index = value / step - 1;
        if (value % step != 0 || index >= objects_.size() || !objects_[index]) {
            throw Failure{ERROR_INVALID_HANDLE};
        }
        return objects_[index];
    }

    std::mutex mutex_;
    std::vector<std::shared_ptr<KernelObject>> objects_;
    std::size_t open_ = 0;
};

union Undestroyed {
    Table table;

    constexpr Undestroyed() noexcept : table() {}
    ~Undestroyed() {}  // NOLINT(modernize-use-equals-default): it would be deleted
};
constinit Undestroyed handles;

}  // namespace

DWORD KernelObject::Wait(DWORD) {
    throw Failure{ERROR_INVALID_HANDLE};
}

HANDLE NewHandle(std::shared_ptr<KernelObject> object) {
    return handles.table.Add(std::move(object));
}

std::shared_ptr<KernelObject> ObjectOf(HANDLE handle) {
    return handles.table.Find(handle);
}

std::vector<std::shared_ptr<KernelObject>> OpenObjects() {
    return handles.table.All();
}

}  // namespace winapi

BOOL WINAPI CloseHandle(HANDLE handle) noexcept {
    return winapi::AtBorder(FALSE, [&] {
        winapi::handles.table.Remove(handle);
        return TRUE;
    });
}

DWORD WINAPI WaitForSingleObject(HANDLE handle, DWORD milliseconds) noexcept {
    return winapi::AtBorder(DWORD{WAIT_FAILED}, [&] { return winapi::ObjectOf(handle)->Wait(milliseconds); });
}
