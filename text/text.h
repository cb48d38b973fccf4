// The text toolkit's chief header: the string types, conversions between their encodings, formatted text,
// numbers, codings and escapes, quoting, lists, tokens and search.
#pragma once

#include "text/codings.h"
#include "text/conversions.h"
#include "text/escapes.h"
#include "text/format.h"
#include "text/halfwidth.h"
#include "text/numbers.h"
#include "text/quoting.h"
#include "text/rendering.h"
#include "text/search.h"
#include "text/strings.h"
#include "text/tokens.h"
