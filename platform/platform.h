// Platform services: what the library asks of the operating system, with the decisions (fallbacks, orders,
// limits) that the rest relies on. Each header tells its own.
#pragma once

#include "platform/checksums.h"
#include "platform/fileversioninfo.h"
#include "platform/modulepaths.h"
#include "platform/mutex.h"
#include "platform/securityattributes.h"
#include "platform/tempdirectory.h"
