#include "winapi/mutexes.h"

#include "failure.h"
#include "kernelobject.h"
#include "namefile.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

using winapi::AtBorder;
using winapi::Failure;
using winapi::KernelObject;
using winapi::NameFile;
using winapi::Ownership;

namespace {

using Clock = std::chrono::steady_clock;

// When a wait gives up: never, without a value.
using Deadline = std::optional<Clock::time_point>;

// A mutex of this process, and its part in that of all processes if it has a name. All handles of the
// process to one name share one object.
class MutexObject : public KernelObject, public std::enable_shared_from_this<MutexObject> {
  public:
    // `owned`: by the calling thread, which the file, if there is one, says already.
    MutexObject(std::u16string_view name, std::optional<NameFile> file)
        : name_(name), file_(std::move(file)) {}

    [[nodiscard]] const std::u16string& Name() const noexcept { return name_; }

    // Makes the calling thread the owner of an object that nobody else knows yet.
    void StartOwned();
    DWORD Wait(DWORD milliseconds) override;
    void Release();
    // The calling thread ends: what it owns has lost its owner.
    void Abandon() noexcept;

  private:
    // Waits for the threads of this process.
    bool Claim(std::unique_lock<std::mutex>& lock, const Deadline& deadline);
    // Waits for the other processes; only the thread with the claim does so.
    Ownership OwnFile(const Deadline& deadline);
    void DropClaim() noexcept;
    void RememberOwner();

    const std::u16string name_;
    const std::optional<NameFile> file_;
    std::mutex mutex_;
    std::condition_variable free_;
    std::thread::id owner_;
    unsigned count_ = 0;
    bool abandoned_ = false;  // of an object without a name
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

void MutexObject::RememberOwner() {
    ownedByThread.Add(shared_from_this());
}

void MutexObject::StartOwned() {
    RememberOwner();
    const std::lock_guard lock(mutex_);
    owner_ = std::this_thread::get_id();
    count_ = 1;
}

bool MutexObject::Claim(std::unique_lock<std::mutex>& lock, const Deadline& deadline) {
    const auto isFree = [this] { return owner_ == std::thread::id(); };
    if (!deadline) {
        free_.wait(lock, isFree);
    } else if (!free_.wait_until(lock, *deadline, isFree)) {
        return false;
    }
    owner_ = std::this_thread::get_id();
    return true;
}

Ownership MutexObject::OwnFile(const Deadline& deadline) {
    using namespace std::chrono_literals;
    // Linux tells no one when such a lock gets free and has no wait for it with an end.
    for (Clock::duration pause = 50us;; pause = std::min<Clock::duration>(2 * pause, 2ms)) {
        const Ownership result = file_->TryToOwn();
        if (result != Ownership::refused) return result;
        const auto now = Clock::now();
        if (deadline && now >= *deadline) return result;
        std::this_thread::sleep_for(deadline ? std::min(pause, *deadline - now) : pause);
    }
}

void MutexObject::DropClaim() noexcept {
    const std::lock_guard lock(mutex_);
    owner_ = {};
    count_ = 0;
    free_.notify_one();
}

DWORD MutexObject::Wait(DWORD milliseconds) {
    Deadline deadline;
    if (milliseconds != INFINITE) deadline = Clock::now() + std::chrono::milliseconds(milliseconds);

    std::unique_lock lock(mutex_);
    if (owner_ == std::this_thread::get_id()) {
        ++count_;
        return WAIT_OBJECT_0;
    }
    RememberOwner();
    if (!Claim(lock, deadline)) return WAIT_TIMEOUT;
    bool fromTheDead = std::exchange(abandoned_, false);
    count_ = 1;
    lock.unlock();
    if (!file_) return fromTheDead ? WAIT_ABANDONED : WAIT_OBJECT_0;

    try {
        const Ownership result = OwnFile(deadline);
        if (result == Ownership::taken) return WAIT_OBJECT_0;
        if (result == Ownership::takenFromTheDead) return WAIT_ABANDONED;
    } catch (const Failure&) {
        DropClaim();
        throw;
    }
    DropClaim();
    return WAIT_TIMEOUT;
}

void MutexObject::Release() {
    const std::lock_guard lock(mutex_);
    if (owner_ != std::this_thread::get_id()) throw Failure{ERROR_NOT_OWNER};
    if (--count_ != 0) return;
    if (file_) file_->Disown();
    owner_ = {};
    free_.notify_one();
}

void MutexObject::Abandon() noexcept {
    const std::lock_guard lock(mutex_);
    if (owner_ != std::this_thread::get_id()) return;
    if (file_) {
        file_->Abandon();
    } else {
        abandoned_ = true;
    }
    owner_ = {};
    count_ = 0;
    free_.notify_one();
}

// ---- Names within the process --------------------------------------------------------------------------

// Held while a named mutex is looked for and made, so that each name has one object.
constinit std::mutex naming;

// One form for the names that mean the same.
std::u16string_view Normalised(std::u16string_view name) noexcept {
    constexpr std::u16string_view local = u"Local\\";
    return name.starts_with(local) ? name.substr(local.size()) : name;
}

std::shared_ptr<MutexObject> FindOpen(std::u16string_view name) {
    for (const std::shared_ptr<KernelObject>& object : winapi::OpenObjects()) {
        auto mutex = std::dynamic_pointer_cast<MutexObject>(object);
        if (mutex && mutex->Name() == name) return mutex;
    }
    return nullptr;
}

std::shared_ptr<MutexObject> MakeUnnamed(bool owned) {
    auto object = std::make_shared<MutexObject>(std::u16string_view(), std::nullopt);
    if (owned) object->StartOwned();
    return object;
}

}  // namespace

HANDLE WINAPI CreateMutexW(LPSECURITY_ATTRIBUTES, BOOL initialOwner, LPCWSTR name) noexcept {
    return AtBorder(HANDLE{}, [&] {
        const bool owned = initialOwner != FALSE;
        HANDLE handle = nullptr;
        bool existed = false;
        if (name == nullptr || *name == u'\0') {
            handle = winapi::NewHandle(MakeUnnamed(owned));
        } else {
            const std::lock_guard lock(naming);
            auto object = FindOpen(Normalised(name));
            existed = object != nullptr;
            if (!existed) {
                auto opened = NameFile::Create(name, owned);
                existed = opened.existed;
                object = std::make_shared<MutexObject>(Normalised(name), std::move(opened.file));
                if (owned && !existed) object->StartOwned();
            }
            handle = winapi::NewHandle(std::move(object));
        }
        SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
        return handle;
    });
}

HANDLE WINAPI OpenMutexW(DWORD, BOOL, LPCWSTR name) noexcept {
    return AtBorder(HANDLE{}, [&] {
        if (name == nullptr) throw Failure{ERROR_INVALID_PARAMETER};
        if (*name == u'\0') throw Failure{ERROR_INVALID_HANDLE};
        const std::lock_guard lock(naming);
        auto object = FindOpen(Normalised(name));
        if (!object) object = std::make_shared<MutexObject>(Normalised(name), NameFile::Open(name));
        return winapi::NewHandle(std::move(object));
    });
}

BOOL WINAPI ReleaseMutex(HANDLE mutex) noexcept {
    return AtBorder(FALSE, [&] {
        winapi::ObjectOf<MutexObject>(mutex)->Release();
        return TRUE;
    });
}
