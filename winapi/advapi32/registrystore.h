// The registry's file.
//
// A reader loads the file when another one has taken its place. A writer writes the changed text beside it, has
// that reach the disk and renames it over the file, all under a lock on the folder: at any moment the file is
// one that some writer finished. A process that is killed loses its lock and leaves at most an unfinished copy,
// which the next writer overwrites.
#pragma once

#include "registrytree.h"

#include <functional>

namespace winapi {

// Runs `read` on the registry as it is now, empty where there is no file. Throws Failure.
void ReadRegistry(const std::function<void(Registry&)>& read);

// Runs `change` on a copy, which takes the registry's place unless the change throws.
void ChangeRegistry(const std::function<void(Registry&)>& change);

// The time now as a FILETIME counts.
[[nodiscard]] std::uint64_t FileTimeNow() noexcept;

}  // namespace winapi
