// What the loader and Excel call in the add-in's life. Each runs on Excel's main thread.
//
// There is no xlAutoRegister, xlAddInManagerInfo or xlAutoFree12: no function is registered before the
// companion workbook's handshake, and no value that the add-in returns is freed by a call of Excel's.
#pragma once

#include "excelvalues/xlcall.h"

extern "C" {
// Notes the module's facts and finds Excel's callback when `reason` is DLL_PROCESS_ATTACH; any other reason
// does nothing. Always TRUE: whatever can't be had stays empty, without a report.
BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

// Makes the store for results. Gives 1, or 0 when an exception of the Vex family comes out of that; without
// memory for the store the result is still 1, and the workbook's handshake makes it.
int WINAPI xlAutoOpen();

// Unregisters the worksheet functions, then closes the store. The handshake's mutex stays. Nothing of this
// takes memory. Gives 1.
int WINAPI xlAutoClose();

// The user has added or removed the add-in: nothing to do. Both give 1.
int WINAPI xlAutoAdd();
int WINAPI xlAutoRemove();

// Nothing: no value is ever marked as the add-in's to free, and what was returned stays owned by its
// thread's slot. `value` may be null.
void WINAPI xlAutoFree(void* value);
}
