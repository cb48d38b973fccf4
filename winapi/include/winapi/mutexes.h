// Named mutexes, seen by other processes.
#pragma once

#include "winapi/types.h"
