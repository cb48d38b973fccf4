// The add-in's file as the dynamic linker sees it, read from its ELF sections.
#include "exportnames.h"

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <set>

namespace {

class ElfFile {
  public:
    ElfFile()
        : image_(std::filesystem::read_symlink("/proc/self/exe").parent_path() / "kestrolumen.xll"),
          header_(*image_.At<ElfW(Ehdr)>(0)),
          sections_(image_.At<ElfW(Shdr)>(header_.e_shoff, header_.e_shnum)) {}

    // Symbols that others may link to.
    [[nodiscard]] std::vector<std::string> Exports() const {
        std::vector<std::string> names;
        ForEach<ElfW(Sym)>(SHT_DYNSYM, [&](const ElfW(Sym) & symbol, std::size_t strings) {
            const bool isLocal = ELF32_ST_BIND(symbol.st_info) == STB_LOCAL;
            if (symbol.st_shndx != SHN_UNDEF && !isLocal)
                names.push_back(image_.Text(strings + symbol.st_name));
        });
        std::ranges::sort(names);
        return names;
    }

    [[nodiscard]] std::set<std::string> NeededLibraries() const {
        std::set<std::string> names;
        ForEach<ElfW(Dyn)>(SHT_DYNAMIC, [&](const ElfW(Dyn) & entry, std::size_t strings) {
            if (entry.d_tag == DT_NEEDED) names.insert(image_.Text(strings + entry.d_un.d_val));
        });
        return names;
    }

  private:
    template <typename Entry, typename Function>
    void ForEach(ElfW(Word) sectionType, Function function) const {
        for (std::size_t i = 0; i < header_.e_shnum; ++i) {
            const ElfW(Shdr)& section = sections_[i];
            if (section.sh_type != sectionType) continue;
            const std::size_t count = section.sh_size / sizeof(Entry);
            const auto* const entries = image_.At<Entry>(section.sh_offset, count);
            for (std::size_t k = 0; k < count; ++k)
                function(entries[k], sections_[section.sh_link].sh_offset);
        }
    }

    FileImage image_;
    const ElfW(Ehdr) & header_;
    const ElfW(Shdr) * sections_;
};

TEST(Exports, AreTheElevenAndNoOther) {
    EXPECT_EQ(ElfFile().Exports(), exportNames);
}

TEST(Exports, NeedTheSystemsLibrariesAlone) {
    for (const std::string& library : ElfFile().NeededLibraries()) {
        const bool isSystems =
            std::ranges::any_of(std::initializer_list<std::string>{"libc.so", "libm.so", "libgcc_s.so",
                                                                   "libstdc++.so", "ld-linux"},
                                [&](const std::string& known) { return library.starts_with(known); });
        EXPECT_TRUE(isSystems) << library;
    }
}

}  // namespace
