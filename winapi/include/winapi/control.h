// What a native program may set of the stand-in, where on Windows the machine's settings decide.
#pragma once

#include "winapi/types.h"

namespace winapi {

// Makes `codePage` the ANSI code page of the process and gives the one before it. UTF-8 may be chosen, as on
// Windows; a page that is not known is refused by an exception std::invalid_argument. To start with the page
// is 1252, or that of the environment variable KESTROLUMEN_ANSI_CODE_PAGE if it names a known one. The
// runtime's multibyte code page (_setmbcp) follows at its next _setmbcp(_MB_CP_ANSI), not before.
UINT SetAnsiCodePage(UINT codePage);

}  // namespace winapi
