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

Registry Load(const Path& path) {
    if (access(path.c_str(), F_OK) != 0 && (errno == ENOENT || errno == ENOTDIR)) return {};
    const Descriptor file = Open(path, O_RDONLY);
    struct stat facts {};
    if (fstat(file.Get(), &facts) != 0) FailErrno();
    std::string text(static_cast<std::size_t>(facts.st_size), '\0');
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t count = Retry([&] { return read(file.Get(), &text[done], text.size() - done); });
        if (count < 0) FailErrno();
        if (count == 0) throw Failure{ERROR_GEN_FAILURE};
        done += static_cast<std::size_t>(count);
    }
    return RegistryFromText(text);
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

Registry LoadRegistry() {
    return Load(FilePath());
}

void ChangeRegistry(const std::function<void(Registry&)>& change) {
    const Path path = FilePath(), folder = path.has_parent_path() ? path.parent_path() : ".";
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw Failure{ErrorFromErrno(error.value())};
    const Descriptor lock = Open(folder, O_RDONLY | O_DIRECTORY);
    if (Retry([&] { return flock(lock.Get(), LOCK_EX); }) != 0) FailErrno();
    Registry registry = Load(path);
    change(registry);
    Save(path, TextFromRegistry(registry));
}

std::uint64_t FileTimeNow() noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return FileTimeFromTimespec(now);
}

}  // namespace winapi
