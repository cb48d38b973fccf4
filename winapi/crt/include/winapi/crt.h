// What Microsoft's runtime library adds to the standard one.
#pragma once

#include "winapi/types.h"

#include <cerrno>
#include <cstdio>

using errno_t = int;

// Takes a path apart: the drive with its colon, the folder with its trailing separator, the name, and the
// extension with its point. Both the backslash and the slash separate. A null field with size 0 is left out.
// A field too small gives ERANGE and a null path or an unfit field EINVAL, in errno too, and clears all
// fields. The parts together are the path.
errno_t _wsplitpath_s(const WCHAR* path, WCHAR* drive, std::size_t driveSize, WCHAR* dir, std::size_t dirSize,
                      WCHAR* name, std::size_t nameSize, WCHAR* extension,
                      std::size_t extensionSize) noexcept;

// Opens a file; `*file` becomes null and the error comes back where that can't be: EINVAL for a null argument
// or a mode that doesn't begin with r, w or a, EACCES for a folder, else what the system says. Modes are
// fopen's, and N keeps the file from child processes; the cache hints S, R, T and D change nothing. Text is
// not translated: every mode is binary.
errno_t _wfopen_s(std::FILE** file, const WCHAR* path, const WCHAR* mode) noexcept;
