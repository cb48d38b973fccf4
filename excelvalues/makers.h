// Makers of plain values. Each gives a new value under the default policy: the value owns its buffers and
// goes, with them, when the last reference goes. A maker that gets no memory raises std::bad_alloc and leaves
// nothing behind.
#pragma once

#include "excelvalues/value.h"

#include <string>
#include <vector>

// xltypeInt.
[[nodiscard]] XXloperPtr XXloperFromInt(std::int32_t number);

// xltypeStr, of the text up to its first zero unit and of its first 32767 units at most; what is behind
// them is dropped without a report. Narrow text is of the ANSI code page. A null pointer is an empty text.
[[nodiscard]] XXloperPtr XXloperFromString(const WCHAR* text);
[[nodiscard]] XXloperPtr XXloperFromString(const char* text);
[[nodiscard]] XXloperPtr XXloperFromString(const StdWString& text);
[[nodiscard]] XXloperPtr XXloperFromString(const std::string& text);
[[nodiscard]] XXloperPtr XXloperFromString(std::nullptr_t);

// xltypeBool with `truth` as it stands, be it 0, 1 or more.
[[nodiscard]] XXloperPtr XXloperFromBool(BYTE truth);

// xltypeErr with `code` as it stands: the xlerr... numbers, but nothing tests that.
[[nodiscard]] XXloperPtr XXloperFromError(std::int32_t code);

// xltypeFlow, xltypeMissing (an argument left out) and xltypeNil (an empty cell).
[[nodiscard]] XXloperPtr XXloperFlow();
[[nodiscard]] XXloperPtr XXloperMissing();
[[nodiscard]] XXloperPtr XXloperNil();

// xltypeBigData: a view of `bytes`, which must outlive the value; a null view when there are none. Raises
// std::length_error for more than 2,147,483,647 bytes, which a record cannot count.
[[nodiscard]] XXloperPtr XXloperFromBlob(const std::vector<BYTE>& bytes);

// The two routines that fill a caller's record in place. What stood in it is overwritten and not freed.

// Makes `record` the error `code`, with no return code.
void SetErrorValue(XLOPER12& record, std::int32_t code) noexcept;

// Makes `record` an array of one row and one column, whose element is `element` itself: no copy is made, and
// who owned the element owns it still. So the record must not be an XXloper that its destructor will see.
void SetSingleCellArray(XLOPER12& record, XLOPER12* element) noexcept;
