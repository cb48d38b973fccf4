#pragma once

#include "text/text.h"

// The user's folder for temporary files, with one trailing backslash or without it; "C:\" and "C:" where the
// system names none. It need not exist. Raises nothing but what the memory layer raises.
[[nodiscard]] CStringW TempDirectory();
[[nodiscard]] CStringW TempDirectoryNoSlash();
