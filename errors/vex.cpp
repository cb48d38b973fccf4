#include "errors/vex.h"

#include "text/text.h"

VexException::VexException(Key ownKey, const char* raiser, std::int32_t number)
    : key(ownKey.text), function(CStringWFromAnsi(raiser)), code(number) {}
