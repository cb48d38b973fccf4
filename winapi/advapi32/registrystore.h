// The registry's file, and what this process knows of it.
//
// A reader loads the file when another one has taken its place. A writer works on a copy, writes that beside
// the file, has it reach the disk and renames it over the file, all under a lock on the folder: at any moment
// the file is one that some writer finished. A process that is killed loses its lock and leaves at most an
// unfinished copy, which the next writer overwrites.
#pragma once

#include "kernel32/namefile.h"
#include "registrytree.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

#include <sys/stat.h>

namespace winapi {

class RegistryStore {
  public:
    // The one of the process.
    static RegistryStore& Instance();

    // Runs body(root, version) on the registry as it is now. A node stays where it is while the version is
    // the same; the first one is 1.
    template <class Body>
    auto Read(Body body) {
        const std::lock_guard lock(mutex_);
        Refresh();
        return body(std::as_const(root_), version_);
    }

    // Runs body(root) on a copy, which takes the registry's place unless the body throws.
    template <class Body>
    void Write(Body body) {
        const std::lock_guard lock(mutex_);
        const Descriptor folder = LockFolder();
        Refresh();
        RegistryNode changed = root_;
        body(changed);
        Save(changed);
    }

  private:
    [[nodiscard]] static Descriptor LockFolder();
    void Refresh();
    void Save(RegistryNode& changed);
    void Take(RegistryNode&& root, std::string path, Descriptor file, const struct stat& facts) noexcept;

    std::mutex mutex_;
    RegistryNode root_;
    std::uint64_t version_ = 0;
    std::string path_;
    // Of the file that was loaded: as long as it is open, no other file gets its number.
    Descriptor file_;
    struct stat facts_ {};
};

// The time now as a FILETIME counts.
[[nodiscard]] std::uint64_t FileTimeNow() noexcept;

}  // namespace winapi
