// Paths as text, and the paths of loaded modules. Nothing here raises but what the memory layer raises.
#pragma once

#include "text/text.h"

#include <windows.h>

// Takes a path apart: "C:\dir\name.ext" gives "C:", "\dir\", "name" and ".ext". Backslash and slash both
// separate; there is no limit of length. A path that the system refuses, or a null one, gives four empty
// texts. The texts may stand where `path` comes from.
void SplitPath(const WCHAR* path, CStringW& drive, CStringW& dir, CStringW& fname, CStringW& ext);

// `path` with a backslash at its end; one that is there already stays the only one. Empty or null text gives
// "\".
[[nodiscard]] CStringW AddTrailingBackslash(const WCHAR* path);

// `path` without its last character where that is a backslash; only one is taken.
[[nodiscard]] CStringW RemoveTrailingBackslash(const CStringW& path);

// The full path of a loaded module, of the process's executable for a null one; empty when the system gives
// none. Paths beyond 2048 units are cut.
[[nodiscard]] CStringW GetModulePath(HMODULE module);

// The same; beside it the folder with its trailing backslash, the file's name without its extension, and the
// file's name. Each pointer may be null, and then that part isn't given.
CStringW GetModulePathParts(HMODULE module, CStringW* directory, CStringW* baseName, CStringW* fileName);
