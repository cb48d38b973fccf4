#include "addin/detail/module.h"

#include "addin/detail/locateexcel.h"

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
