#include "registrystore.h"

#include "accounts.h"
#include "kernel32/failure.h"
#include "kernel32/filetime.h"
#include "registrytext.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace winapi {
namespace {

constexpr mode_t fileMode = 0600;

// Where links lead, whether a file is there or not: a rename would replace a link itself. Of a circle some
// link is left, which can't be opened.
std::string BehindLinks(std::filesystem::path path) {
    constexpr int mostLinks = 40;  // as path_resolution(7) has it
    std::error_code error;
    for (int count = 0; count < mostLinks; ++count) {
        const std::filesystem::path target = std::filesystem::read_symlink(path, error);
        if (error) break;
        path = path.parent_path() / target;
    }
    return path.string();
}

std::string FilePath() {
    const char* const own = std::getenv("KESTROLUMEN_REGISTRY");
    if (own != nullptr && *own != '\0') return BehindLinks(own);
    return BehindLinks(UserFolder("XDG_STATE_HOME", ".local/state") + "/kestrolumen/registry");
}

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return path.substr(0, slash == 0 ? 1 : slash);
}

std::string ReadAll(int file, std::size_t size) {
    std::string text(size, '\0');
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = pread(file, text.data() + done, size - done, static_cast<off_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) FailErrno();
        if (count == 0) throw Failure{ERROR_GEN_FAILURE};
        done += static_cast<std::size_t>(count);
    }
    return text;
}

void WriteAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(file, text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) FailErrno();
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

// A file that was edited in place has another size or time, whatever its number. Renaming changes st_ctim:
// that says nothing.
bool SameFile(const struct stat& one, const struct stat& other) noexcept {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino && one.st_size == other.st_size &&
           one.st_mtim.tv_sec == other.st_mtim.tv_sec && one.st_mtim.tv_nsec == other.st_mtim.tv_nsec;
}

}  // namespace

RegistryStore& RegistryStore::Instance() {
    // Never destroyed: destructors that run at the very end of the process may still close keys.
    static RegistryStore& store = *new RegistryStore;
    return store;
}

void RegistryStore::Take(RegistryNode&& root, std::string path, Descriptor file,
                         const struct stat& facts) noexcept {
    root_ = std::move(root);
    ++version_;
    path_ = std::move(path);
    file_ = std::move(file);
    facts_ = facts;
}

void RegistryStore::Refresh() {
    std::string path = FilePath();
    struct stat facts {};
    if (stat(path.c_str(), &facts) != 0) {
        if (errno != ENOENT && errno != ENOTDIR) FailErrno();
        if (version_ == 0 || file_.IsOpen() || path != path_) {
            Take(EmptyRegistry(), std::move(path), Descriptor(), {});
        }
        return;
    }
    if (file_.IsOpen() && path == path_ && SameFile(facts, facts_)) return;

    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.IsOpen() || fstat(file.Get(), &facts) != 0) FailErrno();
    RegistryNode root = RegistryFromText(ReadAll(file.Get(), static_cast<std::size_t>(facts.st_size)));
    Take(std::move(root), std::move(path), std::move(file), facts);
}

Descriptor RegistryStore::LockFolder() {
    const std::string path = FolderOf(FilePath());
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error) throw Failure{ErrorFromErrno(error.value())};
    Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.IsOpen()) FailErrno();
    while (flock(folder.Get(), LOCK_EX) != 0) {
        if (errno != EINTR) FailErrno();
    }
    return folder;
}

void RegistryStore::Save(RegistryNode& changed) {
    const std::string text = TextFromRegistry(changed);
    const std::string beside = path_ + ".new";
    Descriptor file(open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, fileMode));
    if (!file.IsOpen()) FailErrno();
    WriteAll(file.Get(), text);
    std::string path = path_;
    struct stat facts {};
    if (fsync(file.Get()) != 0 || fstat(file.Get(), &facts) != 0 ||
        rename(beside.c_str(), path_.c_str()) != 0) {
        FailErrno();
    }
    // Nothing fails from here on: the file has been written.
    Take(std::move(changed), std::move(path), std::move(file), facts);
}

std::uint64_t FileTimeNow() noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return FileTimeFromTimespec(now);
}

}  // namespace winapi
