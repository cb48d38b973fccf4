// Where a file keeps its version resource.
#pragma once

#include "winapi/types.h"

#include <string>
#include <vector>

namespace winapi {

// The bytes of the file's VS_VERSIONINFO block: the section ".version_resource" of an ELF image of this
// process's width. At most 65535 bytes, which is what the block's own 16-bit length can tell. Throws Failure:
// ERROR_FILE_NOT_FOUND and the like for a file that can't be read, ERROR_RESOURCE_DATA_NOT_FOUND for one that
// is no such image or has no such section.
[[nodiscard]] std::vector<BYTE> ReadVersionResource(const std::string& path);

}  // namespace winapi
