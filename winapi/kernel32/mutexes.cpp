#include "winapi/mutexes.h"

#include "failure.h"
#include "kernelobject.h"
#include "namefile.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

using winapi::AtBorder;
using winapi::Failure;
using winapi::KernelObject;
using winapi::NameFile;
using winapi::NamePlace;
using winapi::Ownership;

namespace {

// A mutex of this process, and its part in that of all processes if it has a name. All handles of the
// process to one name share one object.
class MutexObject : public KernelObject, public std::enable_shared_from_this<MutexObject> {
  public:
    std::optional<NameFile> file;

    DWORD Wait(DWORD milliseconds) override;
    void Release();
    // The calling thread ends: what it owns has lost its owner.
    void Abandon() noexcept;

  private:
    Ownership TryToOwn();

    std::mutex mutex_;
    std::thread::id owner_;
    unsigned count_ = 0;
    Ownership next_ = Ownership::taken;  // what the next owner of an object without a name is told
};

// What a thread owns. It ends with the thread.
class OwnedByThread {
  public:
    OwnedByThread() = default;
    ~OwnedByThread() {
        for (const std::weak_ptr<MutexObject>& entry : entries_) {
            if (const auto object = entry.lock()) object->Abandon();
        }
    }
    OwnedByThread(const OwnedByThread&) = delete;
    OwnedByThread& operator=(const OwnedByThread&) = delete;

    void Add(const std::shared_ptr<MutexObject>& object) {
        std::erase_if(entries_, [&](const auto& entry) {
            const auto known = entry.lock();
            return known == nullptr || known == object;
        });
        entries_.push_back(object);
    }

  private:
    std::vector<std::weak_ptr<MutexObject>> entries_;
};
thread_local OwnedByThread ownedByThread;

Ownership MutexObject::TryToOwn() {
    const std::lock_guard lock(mutex_);
    const auto self = std::this_thread::get_id();
    if (owner_ == self) {
        ++count_;
        return Ownership::taken;
    }
    if (owner_ != std::thread::id()) return Ownership::refused;
    const Ownership result = file ? file->TryToOwn() : std::exchange(next_, Ownership::taken);
    if (result != Ownership::refused) owner_ = self;
    count_ = 1;
    return result;
}

DWORD MutexObject::Wait(DWORD milliseconds) {
    using namespace std::chrono;
    ownedByThread.Add(shared_from_this());
    const auto start = steady_clock::now();
    // Linux tells no one when a lock on a file gets free and has no wait for it with an end.
    for (nanoseconds pause = 50us;; pause = std::min<nanoseconds>(2 * pause, 2ms)) {
        const Ownership result = TryToOwn();
        if (result == Ownership::taken) return WAIT_OBJECT_0;
        if (result == Ownership::takenFromTheDead) return WAIT_ABANDONED;
        if (milliseconds != INFINITE) {
            const nanoseconds left = start + std::chrono::milliseconds(milliseconds) - steady_clock::now();
            if (left <= 0ns) return WAIT_TIMEOUT;
            pause = std::min(pause, left);
        }
        std::this_thread::sleep_for(pause);
    }
}

void MutexObject::Release() {
    const std::lock_guard lock(mutex_);
    if (owner_ != std::this_thread::get_id()) throw Failure{ERROR_NOT_OWNER};
    if (--count_ != 0) return;
    if (file) file->Disown();
    owner_ = {};
}

void MutexObject::Abandon() noexcept {
    const std::lock_guard lock(mutex_);
    if (owner_ != std::this_thread::get_id()) return;
    if (file) file->Abandon();
    next_ = Ownership::takenFromTheDead;
    owner_ = {};
}

// Held while a named mutex is looked for and made, so that each name has one object.
constinit std::mutex naming;

std::shared_ptr<MutexObject> FindOpen(const NamePlace& place) {
    for (const std::shared_ptr<KernelObject>& object : winapi::OpenObjects()) {
        auto mutex = std::dynamic_pointer_cast<MutexObject>(object);
        if (mutex && mutex->file && mutex->file->Place() == place) return mutex;
    }
    return nullptr;
}

}  // namespace

HANDLE WINAPI CreateMutexW(LPSECURITY_ATTRIBUTES, BOOL initialOwner, LPCWSTR name) noexcept {
    return AtBorder(HANDLE{}, [&] {
        const bool owned = initialOwner != FALSE, isNamed = name != nullptr && *name != u'\0';
        const std::lock_guard lock(naming);
        auto object = isNamed ? FindOpen(NamePlace(name)) : nullptr;
        bool existed = object != nullptr;
        if (!existed) {
            object = std::make_shared<MutexObject>();
            if (isNamed) existed = object->file.emplace(NamePlace(name), true, owned).Existed();
            if (owned && !existed) object->Wait(0);
        }
        const HANDLE handle = winapi::NewHandle(std::move(object));
        SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
        return handle;
    });
}

HANDLE WINAPI OpenMutexW(DWORD, BOOL, LPCWSTR name) noexcept {
    return AtBorder(HANDLE{}, [&] {
        if (name == nullptr) throw Failure{ERROR_INVALID_PARAMETER};
        if (*name == u'\0') throw Failure{ERROR_INVALID_HANDLE};
        const NamePlace place(name);
        const std::lock_guard lock(naming);
        auto object = FindOpen(place);
        if (!object) {
            object = std::make_shared<MutexObject>();
            object->file.emplace(place, false, false);
        }
        return winapi::NewHandle(std::move(object));
    });
}

BOOL WINAPI ReleaseMutex(HANDLE mutex) noexcept {
    return AtBorder(FALSE, [&] {
        winapi::ObjectOf<MutexObject>(mutex)->Release();
        return TRUE;
    });
}
