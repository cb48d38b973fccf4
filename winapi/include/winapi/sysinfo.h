// Facts of the machine.
#pragma once

#include "winapi/types.h"
