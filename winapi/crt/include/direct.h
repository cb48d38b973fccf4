// Microsoft's direct.h: making and removing folders. 0, or -1 with errno set.
#pragma once

#include "winapi/types.h"

int _wmkdir(const WCHAR* path) noexcept;
// A link to a folder is removed itself. EINVAL for what is no folder.
int _wrmdir(const WCHAR* path) noexcept;
