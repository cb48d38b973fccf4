#include "importedheap.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <set>

namespace {

std::set<void*> blocks;
std::size_t toFail = 0;
bool struck = false;

bool Fails() noexcept {
    if (toFail == 0 || --toFail != 0) return false;
    struck = true;
    return true;
}

void* Note(void* block) {
    if (block != nullptr) blocks.insert(block);
    return block;
}

void* Malloc(std::size_t size) {
    return Fails() ? nullptr : Note(std::malloc(size));
}
void* Calloc(std::size_t count, std::size_t size) {
    return Fails() ? nullptr : Note(std::calloc(count, size));
}
void Free(void* block) {
    blocks.erase(block);
    std::free(block);
}
void* Realloc(void* block, std::size_t size) {
    if (Fails()) return nullptr;
    const bool known = block == nullptr || blocks.erase(block) != 0;
    void* const moved = std::realloc(block, size);
    return known ? Note(moved) : moved;
}

struct Redirected {
    const char* name;
    void* here;
    void* there;
};

template <typename Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

std::array<Redirected, 4> functions = {{{"malloc", Address(&Malloc), nullptr},
                                        {"calloc", Address(&Calloc), nullptr},
                                        {"realloc", Address(&Realloc), nullptr},
                                        {"free", Address(&Free), nullptr}}};

}  // namespace

ImportedHeap::ImportedHeap(HMODULE module) : module_(module) {
    blocks.clear();
    FailNth(0);
    const HMODULE runtime = GetModuleHandleW(L"msvcrt.dll");
    for (Redirected& function : functions)
        function.there = reinterpret_cast<void*>(GetProcAddress(runtime, function.name));
    Redirect(true);
}

ImportedHeap::~ImportedHeap() {
    Redirect(false);
}

void ImportedHeap::FailNth(std::size_t nth) noexcept {
    toFail = nth;
    struck = false;
}

bool ImportedHeap::Struck() const noexcept {
    return struck;
}

std::size_t ImportedHeap::LiveBlocks() const noexcept {
    return blocks.size();
}

// Each imported address that is one of the functions' is replaced ("PE Format", import address table).
void ImportedHeap::Redirect(bool here) {
    auto* const base = reinterpret_cast<BYTE*>(module_);
    const auto& dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos.e_lfanew);
    const IMAGE_DATA_DIRECTORY& table = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
    auto* const first = reinterpret_cast<void**>(base + table.VirtualAddress);
    DWORD protection = 0;
    VirtualProtect(first, table.Size, PAGE_READWRITE, &protection);
    for (void** address = first; address != first + table.Size / sizeof(void*); ++address) {
        for (const Redirected& function : functions) {
            if (*address == (here ? function.there : function.here))
                *address = here ? function.here : function.there;
        }
    }
    VirtualProtect(first, table.Size, protection, &protection);
}
