#include "versionresource.h"

#include "kernel32/failure.h"
#include "kernel32/paths.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <string_view>
#include <type_traits>

#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace winapi {
namespace {

constexpr std::size_t longestBlock = 0xFFFF;

[[noreturn]] void FailNoResource() {
    throw Failure{ERROR_RESOURCE_DATA_NOT_FOUND};
}

// A file of which single pieces are read. An offset that leads out of it means a file without resource.
class ImageFile {
  public:
    explicit ImageFile(const std::string& path)
        : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        if (descriptor_ < 0) throw Failure{ErrorForFile(errno, path)};
        struct stat facts {};
        if (fstat(descriptor_, &facts) != 0 || !S_ISREG(facts.st_mode)) {
            close(descriptor_);
            throw Failure{ERROR_ACCESS_DENIED};
        }
        size_ = static_cast<std::uint64_t>(facts.st_size);
    }
    ~ImageFile() { close(descriptor_); }
    ImageFile(const ImageFile&) = delete;
    ImageFile& operator=(const ImageFile&) = delete;

    [[nodiscard]] bool TryRead(std::uint64_t offset, void* target, std::size_t size) const noexcept {
        return offset <= size_ && size <= size_ - offset &&
               pread(descriptor_, target, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
    }

    template <class Value>
    [[nodiscard]] Value Read(std::uint64_t offset) const {
        static_assert(std::is_trivially_copyable_v<Value>);
        Value value;
        if (!TryRead(offset, &value, sizeof value)) FailNoResource();
        return value;
    }

    [[nodiscard]] std::vector<BYTE> ReadBlock(std::uint64_t offset, std::uint64_t size) const {
        std::vector<BYTE> block(static_cast<std::size_t>(std::min<std::uint64_t>(size, longestBlock)));
        if (!TryRead(offset, block.data(), block.size())) FailNoResource();
        return block;
    }

  private:
    int descriptor_;
    std::uint64_t size_ = 0;
};

// ---- ELF -----------------------------------------------------------------------------------------------

template <class Header, class Section>
std::vector<BYTE> FromElf(const ImageFile& file) {
    constexpr std::string_view wanted(".version_resource", sizeof ".version_resource");  // with its end
    const auto header = file.Read<Header>(0);
    const auto section = [&](std::uint64_t index) {
        return file.Read<Section>(header.e_shoff + index * sizeof(Section));
    };
    const std::uint64_t names = section(header.e_shstrndx).sh_offset;
    for (std::uint64_t index = 0; index < header.e_shnum; ++index) {
        const Section candidate = section(index);
        std::array<char, wanted.size()> name;
        if (candidate.sh_type == SHT_PROGBITS &&
            file.TryRead(names + candidate.sh_name, name.data(), name.size()) &&
            std::string_view(name.data(), name.size()) == wanted) {
            return file.ReadBlock(candidate.sh_offset, candidate.sh_size);
        }
    }
    FailNoResource();
}

// ---- PE (Microsoft's "PE Format") ----------------------------------------------------------------------

constexpr DWORD peSignature = 0x00004550;
constexpr WORD pe32Magic = 0x10B;
constexpr DWORD resourceDirectory = 2;
constexpr DWORD versionType = 16;
constexpr DWORD subdirectoryFlag = 0x80000000;

class PeImage {
  public:
    explicit PeImage(const ImageFile& file) : file_(file) {
        const std::uint64_t coff = std::uint64_t{file.Read<DWORD>(0x3C)} + sizeof peSignature;
        if (file.Read<DWORD>(coff - sizeof peSignature) != peSignature) FailNoResource();
        sectionCount_ = file.Read<WORD>(coff + 2);
        const std::uint64_t optional = coff + 20;
        sections_ = optional + file.Read<WORD>(coff + 16);
        directories_ = optional + (file.Read<WORD>(optional) == pe32Magic ? 96U : 112U);
    }

    [[nodiscard]] std::vector<BYTE> VersionResource() const {
        const std::uint64_t countField = directories_ - sizeof(DWORD);
        if (file_.Read<DWORD>(countField) <= resourceDirectory) FailNoResource();
        const DWORD root = file_.Read<DWORD>(directories_ + std::uint64_t{resourceDirectory} * 8);
        if (root == 0) FailNoResource();
        // Three levels: type, name, language. The first name and language are taken.
        const DWORD names = Subdirectory(Entry(root, 0, versionType));
        const DWORD languages = Subdirectory(Entry(root, names, std::nullopt));
        const DWORD data = Entry(root, languages, std::nullopt);
        const std::uint64_t entry = OffsetOf(std::uint64_t{root} + data);
        return file_.ReadBlock(OffsetOf(file_.Read<DWORD>(entry)), file_.Read<DWORD>(entry + 4));
    }

  private:
    // Where an address relative to the image's base stands in the file.
    [[nodiscard]] std::uint64_t OffsetOf(std::uint64_t address) const {
        for (std::uint64_t i = 0; i < sectionCount_; ++i) {
            const std::uint64_t section = sections_ + i * 40;
            const std::uint64_t start = file_.Read<DWORD>(section + 12);
            const std::uint64_t size = file_.Read<DWORD>(section + 16);
            if (address >= start && address - start < size) {
                return file_.Read<DWORD>(section + 20) + (address - start);
            }
        }
        FailNoResource();
    }

    // What the entry of a resource directory leads to: the one with that number, or the first one. Offsets
    // are relative to the root directory.
    [[nodiscard]] DWORD Entry(DWORD root, DWORD directory, std::optional<DWORD> number) const {
        const std::uint64_t table = OffsetOf(std::uint64_t{root} + directory);
        const DWORD count = DWORD{file_.Read<WORD>(table + 12)} + file_.Read<WORD>(table + 14);
        for (std::uint64_t i = 0; i < count; ++i) {
            const std::uint64_t entry = table + 16 + i * 8;
            if (!number || file_.Read<DWORD>(entry) == *number) return file_.Read<DWORD>(entry + 4);
        }
        FailNoResource();
    }

    [[nodiscard]] static DWORD Subdirectory(DWORD entry) {
        if ((entry & subdirectoryFlag) == 0) FailNoResource();
        return entry & ~subdirectoryFlag;
    }

    const ImageFile& file_;
    std::uint64_t sectionCount_ = 0;
    std::uint64_t sections_ = 0;
    std::uint64_t directories_ = 0;
};

}  // namespace

std::vector<BYTE> ReadVersionResource(const std::string& path) {
    const ImageFile file(path);
    std::array<unsigned char, EI_NIDENT> start{};
    if (!file.TryRead(0, start.data(), start.size())) FailNoResource();
    const std::string_view magic(reinterpret_cast<const char*>(start.data()), start.size());
    if (magic.starts_with(ELFMAG)) {
        if (start[EI_CLASS] == ELFCLASS64) return FromElf<Elf64_Ehdr, Elf64_Shdr>(file);
        return FromElf<Elf32_Ehdr, Elf32_Shdr>(file);
    }
    if (magic.starts_with("MZ")) return PeImage(file).VersionResource();
    FailNoResource();
}

}  // namespace winapi
