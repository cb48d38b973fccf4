// A stand-in for the runtime library's header of this name: the multibyte code page of the process.
#pragma once

#define _MB_CP_ANSI (-3)  // the ANSI code page

// Sets the page that the _mbs functions go by, process-wide; to start with it is the ANSI code page. Gives 0,
// or -1 with errno EINVAL for a page that is not known or is neither single- nor double-byte.
int _setmbcp(int codePage) noexcept;
