// What a body raises of the library's own exceptions, in one text.
#pragma once

#include "errors/vex.h"
#include "text/conversions.h"

#include <string>

namespace support {

// "key function code", and behind it each argument in angle brackets.
inline std::string TextOf(const VexException& record) {
    std::string text = Utf8FromCStringW(record.key) + " " + Utf8FromCStringW(record.function) + " " +
                       std::to_string(record.code);
    for (const CStringW& argument : record.args) text += " <" + Utf8FromCStringW(argument) + ">";
    return text;
}

// The text of what `body` raises; empty for nothing. Other exceptions pass on.
template <typename Body>
std::string Raised(Body body) {
    try {
        body();
        return {};
    } catch (const VexException& record) {
        return TextOf(record);
    }
}

}  // namespace support
