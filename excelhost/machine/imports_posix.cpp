#include "excelhost/machine/imports.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

namespace excelhost {
namespace {

// What the dynamic section tells of a loaded module ("elf(5)"): its symbols' names and where their addresses go.
struct Tables {
    const char* names = nullptr;
    const ElfW(Sym) * symbols = nullptr;
    std::array<const std::byte*, 3> places{};  // of DT_JMPREL, DT_RELA and DT_REL
    std::array<std::size_t, 3> sizes{};
    bool hasAddends = sizeof(void*) == 8;  // of DT_JMPREL
};

template <class T>
const T* At(const ElfW(Dyn) & entry) {
    return reinterpret_cast<const T*>(entry.d_un.d_ptr);
}

Tables TablesOf(const link_map& module) {
    Tables tables;
    for (const ElfW(Dyn)* entry = module.l_ld; entry->d_tag != DT_NULL; ++entry) {
        switch (entry->d_tag) {
            case DT_STRTAB:
                tables.names = At<char>(*entry);
                break;
            case DT_SYMTAB:
                tables.symbols = At<ElfW(Sym)>(*entry);
                break;
            case DT_JMPREL:
                tables.places[0] = At<std::byte>(*entry);
                break;
            case DT_PLTRELSZ:
                tables.sizes[0] = entry->d_un.d_val;
                break;
            case DT_RELA:
                tables.places[1] = At<std::byte>(*entry);
                break;
            case DT_RELASZ:
                tables.sizes[1] = entry->d_un.d_val;
                break;
            case DT_REL:
                tables.places[2] = At<std::byte>(*entry);
                break;
            case DT_RELSZ:
                tables.sizes[2] = entry->d_un.d_val;
                break;
            case DT_PLTREL:
                tables.hasAddends = entry->d_un.d_val == DT_RELA;
                break;
            default:
                break;
        }
    }
    return tables;
}

// The table may be read-only once the module is loaded.
bool Write(void** place, void* function) {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    void* const start = reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(place) & ~(page - 1));
    if (mprotect(start, page, PROT_READ | PROT_WRITE) != 0) return false;
    *place = function;
    return true;
}

std::uint32_t SymbolOf(std::uint64_t info) {
    return static_cast<std::uint32_t>(sizeof(void*) == 8 ? info >> 32 : info >> 8);
}

// Whether any entry of a table was changed; those with an addend are longer and begin alike.
template <class Relocation>
bool Replace(const std::byte* table, std::size_t size, const Tables& tables, const link_map& module,
             const char* name, void* function) {
    bool changed = false;
    const auto* entries = reinterpret_cast<const Relocation*>(table);
    for (const Relocation& entry : std::span(entries, size / sizeof(Relocation))) {
        const std::uint32_t symbol = SymbolOf(entry.r_info);
        if (symbol == 0 || std::strcmp(tables.names + tables.symbols[symbol].st_name, name) != 0) continue;
        changed |= Write(reinterpret_cast<void**>(module.l_addr + entry.r_offset), function);
    }
    return changed;
}

}  // namespace

// Before it was the function that all of the process share.
void* ReplaceImport(HMODULE module, const char* name, void* function) {
    Dl_info info{};
    link_map* map = nullptr;
    void* const original = dlsym(RTLD_DEFAULT, name);
    if (original == nullptr || dladdr1(module, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0) {
        return nullptr;
    }
    const Tables tables = TablesOf(*map);
    if (tables.names == nullptr || tables.symbols == nullptr) return nullptr;
    bool changed = false;
    for (std::size_t i = 0; i < tables.places.size(); ++i) {
        if (tables.places[i] == nullptr) continue;
        const bool hasAddends = i == 1 || (i == 0 && tables.hasAddends);
        const auto replace = hasAddends ? Replace<ElfW(Rela)> : Replace<ElfW(Rel)>;
        changed |= replace(tables.places[i], tables.sizes[i], tables, *map, name, function);
    }
    return changed ? original : nullptr;
}

}  // namespace excelhost
