// The add-in's file as the loader sees it, read from its PE headers.
#include "exportnames.h"

#include "platform/platform.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace {

class PeFile {
  public:
    explicit PeFile(const std::filesystem::path& path)
        : image_(path), headers_(*image_.At<IMAGE_NT_HEADERS>(HeadersOffset())) {}

    [[nodiscard]] bool IsForThisWidth() const {
        return headers_.Signature == IMAGE_NT_SIGNATURE &&
               headers_.OptionalHeader.Magic == IMAGE_NT_OPTIONAL_HDR_MAGIC;
    }

    [[nodiscard]] std::vector<std::string> Exports() const {
        const auto& directory = *AtAddress<IMAGE_EXPORT_DIRECTORY>(Directory(IMAGE_DIRECTORY_ENTRY_EXPORT));
        EXPECT_EQ(directory.NumberOfFunctions, directory.NumberOfNames) << "an export without a name";
        const auto* const addresses = AtAddress<DWORD>(directory.AddressOfNames, directory.NumberOfNames);
        std::vector<std::string> names;
        for (DWORD i = 0; i < directory.NumberOfNames; ++i) names.push_back(TextAt(addresses[i]));
        std::ranges::sort(names);
        return names;
    }

    [[nodiscard]] std::set<std::string> Imports() const {
        std::set<std::string> names;
        const auto* import = AtAddress<IMAGE_IMPORT_DESCRIPTOR>(Directory(IMAGE_DIRECTORY_ENTRY_IMPORT));
        for (; import->Name != 0; ++import) {
            std::string name = TextAt(import->Name);
            for (char& letter : name)
                letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
            names.insert(name);
        }
        return names;
    }

    [[nodiscard]] DWORD Directory(std::size_t index) const {
        return headers_.OptionalHeader.DataDirectory[index].VirtualAddress;
    }

  private:
    [[nodiscard]] std::size_t HeadersOffset() const {
        return static_cast<std::size_t>(image_.At<IMAGE_DOS_HEADER>(0)->e_lfanew);
    }

    // Where in the file stands what is loaded at `address`.
    [[nodiscard]] std::size_t OffsetOf(DWORD address) const {
        const std::size_t first = HeadersOffset() + offsetof(IMAGE_NT_HEADERS, OptionalHeader) +
                                  headers_.FileHeader.SizeOfOptionalHeader;
        const WORD count = headers_.FileHeader.NumberOfSections;
        const auto* const sections = image_.At<IMAGE_SECTION_HEADER>(first, count);
        const auto* const section = std::find_if(sections, sections + count, [=](const auto& each) {
            return address >= each.VirtualAddress && address - each.VirtualAddress < each.Misc.VirtualSize;
        });
        if (section == sections + count) throw std::runtime_error("an address outside all sections");
        return address - section->VirtualAddress + section->PointerToRawData;
    }

    template <typename T>
    [[nodiscard]] const T* AtAddress(DWORD address, std::size_t count = 1) const {
        return image_.At<T>(OffsetOf(address), count);
    }
    [[nodiscard]] std::string TextAt(DWORD address) const { return image_.Text(OffsetOf(address)); }

    FileImage image_;
    const IMAGE_NT_HEADERS& headers_;
};

PeFile AddInFile() {
    CStringW folder;
    GetModulePathParts(nullptr, &folder, nullptr, nullptr);
    return PeFile(StdWString(folder.GetString()) + TEXT("kestrolumen.xll"));
}

TEST(Exports, AreTheElevenUndecoratedAndNoOther) {
    const PeFile file = AddInFile();
    EXPECT_TRUE(file.IsForThisWidth());
    EXPECT_EQ(file.Exports(), exportNames);
}

TEST(Exports, NeedWindowsOwnLibrariesAlone) {
    const std::set<std::string> windowsOwn = {"advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll",
                                              "oleaut32.dll", "shell32.dll",  "user32.dll", "version.dll"};
    const PeFile file = AddInFile();
    const std::set<std::string> imports = file.Imports();
    EXPECT_TRUE(imports.contains("kernel32.dll"));
    for (const std::string& library : imports) EXPECT_TRUE(windowsOwn.contains(library)) << library;
    EXPECT_EQ(file.Directory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT), 0u);
}

}  // namespace
