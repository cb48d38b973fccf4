#include "versionresource.h"

#include "kernel32/descriptor.h"
#include "kernel32/failure.h"
#include "kernel32/paths.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <link.h>

std::vector<BYTE> winapi::ReadVersionResource(const std::string& path) {
    constexpr std::string_view wanted(".version_resource", sizeof ".version_resource");  // with its end
    constexpr unsigned char ownClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    constexpr std::size_t longestBlock = 0xFFFF;
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.IsOpen()) throw Failure{ErrorForFile(errno, path)};
    // An offset that leads out of the file means one without resource.
    const auto read = [&](std::uint64_t offset, void* target, std::size_t size) {
        return pread(file.Get(), target, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
    };
    ElfW(Ehdr) header;
    ElfW(Shdr) names, section;
    const auto readSection = [&](std::size_t index, ElfW(Shdr) & target) {
        return read(header.e_shoff + index * sizeof target, &target, sizeof target);
    };
    const bool isImage = read(0, &header, sizeof header) &&
                         std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
                         header.e_ident[EI_CLASS] == ownClass && readSection(header.e_shstrndx, names);
    for (std::size_t i = 0; isImage && i < header.e_shnum && readSection(i, section); ++i) {
        std::array<char, wanted.size()> name;
        if (section.sh_type != SHT_PROGBITS ||
            !read(names.sh_offset + section.sh_name, name.data(), name.size()) ||
            std::string_view(name.data(), name.size()) != wanted) {
            continue;
        }
        std::vector<BYTE> block(std::min<std::size_t>(section.sh_size, longestBlock));
        if (read(section.sh_offset, block.data(), block.size())) return block;
    }
    throw Failure{ERROR_RESOURCE_DATA_NOT_FOUND};
}
