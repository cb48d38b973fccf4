// A stand-in for the Windows header of this name: the calls that the product makes and nothing more, each
// faithful to Microsoft's published description down to the error codes that product code reads.
// One concept a header, in the folder of the library that supplies the calls; README.md lists them all.
#pragma once

#include "winapi/types.h"
#include "winapi/errorcodes.h"
#include "winapi/codepages.h"
#include "winapi/crt.h"
#include "winapi/modules.h"
#include "winapi/mutexes.h"
#include "winapi/security.h"
#include "winapi/strings.h"
#include "winapi/sysinfo.h"
#include "winapi/temppath.h"
#include "winapi/tls.h"
#include "winapi/version.h"
