// What only newer hosts have, found out by trying it: once a process, and then known for its life, also
// when the try failed for a passing reason.
#pragma once

#include <windows.h>
#include <oleauto.h>

// Tries Range.Formula2 on the first cell of `range`, and Range.HasSpill on `range` itself, unless the answer
// is known already: then Excel isn't called. A failure of any kind, a null range included, means that the
// host lacks the property, and is swallowed. The range is held for the length of the call.
void ProbeFormula2(IDispatch* range) noexcept;
void ProbeHasSpill(IDispatch* range) noexcept;
