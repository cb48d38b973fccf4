// A stand-in for the COM compiler-support header of this name.
#pragma once

#include <oleauto.h>

#include "winapi/bstrt.h"
#include "winapi/comerror.h"
