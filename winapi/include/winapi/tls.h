// Thread-local storage by index.
#pragma once

#include "winapi/types.h"
