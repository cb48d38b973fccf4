#include "winapi/modules.h"

#include "failure.h"
#include "loadedmodules.h"
#include "paths.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

using winapi::AtBorder;
using winapi::Failure;
using winapi::LoadedModules;
using Module = winapi::LoadedModule;

namespace {

constexpr std::u16string_view separators = u"\\/:";

// Held while images come and go, and so while their DllMain runs, as Windows holds its own: recursive, since
// a DllMain may load another image.
std::recursive_mutex loaderLock;

// LoadLibraryW calls that no FreeLibrary has undone. Never destroyed, since modules may still be let go at
// the very end of the process.
std::map<HMODULE, DWORD>& LoadCounts() {
    static auto& counts = *new std::map<HMODULE, DWORD>;
    return counts;
}

std::string ExecutablePath() {
    std::string path(4096, '\0');
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    if (length < 0) winapi::FailErrno();
    path.resize(static_cast<std::size_t>(length));
    return path;
}

HMODULE HandleOf(std::uintptr_t base) noexcept {
    return reinterpret_cast<HMODULE>(base);
}

// The module of a handle; null stands for the executable.
Module ModuleOf(HMODULE handle) {
    std::vector<Module> modules = LoadedModules();
    const auto found = handle == nullptr
                           ? modules.begin()
                           : std::find_if(modules.begin(), modules.end(), [=](const Module& module) {
                                 return HandleOf(module.base) == handle;
                             });
    if (found == modules.end()) throw Failure{ERROR_MOD_NOT_FOUND};
    return std::move(*found);
}

// The name as a file's: ".dll" added when there is no extension, the point that forbids this taken away.
std::u16string FileNameOf(std::u16string_view name) {
    const std::size_t lastPart = name.find_last_of(separators) + 1;  // npos + 1 is 0
    const std::size_t point = name.find_last_of(u'.');
    const bool hasPoint = point != std::u16string_view::npos && point >= lastPart;
    if (!hasPoint) return std::u16string(name) + u".dll";
    if (point == name.size() - 1) name.remove_suffix(1);
    return std::u16string(name);
}

bool HasFolder(std::u16string_view name) noexcept {
    return name.find_first_of(separators) != std::u16string_view::npos;
}

std::u16string LastPart(const std::string& path) {
    return winapi::Utf16FromUtf8(std::string_view(path).substr(path.rfind('/') + 1));
}

// The loaded module of a file name or full path; null when there is none.
const Module* FindByName(const std::vector<Module>& modules, std::u16string_view fileName) {
    const bool whole = HasFolder(fileName);
    const std::u16string wanted = whole ? winapi::WindowsPath(winapi::FullPath(winapi::SystemPath(fileName)))
                                        : std::u16string(fileName);
    for (const Module& module : modules) {
        if (winapi::SameName(whole ? winapi::WindowsPath(module.path) : LastPart(module.path), wanted)) {
            return &module;
        }
    }
    return nullptr;
}

struct CloseLibrary {
    void operator()(void* library) const noexcept { dlclose(library); }
};
using Library = std::unique_ptr<void, CloseLibrary>;

// One more reference to a loaded image.
Library Reopen(const Module& module) {
    Library library(module.IsExecutable() ? dlopen(nullptr, RTLD_NOW)
                                          : dlopen(module.dlName.c_str(), RTLD_NOW | RTLD_NOLOAD));
    if (!library) throw Failure{ERROR_MOD_NOT_FOUND};
    return library;
}

// Why a file couldn't be loaded: it isn't there, it is no image for this process, or something that it
// needs isn't there.
DWORD ReasonForRefusal(const std::string& path) noexcept {
    std::FILE* file = std::fopen(path.c_str(), "rbe");
    if (file == nullptr) return ERROR_MOD_NOT_FOUND;
    std::array<char, EI_CLASS + 1> start{};
    const std::size_t count = std::fread(start.data(), 1, start.size(), file);
    static_cast<void>(std::fclose(file));
    constexpr char ownClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    const bool fits = count == start.size() && std::string_view(start.data(), SELFMAG) == ELFMAG &&
                      start[EI_CLASS] == ownClass;
    return fits ? ERROR_MOD_NOT_FOUND : ERROR_BAD_EXE_FORMAT;
}

Library Load(const std::u16string& fileName) {
    const std::vector<Module> modules = LoadedModules();
    if (const Module* loaded = FindByName(modules, fileName)) {
        // Not by Reopen: another thread may have let the image go since the list was made.
        const char* const name = loaded->IsExecutable() ? nullptr : loaded->dlName.c_str();
        if (Library library{dlopen(name, RTLD_NOW)}) return library;
    }

    const std::string path = winapi::SystemPath(fileName);
    if (HasFolder(fileName)) {
        const std::string full = winapi::FullPath(path);
        if (Library library{dlopen(full.c_str(), RTLD_NOW)}) return library;
        throw Failure{ReasonForRefusal(full)};
    }
    const std::string& executable = modules.front().path;
    for (const std::string& candidate :
         {executable.substr(0, executable.rfind('/') + 1) + path, winapi::FullPath(path), path}) {
        if (Library library{dlopen(candidate.c_str(), RTLD_NOW)}) return library;
    }
    throw Failure{ERROR_MOD_NOT_FOUND};
}

HMODULE HandleOf(void* library) {
    link_map* map = nullptr;
    Dl_info image{};
    if (dlinfo(library, RTLD_DI_LINKMAP, &map) != 0 || dladdr(map->l_ld, &image) == 0) {
        throw Failure{ERROR_MOD_NOT_FOUND};
    }
    return reinterpret_cast<HMODULE>(image.dli_fbase);
}

}  // namespace

std::vector<Module> winapi::LoadedModules() {
    struct Image {
        const void* inside;
        std::string name;
    };
    // No exception may pass through the C library's frames.
    struct Collected {
        std::vector<Image> images;
        bool outOfMemory = false;
    } collected;
    dl_iterate_phdr(
        [](dl_phdr_info* image, std::size_t, void* context) {
            auto& result = *static_cast<Collected*>(context);
            try {
                result.images.push_back({image->dlpi_phdr, image->dlpi_name});
                return 0;
            } catch (const std::bad_alloc&) {
                result.outOfMemory = true;
                return 1;
            }
        },
        &collected);
    if (collected.outOfMemory) throw Failure{ERROR_NOT_ENOUGH_MEMORY};

    std::vector<Module> modules;
    modules.reserve(collected.images.size());
    for (Image& image : collected.images) {
        Dl_info facts{};
        if (dladdr(image.inside, &facts) == 0) continue;  // the kernel's own, or unloaded meanwhile
        const auto base = reinterpret_cast<std::uintptr_t>(facts.dli_fbase);
        if (modules.empty()) {
            modules.push_back({base, ExecutablePath(), {}});
        } else if (image.name.find('/') != std::string::npos) {
            modules.push_back({base, winapi::FullPath(image.name), std::move(image.name)});
        }
    }
    return modules;
}

DWORD winapi::LoadCount(HMODULE module) noexcept {
    const std::lock_guard lock(loaderLock);
    const auto count = LoadCounts().find(module);
    return count != LoadCounts().end() ? count->second : 0;
}

HMODULE WINAPI GetModuleHandleW(LPCWSTR name) noexcept {
    return AtBorder(HMODULE{}, [&] {
        const std::vector<Module> modules = LoadedModules();
        const Module* found = name == nullptr ? &modules.front() : FindByName(modules, FileNameOf(name));
        if (found == nullptr) throw Failure{ERROR_MOD_NOT_FOUND};
        return HandleOf(found->base);
    });
}

DWORD WINAPI GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size) noexcept {
    return AtBorder(DWORD{0}, [&] {
        const std::u16string text = winapi::WindowsPath(ModuleOf(module).path);
        if (size != 0) path[text.copy(path, size - 1)] = u'\0';
        const bool fits = text.size() < size;
        SetLastError(fits ? ERROR_SUCCESS : ERROR_INSUFFICIENT_BUFFER);
        return fits ? static_cast<DWORD>(text.size()) : size;
    });
}

FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name) noexcept {
    return AtBorder(FARPROC{}, [&] {
        const std::lock_guard lock(loaderLock);
        const Module image = ModuleOf(module);
        constexpr std::uintptr_t ordinals = 0x10000;
        if (reinterpret_cast<std::uintptr_t>(name) < ordinals) throw Failure{ERROR_PROC_NOT_FOUND};
        // dlsym goes on to the libraries that the image uses; what it finds there doesn't count.
        void* const symbol = dlsym(Reopen(image).get(), name);
        Dl_info owner{};
        if (symbol == nullptr || dladdr(symbol, &owner) == 0 ||
            reinterpret_cast<std::uintptr_t>(owner.dli_fbase) != image.base) {
            throw Failure{ERROR_PROC_NOT_FOUND};
        }
        return reinterpret_cast<FARPROC>(symbol);
    });
}

HMODULE WINAPI LoadLibraryW(LPCWSTR path) noexcept {
    return AtBorder(HMODULE{}, [&] {
        const std::lock_guard lock(loaderLock);
        if (path == nullptr) throw Failure{ERROR_INVALID_PARAMETER};
        if (*path == u'\0') throw Failure{ERROR_MOD_NOT_FOUND};
        Library library = Load(FileNameOf(path));
        const HMODULE handle = HandleOf(library.get());
        ++LoadCounts()[handle];
        static_cast<void>(library.release());
        return handle;
    });
}

BOOL WINAPI FreeLibrary(HMODULE module) noexcept {
    return AtBorder(FALSE, [&] {
        const std::lock_guard lock(loaderLock);
        if (module == nullptr) throw Failure{ERROR_INVALID_HANDLE};
        const Module image = ModuleOf(module);
        if (image.IsExecutable()) return TRUE;
        const Library reference = Reopen(image);
        if (dlclose(reference.get()) != 0) throw Failure{ERROR_MOD_NOT_FOUND};
        const auto count = LoadCounts().find(module);
        if (count != LoadCounts().end() && --count->second == 0) LoadCounts().erase(count);
        return TRUE;
    });
}
