// Directories and their trees. Paths are taken as the system has them, with backslashes. All but
// MakeLongPathName give failures as results; what the memory layer raises passes on. Null paths count as
// empty ones.
#pragma once

#include "text/text.h"

#include <windows.h>

#include <cstdint>
#include <functional>
#include <vector>

// The path with the long form of each of its names.
// Raises VexInvalidDirectory, VexCode::NoLongPathName, with the path, if it leads nowhere.
[[nodiscard]] CStringW MakeLongPathName(const CStringW& path);

// Whether the path leads to a directory, as a drive's root does, for which the empty path stands, too; and,
// where `probeWrite` asks for it, to one in which a file can be made. The probe is a file with a name of 16
// hexadecimal digits and ".TST", which is removed again.
//
// After a successful probe `clockSkewSeconds`, which may be null, gets the seconds by which the clock of the
// directory's file system runs ahead of the local one; else it stays as it was.
[[nodiscard]] bool DirectoryExists(const CStringW& path, bool probeWrite, std::int32_t* clockSkewSeconds);

// Free bytes on the volume of a directory: those that the caller's quota leaves to him, or all of them. -1 if
// the system doesn't tell.
[[nodiscard]] std::int64_t DiskFreeSpace(const WCHAR* path, bool forCaller) noexcept;

// The files and directories, without "." and "..", that match a pattern with the wildcards * and ? in its
// last name; in the system's order. Each has the directory that stands ahead of it in the pattern.
[[nodiscard]] std::vector<CStringW> ListDirectory(const WCHAR* pattern);

// Calls `callback` with the path of each file below `directory`, which has no trailing backslash, until it
// gives false; tells whether that ended the walk. Subdirectories are walked when they are met, in the
// system's order, and not told. What can't be listed counts as empty; what comes and goes during the walk may
// or may not be told. What `callback` raises ends the walk and passes on.
//
// The walk keeps the names that are still to come, and of no directory a search: neither stack nor handles
// grow with the depth of the tree.
//
// Paths have no limit but the system's. Links to directories are walked as the directories they lead to; a
// circle of them ends where the system takes a path no longer.
bool WalkDirectory(const WCHAR* directory, const std::function<bool(const WCHAR*)>& callback);

// Makes the directory and those ahead of it, as far as they are missing; the path's first component, such as
// "C:", is taken to exist. Tells whether the path is a directory now, as a drive's root is.
bool CreateDirectoryTree(const WCHAR* path);

// Removes a directory with all that is in it, or as much of that as can be removed; tells whether nothing is
// left. A link to a directory, whether met on the way or named by `path`, is removed itself: what it leads to
// stays as it is. Read-only files aren't removed. Like WalkDirectory it takes a tree of any depth.
bool RemoveDirectoryTree(const WCHAR* path);
