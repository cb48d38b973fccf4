#include "excelhost/modulefile.h"

#include "excelhost/value.h"

#include <windows.h>

namespace excelhost {
namespace {

// The file mapped as it would be to run, without a thing of it being run.
class MappedModule {
  public:
    explicit MappedModule(const std::filesystem::path& file)
        : module_(LoadLibraryExW(file.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES)) {}
    ~MappedModule() {
        if (module_ != nullptr) FreeLibrary(module_);
    }
    MappedModule(const MappedModule&) = delete;
    MappedModule& operator=(const MappedModule&) = delete;

    // The imports end with one without a name.
    [[nodiscard]] const IMAGE_IMPORT_DESCRIPTOR* Imports() const noexcept {
        if (module_ == nullptr) return nullptr;
        const auto* dos = At<IMAGE_DOS_HEADER>(0);
        const auto* head = At<IMAGE_NT_HEADERS>(static_cast<DWORD>(dos->e_lfanew));
        const DWORD place = head->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
        return place != 0 ? At<IMAGE_IMPORT_DESCRIPTOR>(place) : nullptr;
    }
    template <class T>
    [[nodiscard]] const T* At(DWORD offset) const noexcept {
        return reinterpret_cast<const T*>(reinterpret_cast<const char*>(module_) + offset);
    }

  private:
    HMODULE module_;
};

}  // namespace

std::string WhyNotLoaded(const std::filesystem::path& file) {
    const DWORD error = GetLastError();
    const MappedModule module(file);
    for (const auto* import = module.Imports(); import != nullptr && import->Name != 0; ++import) {
        const std::string name = module.At<char>(import->Name);
        const HMODULE found = LoadLibraryW(Wide(name).c_str());
        if (found == nullptr) return "it needs " + name + ", which isn't found";
        FreeLibrary(found);
    }
    return "error " + std::to_string(error);
}

}  // namespace excelhost
