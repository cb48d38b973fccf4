#include "filesharing.h"

#include "descriptor.h"

#include <bit>
#include <mutex>

#include <fcntl.h>

namespace winapi {
namespace {

// A set of marks, one bit each: the rights that are had, and behind them those that are denied. A mark has a
// range of bytes, since a description that can't read can lock none together with others.
using Marks = unsigned;
constexpr unsigned rightCount = 3;
constexpr off_t places = 4096;

constexpr Marks Denial(unsigned rights) noexcept {
    return rights << rightCount;
}

struct flock LockOf(Marks mark, short type, off_t place, off_t length) noexcept {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = off_t{0x7FFFFFFFFFF00000} + std::countr_zero(mark) * places + place;
    lock.l_len = length;
    return lock;
}

void Announce(int descriptor, Marks mark) noexcept {
    const bool canRead = (fcntl(descriptor, F_GETFL) & O_ACCMODE) != O_WRONLY;
    for (off_t place = 0; place < places; ++place) {
        struct flock lock = LockOf(mark, canRead ? F_RDLCK : F_WRLCK, place, 1);
        const int result = Retry([&] { return fcntl(descriptor, F_OFD_SETLK, &lock); });
        if (result == 0 || (errno != EAGAIN && errno != EACCES)) return;
    }
}

bool IsAnnouncedByOthers(int descriptor, Marks mark) noexcept {
    struct flock lock = LockOf(mark, F_WRLCK, 0, places);
    return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

template <class Action>
bool AnyOf(Marks marks, Action action) noexcept {
    for (; marks != 0; marks &= marks - 1) {
        if (action(marks & (~marks + 1))) return true;
    }
    return false;
}

}  // namespace

bool ShareFile(int descriptor, unsigned rights, unsigned shared) noexcept {
    if (rights == 0) return true;
    const unsigned denied = allFileRights & ~shared;
    // Announced first, looked for then: of two that clash and open at once in two processes both may fail,
    // and never both succeed. Within the process the lock lets the first one through.
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    AnyOf(rights | Denial(denied), [&](Marks mark) {
        Announce(descriptor, mark);
        return false;
    });
    return !AnyOf(denied | Denial(rights), [&](Marks mark) { return IsAnnouncedByOthers(descriptor, mark); });
}

bool IsDenied(int descriptor, FileRight right) noexcept {
    return IsAnnouncedByOthers(descriptor, Denial(right));
}

}  // namespace winapi
