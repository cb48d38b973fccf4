#include "addin/detail/module.h"

#include "addin/locateexcel.h"

#include <new>

HMODULE ModuleHandle = nullptr;
ModuleFacts AddInModule;

namespace {

void NoteVersion(const FileVersionInfo& version) {
    if (version.data == nullptr) return;
    const VS_FIXEDFILEINFO& numbers = version.fixedInfo;
    AddInModule.productMajorVersion = HIWORD(numbers.dwProductVersionMS);
    AddInModule.fileVersionText =
        CStringWFormat(TEXT("%d.%d.%d.%d"), HIWORD(numbers.dwFileVersionMS), LOWORD(numbers.dwFileVersionMS),
                       HIWORD(numbers.dwFileVersionLS), LOWORD(numbers.dwFileVersionLS));
}

}  // namespace

void AttachModule(HMODULE module) {
    ModuleHandle = module;
    NoteVersion(FileVersionInfo(GetModulePath(module)));
    LocateExcel12Entry();
    AddInModule.fullPath =
        GetModulePathParts(module, &AddInModule.directory, &AddInModule.baseName, &AddInModule.fileName);
    AddInModule.temporaryDirectory = TempDirectory();
}

void NoteModuleUnlessNoted() {
    // The last fact tells that all are noted. The name may lack nonetheless: a system without memory may not
    // tell it.
    if (!AddInModule.fileName.IsEmpty() && !AddInModule.temporaryDirectory.IsEmpty()) return;
    AttachModule(ModuleHandle);
    if (AddInModule.fileName.IsEmpty()) throw std::bad_alloc();
}
