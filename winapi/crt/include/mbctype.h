// A stand-in for the runtime library's header of this name: the multibyte code page of the process.
#pragma once

#define _MB_CP_SBCS 0     // no double-byte characters at all
#define _MB_CP_OEM (-2)   // the OEM code page
#define _MB_CP_ANSI (-3)  // the ANSI code page
#define _MB_CP_LOCALE (-4)

// Sets the page that the _mbs functions go by, process-wide; to start with it is the ANSI code page. Gives 0,
// or -1 with errno EINVAL for a page that is not known or is neither single- nor double-byte.
int _setmbcp(int codePage) noexcept;
