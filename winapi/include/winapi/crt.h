// What Microsoft's runtime library adds to the standard one.
#pragma once

#include "winapi/types.h"
