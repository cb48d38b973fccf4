#pragma once

#include "errors/vex.h"

#include <string>

// What an operation raised, in one text: key, raiser, code and argument, with bars between. Empty if it
// raised nothing of the kind.
template <typename Operation>
std::string DiskErrorOf(Operation operation) {
    try {
        operation();
    } catch (const VexDiskError& error) {
        std::string text = Utf8FromCStringW(error.key) + "|" + Utf8FromCStringW(error.function) + "|" +
                           std::to_string(error.code);
        for (const CStringW& argument : error.args) text += "|" + Utf8FromCStringW(argument);
        return text;
    }
    return {};
}
