// Where a file keeps its version resource.
#pragma once

#include "winapi/types.h"

#include <string>
#include <vector>

namespace winapi {

// The bytes of the file's VS_VERSIONINFO block: the first RT_VERSION resource of a PE image, or the section
// ".version_resource" of an ELF one, of 32 or 64 bits each. At most 65535 bytes, which is what the block's
// own 16-bit length can tell. Throws Failure: ERROR_FILE_NOT_FOUND and the like for a file that can't be
// read, ERROR_RESOURCE_DATA_NOT_FOUND for one that is no image or has no such resource.
[[nodiscard]] std::vector<BYTE> ReadVersionResource(const std::string& path);

}  // namespace winapi
