// What the add-in knows about its own file, noted when the library is attached.
#pragma once

#include "platform/platform.h"

#include <cstdint>

// The handle that the loader passed to DllMain.
extern HMODULE ModuleHandle;

struct ModuleFacts {
    // High word of the product version; 0xFFFF for a file without a version resource.
    std::int32_t productMajorVersion = 0xFFFF;
    // The four words of the file version, as in "8.2.1.4"; empty for a file without a version resource.
    CStringW fileVersionText;
    CStringW fullPath;
    // Drive and directory of that path, with the trailing backslash.
    CStringW directory;
    // The file's name without its extension.
    CStringW baseName;
    // The file's name with its extension: the name under which Excel knows the add-in.
    CStringW fileName;
    // The temporary folder, with a trailing backslash.
    CStringW temporaryDirectory;
};

// Filled during attach, and constant afterwards.
extern ModuleFacts AddInModule;

// Notes `module` and all facts about it, and on the way finds Excel's callback (LocateExcel12Entry), behind
// the version and ahead of the paths. Raises only what the memory layer raises.
void AttachModule(HMODULE module);

// Does the same for ModuleHandle where attach had no memory for all the facts. Raises std::bad_alloc when the
// file's name still can't be had: nothing may be registered under an empty one.
void NoteModuleUnlessNoted();
