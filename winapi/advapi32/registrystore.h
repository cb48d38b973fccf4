// The registry's file.
//
// A reader takes the file as it is. A writer reads it, writes the changed text beside it, has that reach the
// disk and renames it over the file, all under a lock on the folder: at any moment the file is one that some
// writer finished. A process that is killed loses its lock and leaves at most an unfinished copy, which the
// next writer overwrites.
#pragma once

#include "registrytree.h"

#include <functional>

namespace winapi {

// Without a file the registry is empty. Throws Failure.
[[nodiscard]] Registry LoadRegistry();

// Runs `change` on the registry, which is then written unless the change throws.
void ChangeRegistry(const std::function<void(Registry&)>& change);

// The time now as a FILETIME counts.
[[nodiscard]] std::uint64_t FileTimeNow() noexcept;

}  // namespace winapi
