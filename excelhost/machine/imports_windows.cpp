#include "excelhost/machine/imports.h"

#include <cstddef>
#include <cstring>

namespace excelhost {

// The import address table, next to the table of its names ("PE Format": the .idata section).
void* ReplaceImport(HMODULE module, const char* name, void* function) {
    auto* const base = reinterpret_cast<std::byte*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.VirtualAddress == 0) return nullptr;
    void* before = nullptr;
    for (auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
         library->Name != 0; ++library) {
        if (library->OriginalFirstThunk == 0) continue;
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
        auto* places = reinterpret_cast<IMAGE_THUNK_DATA*>(base + library->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++places) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            const auto* import =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            DWORD access = 0;
            if (std::strcmp(reinterpret_cast<const char*>(import->Name), name) != 0) continue;
            if (!VirtualProtect(places, sizeof *places, PAGE_READWRITE, &access)) continue;
            std::memcpy(&before, &places->u1.Function, sizeof before);
            std::memcpy(&places->u1.Function, &function, sizeof function);
            VirtualProtect(places, sizeof *places, access, &access);
        }
    }
    return before;
}

}  // namespace excelhost
