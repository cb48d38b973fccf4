// A stand-in for the OLE Automation header of this name: strings, variants and arrays.
#pragma once

#include <windows.h>

#include "winapi/bstr.h"
#include "winapi/changetype.h"
#include "winapi/dispatch.h"
#include "winapi/errorinfo.h"
#include "winapi/safearray.h"
#include "winapi/variant.h"
