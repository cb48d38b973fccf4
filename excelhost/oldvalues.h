// Excel's value record of the years before 2007, XLOPER, which type texts with P and R still pass: byte texts
// of up to 255 characters in the ANSI code page, sheets of 65,536 rows and 256 columns. Our own declarations,
// laid out as on Windows in every home.
#pragma once

#include "excelhost/value.h"

namespace excelhost {

struct XLREF {
    WORD rwFirst;
    WORD rwLast;
    BYTE colFirst;
    BYTE colLast;
};

struct XLMREF {
    WORD count;
    XLREF reflref[1];
};

struct XLOPER {
    union {
        alignas(8) double num;
        BYTE* str;  // the count, then the bytes
        WORD xbool;
        WORD err;
        std::int16_t w;
        struct {
            WORD count;
            XLREF ref;
        } sref;
        struct {
            XLMREF* lpmref;
            IDSHEET idSheet;
        } mref;
        struct {
            XLOPER* lparray;
            WORD rows;
            WORD columns;
        } array;
    } val;
    WORD xltype;
};
static_assert(sizeof(XLREF) == 6 && sizeof(XLMREF) == 8);
static_assert(sizeof(XLOPER) == 8 + 2 * sizeof(void*));
static_assert(offsetof(XLOPER, xltype) == 2 * sizeof(void*));

// What old records can't hold is cut: text behind 255 bytes, array rows behind 65,535. A reference beyond the
// old limits gives #REF!.
[[nodiscard]] XLOPER OldRecordFrom(const Value& value, Blocks& blocks);

// As ValueFrom of a new record.
[[nodiscard]] Value ValueFrom(const XLOPER& record);

// Text in the ANSI code page, at most `most` bytes of it, and back.
[[nodiscard]] std::string AnsiFrom(TextView text, std::size_t most);
[[nodiscard]] Text TextFromAnsi(std::string_view ansi);

}  // namespace excelhost
