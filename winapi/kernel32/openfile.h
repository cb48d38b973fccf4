// The one road on which this layer opens files, for handles and for streams.
#pragma once

#include "descriptor.h"

#include "winapi/types.h"

#include <string>

#include <sys/stat.h>

namespace winapi {

struct FileOpening {
    unsigned rights;    // of FileRight
    unsigned shared;    // the same
    DWORD disposition;  // CREATE_NEW to TRUNCATE_EXISTING
    int flags;          // more flags for open
};

struct OpenedFile {
    Descriptor descriptor;
    bool existed;
};

// Opens a file, under the rules of winapi/files.h. Throws Failure.
[[nodiscard]] OpenedFile OpenFile(const std::string& path, const FileOpening& opening);

// Whether a file's permissions make it a read-only one.
[[nodiscard]] bool IsReadOnly(const struct stat& facts) noexcept;

}  // namespace winapi
