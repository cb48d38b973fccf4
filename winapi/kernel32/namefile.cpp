#include "namefile.h"

#include "failure.h"
#include "paths.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace winapi {
namespace {

// ---- Folders -------------------------------------------------------------------------------------------

const char* Variable(const char* name) noexcept {
    const char* const value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

std::string LocalFolder() {
    if (const char* own = Variable("KESTROLUMEN_RUNTIME_DIR")) return std::string(own) + "/Local";
    if (const char* runtime = Variable("XDG_RUNTIME_DIR")) return std::string(runtime) + "/kestrolumen";
    const char* temporary = Variable("TMPDIR");
    return std::string(temporary != nullptr ? temporary : "/tmp") + "/kestrolumen-" +
           std::to_string(getuid());
}

std::string GlobalFolder() {
    if (const char* own = Variable("KESTROLUMEN_RUNTIME_DIR")) return std::string(own) + "/Global";
    return "/tmp/kestrolumen-global";
}

// The user's own folder is closed to others; the common one is open to all, and sticky, so that nobody
// removes what isn't his.
void MakeFolder(const NamePlace& place) {
    const mode_t mode = place.isGlobal ? 01777 : 0700;
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(place.folder).parent_path(), error);
    if (mkdir(place.folder.c_str(), mode) == 0) chmod(place.folder.c_str(), mode);  // whatever the umask took
}

// The folder, locked against everybody else who looks for names in it.
Descriptor LockedFolder(const NamePlace& place) {
    Descriptor folder(open(place.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
    struct stat facts {};
    if (!folder.IsOpen() || fstat(folder.Get(), &facts) != 0) FailErrno();
    if (!place.isGlobal && facts.st_uid != getuid()) throw Failure{ERROR_ACCESS_DENIED};
    if (Retry([&] { return flock(folder.Get(), LOCK_EX); }) != 0) FailErrno();
    return folder;
}

// ---- File names ----------------------------------------------------------------------------------------

constexpr std::string_view fileEnding = ".mutex";

std::uint64_t Fnv1a(std::string_view text) noexcept {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    return hash;
}

// The name as a file name: what a file name can't hold becomes %XX, and of a long name the rest its hash.
std::string FileNameOf(std::u16string_view name) {
    std::string encoded;
    for (const char c : Utf8FromUtf16(name)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > 0x20 && c != '/' && c != '%' && c != '~') {
            encoded += c;
        } else {
            constexpr char digits[] = "0123456789ABCDEF";
            encoded += {'%', digits[byte >> 4], digits[byte & 0xF]};
        }
    }
    constexpr std::size_t limit = 200;  // of NAME_MAX, which is 255
    if (encoded.size() > limit) {
        char hash[18];
        static_cast<void>(
            std::snprintf(hash, sizeof hash, "~%016llX", static_cast<unsigned long long>(Fnv1a(encoded))));
        encoded.resize(limit);
        encoded += hash;
    }
    return encoded.append(fileEnding);
}

// ---- Locks ---------------------------------------------------------------------------------------------

// Whether nobody else holds the name. Replaces the lock that the description has.
bool HeldByNobodyElse(const Descriptor& descriptor) {
    if (Retry([&] { return flock(descriptor.Get(), LOCK_EX | LOCK_NB); }) == 0) return true;
    if (errno != EWOULDBLOCK) FailErrno();
    return false;
}

// Within the folder's lock nobody holds an exclusive lock for long enough to be waited for.
void Hold(const Descriptor& descriptor) {
    if (Retry([&] { return flock(descriptor.Get(), LOCK_SH); }) != 0) FailErrno();
}

// The file's first byte: a lock on it is ownership, its content says whether it has an owner. Who finds it
// set without finding a lock learns that the owner died.
constexpr char ownedMark = '1';
constexpr char freeMark = '0';

int LockFirstByte(int descriptor, short type) noexcept {
    struct flock byte {};
    byte.l_type = type;
    byte.l_whence = SEEK_SET;
    byte.l_len = 1;
    return Retry([&] { return fcntl(descriptor, F_OFD_SETLK, &byte); });
}

void Mark(int descriptor, char mark) noexcept {
    static_cast<void>(Retry([&] { return pwrite(descriptor, &mark, 1, 0); }));
}

}  // namespace

NamePlace::NamePlace(std::u16string_view name) {
    constexpr std::u16string_view local = u"Local\\", global = u"Global\\";
    isGlobal = name.starts_with(global);
    if (isGlobal) name.remove_prefix(global.size());
    if (name.starts_with(local) && !isGlobal) name.remove_prefix(local.size());

    constexpr std::size_t longest = 0x7FFF;
    if (name.empty()) throw Failure{ERROR_INVALID_NAME};
    if (name.front() == u'\\') throw Failure{ERROR_BAD_PATHNAME};
    if (name.find(u'\\') != std::u16string_view::npos) throw Failure{ERROR_PATH_NOT_FOUND};
    if (name.size() > longest) throw Failure{ERROR_FILENAME_EXCED_RANGE};
    folder = isGlobal ? GlobalFolder() : LocalFolder();
    file = FileNameOf(name);
}

NameFile::NameFile(const NamePlace& place, bool mayMake, bool owned) : place_(place), process_(getpid()) {
    if (mayMake) MakeFolder(place);
    const Descriptor folder = LockedFolder(place);
    const char* const path = place.file.c_str();
    // Not O_CREAT at once: Linux refuses that for another user's file in a sticky folder.
    descriptor_ = Descriptor(openat(folder.Get(), path, O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    if (!descriptor_.IsOpen() && errno == ENOENT && mayMake) {
        const mode_t mode = place.isGlobal ? 0666 : 0600;
        descriptor_ = Descriptor(openat(folder.Get(), path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        if (descriptor_.IsOpen()) fchmod(descriptor_.Get(), mode);
    }
    if (!descriptor_.IsOpen()) FailErrno();
    existed_ = !HeldByNobodyElse(descriptor_);
    if (!existed_ && !mayMake) {
        unlinkat(folder.Get(), path, 0);
        throw Failure{ERROR_FILE_NOT_FOUND};
    }
    if (!existed_) Mark(descriptor_.Get(), freeMark);
    if (!existed_ && owned) static_cast<void>(TryToOwn());
    Hold(descriptor_);
}

NameFile::~NameFile() {
    if (process_ != getpid()) return;
    try {
        const Descriptor folder = LockedFolder(place_);
        struct stat own {
        }, named{};
        if (HeldByNobodyElse(descriptor_) && fstat(descriptor_.Get(), &own) == 0 &&
            fstatat(folder.Get(), place_.file.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
            own.st_ino == named.st_ino && own.st_dev == named.st_dev) {
            unlinkat(folder.Get(), place_.file.c_str(), 0);
        }
    } catch (const Failure&) {
        // The folder can't be looked at any more: the file stays behind, as a dead process leaves it.
    }
}

Ownership NameFile::TryToOwn() const {
    if (LockFirstByte(descriptor_.Get(), F_WRLCK) != 0) {
        if (errno != EAGAIN && errno != EACCES) FailErrno();
        return Ownership::refused;
    }
    char mark = freeMark;
    static_cast<void>(Retry([&] { return pread(descriptor_.Get(), &mark, 1, 0); }));
    Mark(descriptor_.Get(), ownedMark);
    return mark == ownedMark ? Ownership::takenFromTheDead : Ownership::taken;
}

void NameFile::Disown() const noexcept {
    Mark(descriptor_.Get(), freeMark);
    Abandon();
}

void NameFile::Abandon() const noexcept {
    static_cast<void>(LockFirstByte(descriptor_.Get(), F_UNLCK));
}

}  // namespace winapi
