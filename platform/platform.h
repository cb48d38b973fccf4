// Platform services: what the library asks of the operating system, with the decisions (fallbacks, orders,
// limits) that the rest relies on. Each header tells its own.
#pragma once

// Files and folders.
#include "platform/checksums.h"
#include "platform/directories.h"
#include "platform/file.h"
#include "platform/fileinfo.h"
#include "platform/folders.h"
#include "platform/tempdirectory.h"
#include "platform/winfile.h"

// Settings, names and access.
#include "platform/currentusersecurityattributes.h"
#include "platform/mutex.h"
#include "platform/registrykey.h"
#include "platform/securityattributes.h"

// The machine and the modules in it.
#include "platform/cpufeatures.h"
#include "platform/fileversioninfo.h"
#include "platform/modulepaths.h"
#include "platform/moduleusage.h"
#include "platform/osversion.h"
#include "platform/processorcounts.h"
#include "platform/systeminfo.h"

// Sets of numbers as bits, and small utilities.
#include "platform/bits.h"
#include "platform/indexsets.h"
#include "platform/primes.h"
#include "platform/swapbytes.h"

// Messages and windows.
#include "platform/messagepumps.h"
#include "platform/systemerrortext.h"
#include "platform/windowtexts.h"
