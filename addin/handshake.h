// The handshake with the companion workbook. The worksheet functions don't exist for Excel until that
// workbook has introduced itself: then they are registered, and a named mutex is put in place whose mere
// existence tells other processes of the logon that the add-in and its workbook are up. The mutex is never
// waited on and never owned.
//
// All of this runs on Excel's main thread.
#pragma once

#include "platform/platform.h"

#include <oleauto.h>

#include <cstdint>
#include <memory>
#include <vector>

// What xlfRegister gave for each registered function, in the order of registration; a failed registration
// leaves the 8 bytes of its error value.
extern std::vector<double> RegisteredFunctionIds;

// The mutex "Local\Kestrolumen is loaded mutex name 129342734_v8", null outside a handshake.
extern std::unique_ptr<Mutex> LoadedMarker;

// Unregisters what is registered, then registers the three functions under the add-in's bare file name. A
// refusal by Excel is not reported. Without memory std::bad_alloc is raised, ahead of all that, and what is
// registered stays.
void RegisterWorksheetFunctions();

// Unregisters every function in RegisteredFunctionIds, in order, and empties it. This takes no memory.
void UnregisterAll() noexcept;

extern "C" {
// The workbook calls one of these two when it has loaded; the lists of parameters match its declarations. The
// strings are read, as wide text, and nothing else is done with any parameter; a null string, or a null
// pointer to one, reads as empty. A repeated handshake starts clean, and the mutex's name is there all along.
// Where there is no store for results, since xlAutoClose has run or xlAutoOpen had no memory, one is opened;
// and where there was no memory for the module's facts, they are noted: after a handshake the functions work.
// Raises VexKernelObjectError when the mutex can't be created, and std::bad_alloc when there is no memory for
// it; the functions are registered by then, and a mutex from an earlier handshake stays. Raises
// std::bad_alloc, with everything as it was, when there is no memory for the steps before that.
void WINAPI InitializeXlaInformationVB(std::int32_t n1, std::int32_t n2, std::int32_t n3, BSTR* s1,
                                       std::int32_t n4, BSTR* s2, std::int32_t n5, BSTR* s3);
void WINAPI InitializeXlaInformationW(std::int32_t n1, std::int32_t n2, std::int32_t n3, BSTR* s1,
                                      std::int32_t n4, BSTR* s2, std::int32_t n5);

// The workbook calls this before it leaves: the mutex goes, the functions stay registered. Nothing happens
// without a handshake.
void WINAPI UninitializeXlaInformation(std::int32_t n);
}
