// The text toolkit's chief header: the string types, conversions between their encodings, formatted text.
#pragma once

#include "text/conversions.h"
#include "text/format.h"
#include "text/halfwidth.h"
#include "text/strings.h"
