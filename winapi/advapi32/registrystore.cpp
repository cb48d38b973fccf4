#include "registrystore.h"

#include "accounts.h"
#include "kernel32/descriptor.h"
#include "kernel32/failure.h"
#include "kernel32/filetime.h"
#include "registrytext.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <mutex>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace winapi {
namespace {

using Path = std::filesystem::path;

// Where links lead, whether a file is there or not: a rename would replace a link itself. Of a circle some
// link is left, which can't be opened.
Path BehindLinks(Path path) {
    constexpr int mostLinks = 40;  // as path_resolution(7) has it
    std::error_code error;
    for (int count = 0; count < mostLinks; ++count) {
        const Path target = std::filesystem::read_symlink(path, error);
        if (error) break;
        path = path.parent_path() / target;
    }
    return path;
}

Path FilePath() {
    const char* const own = std::getenv("KESTROLUMEN_REGISTRY");
    if (own != nullptr && *own != '\0') return BehindLinks(own);
    return BehindLinks(UserFolder("XDG_STATE_HOME", ".local/state") + "/kestrolumen/registry");
}

Descriptor Open(const Path& path, int flags) {
    constexpr mode_t mode = 0600;
    Descriptor file(open(path.c_str(), flags | O_CLOEXEC, mode));
    if (!file.IsOpen()) FailErrno();
    return file;
}

// What this process knows of the file. As long as that is open, no other file gets its number.
struct Known {
    std::mutex mutex;
    Descriptor file;  // none is there, if it isn't open
    struct stat facts {};
    Registry registry;
};

// Never destroyed: destructors that run at the very end of the process may still close keys.
Known& OfThisProcess() {
    static Known& known = *new Known;
    return known;
}

// A file that was edited in place has another size or time, whatever its number. Renaming changes st_ctim:
// that says nothing.
bool SameFile(const struct stat& one, const struct stat& other) noexcept {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino && one.st_size == other.st_size &&
           one.st_mtim.tv_sec == other.st_mtim.tv_sec && one.st_mtim.tv_nsec == other.st_mtim.tv_nsec;
}

void Refresh(Known& known, const Path& path) {
    struct stat facts {};
    if (stat(path.c_str(), &facts) != 0) {
        if (errno != ENOENT && errno != ENOTDIR) FailErrno();
        if (known.file.IsOpen()) known.registry = Registry();
        known.file = Descriptor();
        return;
    }
    if (known.file.IsOpen() && SameFile(facts, known.facts)) return;

    Descriptor file = Open(path, O_RDONLY);
    if (fstat(file.Get(), &facts) != 0) FailErrno();
    std::string text(static_cast<std::size_t>(facts.st_size), '\0');
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t count = Retry([&] { return read(file.Get(), &text[done], text.size() - done); });
        if (count < 0) FailErrno();
        if (count == 0) throw Failure{ERROR_GEN_FAILURE};
        done += static_cast<std::size_t>(count);
    }
    known.registry = RegistryFromText(text);
    known.file = std::move(file);
    known.facts = facts;
}

void Save(const Path& path, std::string_view text) {
    const Path beside = path.string() + ".new";
    const Descriptor file = Open(beside, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW);
    while (!text.empty()) {
        const ssize_t count = Retry([&] { return write(file.Get(), text.data(), text.size()); });
        if (count < 0) FailErrno();
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    if (fsync(file.Get()) != 0 || std::rename(beside.c_str(), path.c_str()) != 0) FailErrno();
}

}  // namespace

void ReadRegistry(const std::function<void(Registry&)>& read) {
    Known& known = OfThisProcess();
    const std::lock_guard lock(known.mutex);
    Refresh(known, FilePath());
    read(known.registry);
}

void ChangeRegistry(const std::function<void(Registry&)>& change) {
    Known& known = OfThisProcess();
    const std::lock_guard lock(known.mutex);
    const Path path = FilePath(), folder = path.has_parent_path() ? path.parent_path() : ".";
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw Failure{ErrorFromErrno(error.value())};
    const Descriptor open = Open(folder, O_RDONLY | O_DIRECTORY);
    if (Retry([&] { return flock(open.Get(), LOCK_EX); }) != 0) FailErrno();
    Refresh(known, path);
    Registry changed = known.registry;
    change(changed);
    Save(path, TextFromRegistry(changed));
}

std::uint64_t FileTimeNow() noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return FileTimeFromTimespec(now);
}

}  // namespace winapi
