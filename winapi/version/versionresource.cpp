#include "versionresource.h"

#include "kernel32/descriptor.h"
#include "kernel32/failure.h"
#include "kernel32/paths.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include <elf.h>
#include <fcntl.h>

namespace winapi {
namespace {

constexpr auto noResource = [] { return Failure{ERROR_RESOURCE_DATA_NOT_FOUND}; };

bool TryRead(const Descriptor& file, std::uint64_t offset, void* target, std::size_t size) noexcept {
    return pread(file.Get(), target, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

// An offset that leads out of the file means one without resource.
template <class Value>
Value Read(const Descriptor& file, std::uint64_t offset) {
    Value value;
    if (!TryRead(file, offset, &value, sizeof value)) throw noResource();
    return value;
}

std::vector<BYTE> ReadBlock(const Descriptor& file, std::uint64_t offset, std::uint64_t size) {
    constexpr std::uint64_t longest = 0xFFFF;
    std::vector<BYTE> block(static_cast<std::size_t>(std::min(size, longest)));
    if (!TryRead(file, offset, block.data(), block.size())) throw noResource();
    return block;
}

template <class Header, class Section>
std::vector<BYTE> FromElf(const Descriptor& file) {
    constexpr std::string_view wanted(".version_resource", sizeof ".version_resource");  // with its end
    const auto header = Read<Header>(file, 0);
    const auto section = [&](std::uint64_t i) {
        return Read<Section>(file, header.e_shoff + i * sizeof(Section));
    };
    const std::uint64_t names = section(header.e_shstrndx).sh_offset;
    for (std::uint64_t i = 0; i < header.e_shnum; ++i) {
        const Section each = section(i);
        std::array<char, wanted.size()> name;
        if (each.sh_type == SHT_PROGBITS && TryRead(file, names + each.sh_name, name.data(), name.size()) &&
            std::string_view(name.data(), name.size()) == wanted) {
            return ReadBlock(file, each.sh_offset, each.sh_size);
        }
    }
    throw noResource();
}

// Microsoft's "PE Format". Resources have three levels: type, name and language, of which the first ones are taken.
std::vector<BYTE> FromPe(const Descriptor& file) {
    const auto dword = [&](std::uint64_t offset) { return std::uint64_t{Read<DWORD>(file, offset)}; };
    const auto word = [&](std::uint64_t offset) { return std::uint64_t{Read<WORD>(file, offset)}; };
    constexpr std::uint64_t pe32 = 0x10B, versionType = 16, subdirectory = 0x80000000;
    const std::uint64_t header = dword(0x3C), optional = header + 24, sections = optional + word(header + 20);
    const std::uint64_t directories = optional + (word(optional) == pe32 ? 96 : 112);
    const bool hasResources = dword(header) == 0x4550 && dword(directories - 4) > 2;
    const std::uint64_t root = hasResources ? dword(directories + 16) : 0;
    // Where an address relative to the image's base stands in the file.
    const auto place = [&](std::uint64_t address) {
        for (std::uint64_t i = 0; i < word(header + 6); ++i) {
            const std::uint64_t section = sections + i * 40, into = address - dword(section + 12);
            if (into < dword(section + 16)) return dword(section + 20) + into;
        }
        throw noResource();
    };
    // What the first entry, or that of a type, leads to.
    const auto entry = [&](std::uint64_t directory, std::uint64_t type) {
        const std::uint64_t table = place(root + directory % subdirectory);
        for (std::uint64_t i = 0; i < word(table + 12) + word(table + 14); ++i) {
            if (type == 0 || dword(table + 16 + i * 8) == type) return dword(table + 20 + i * 8);
        }
        throw noResource();
    };
    if (root == 0) throw noResource();
    const std::uint64_t data = place(root + entry(entry(entry(subdirectory, versionType), 0), 0));
    return ReadBlock(file, place(dword(data)), dword(data + 4));
}

}  // namespace

std::vector<BYTE> ReadVersionResource(const std::string& path) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.IsOpen()) throw Failure{ErrorForFile(errno, path)};
    const auto start = Read<std::array<char, EI_CLASS + 1>>(file, 0);
    if (std::memcmp(start.data(), ELFMAG, SELFMAG) == 0) {
        return start[EI_CLASS] == ELFCLASS64 ? FromElf<Elf64_Ehdr, Elf64_Shdr>(file)
                                             : FromElf<Elf32_Ehdr, Elf32_Shdr>(file);
    }
    if (std::memcmp(start.data(), "MZ", 2) == 0) return FromPe(file);
    throw noResource();
}

}  // namespace winapi
