// The images in the process.
#pragma once

#include "winapi/types.h"

#include <cstdint>
#include <string>
#include <vector>

namespace winapi {

// Its handle is the address of its ELF header.
struct LoadedModule {
    std::uintptr_t base;
    std::string path;    // absolute
    std::string dlName;  // what dlopen knows it by; empty for the executable

    [[nodiscard]] bool IsExecutable() const noexcept { return dlName.empty(); }
};

// All of them, the executable first. The kernel's own (vdso), which has no file, is left out.
[[nodiscard]] std::vector<LoadedModule> LoadedModules();

// The LoadLibraryW calls for a module that no FreeLibrary has undone.
[[nodiscard]] DWORD LoadCount(HMODULE module) noexcept;

}  // namespace winapi
