// Version resources in files that aren't what they should be: nothing beyond a file's or a block's end is
// read, which is for the sanitizers to tell.
#include "winapi/versionblock.h"

#include "src/paths.h"

#include <windows.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <link.h>

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<BYTE>;

constexpr winapi::VersionFacts::Text texts[] = {{u"CompanyName", u"A firm"}, {u"Comments", u""}};

Bytes GoodBlock() {
    const winapi::VersionBlock block = winapi::MakeVersionBlock({.number = {1, 2, 3, 4},
                                                                 .fileType = 2,
                                                                 .language = 0x0407,
                                                                 .codePage = 1252,
                                                                 .languageAndCodePage = u"040704E4",
                                                                 .texts = texts});
    return {block.bytes.begin(), block.bytes.begin() + static_cast<std::ptrdiff_t>(block.size)};
}

// A library of this width, with the block in the section that the stand-in looks for.
Bytes ElfImage(const Bytes& block) {
    struct {
        ElfW(Ehdr) header;
        ElfW(Shdr) sections[3];
        char names[32];
    } image{};
    std::memcpy(image.header.e_ident, ELFMAG, SELFMAG);
    image.header.e_ident[EI_CLASS] = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    image.header.e_shentsize = sizeof(ElfW(Shdr));
    image.header.e_shnum = 3;
    image.header.e_shstrndx = 1;
    image.header.e_shoff = offsetof(decltype(image), sections);
    image.sections[1].sh_offset = offsetof(decltype(image), names);
    image.sections[1].sh_size = sizeof image.names;
    image.sections[2].sh_offset = sizeof image;
    image.sections[2].sh_size = static_cast<ElfW(Word)>(block.size());
    image.sections[2].sh_name = 1;
    image.sections[2].sh_type = SHT_PROGBITS;
    std::strcpy(image.names + 1, ".version_resource");
    Bytes bytes(sizeof image);
    std::memcpy(bytes.data(), &image, sizeof image);
    bytes.insert(bytes.end(), block.begin(), block.end());
    return bytes;
}

// A DLL of Windows, of either width, with one section that holds the resources: two types, of which the
// second is a version; then one name and one language.
Bytes PeImage(WORD magic, const Bytes& block) {
    constexpr std::size_t pe = 0x80, coff = pe + 4, optional = coff + 20, section = optional + 240;
    constexpr DWORD address = 0x3000, content = 0x200, subdirectory = 0x80000000;
    const struct {
        struct {
            DWORD unused[3], counts, entries[4];
        } directories[3];
        DWORD address, size;
    } resources = {{{{}, 2 << 16, {3, 0, 16, subdirectory | 0x20}},
                    {{}, 1 << 16, {1, subdirectory | 0x40}},
                    {{}, 1 << 16, {0x409, 0x60}}},
                   address + sizeof resources,
                   static_cast<DWORD>(block.size())};
    Bytes image(content + sizeof resources);
    const auto put = [&](std::size_t at, DWORD value) { std::memcpy(&image[at], &value, sizeof value); };
    const std::size_t directories = optional + (magic == 0x10B ? 96 : 112);
    put(0, 0x5A4D);
    put(0x3C, pe);
    put(pe, 0x4550);
    put(coff + 2, 1);
    put(coff + 16, section - optional);
    put(optional, magic);
    put(directories - 4, 16);
    put(directories + 16, address);
    put(section + 12, address);
    put(section + 16, sizeof resources + resources.size);
    put(section + 20, content);
    std::memcpy(&image[content], &resources, sizeof resources);
    image.insert(image.end(), block.begin(), block.end());
    return image;
}

class VersionFiles : public testing::Test {
  protected:
    ~VersionFiles() override { std::filesystem::remove(file_); }

    // Writes the file and reads its version resource into a heap block of exactly its size.
    std::unique_ptr<BYTE[]> Load(const Bytes& image, DWORD& size) const {
        std::filesystem::remove(file_);  // a new file is written far faster than an old one anew
        std::ofstream(file_, std::ios::binary)
            .write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
        size = GetFileVersionInfoSizeW(path_.c_str(), nullptr);
        auto block = std::make_unique<BYTE[]>(size);
        if (size == 0 || GetFileVersionInfoW(path_.c_str(), 0, size, block.get()) == FALSE) return nullptr;
        return block;
    }

    // Reads what there may be. Gives how many bytes.
    static std::size_t ReadAll(const BYTE* block, DWORD size) {
        Bytes read;
        for (const WCHAR* path :
             {u"\\", u"\\VarFileInfo\\Translation", u"\\StringFileInfo\\040704E4\\companyname",
              u"\\StringFileInfo\\040704E4\\Comments", u"\\StringFileInfo\\040704E4\\x"}) {
            void* value = nullptr;
            UINT length = 0;
            if (VerQueryValueW(block, path, &value, &length) == FALSE) continue;
            const auto* bytes = static_cast<const BYTE*>(value);
            EXPECT_LE(bytes + length, block + size);
            read.insert(read.end(), bytes, bytes + length);
        }
        return read.size();
    }

    const Bytes good = GoodBlock();
    const std::vector<Bytes> images = {ElfImage(good), PeImage(0x10B, good), PeImage(0x20B, good)};

  private:
    const std::filesystem::path file_ = std::filesystem::temp_directory_path() /
                                        ("kestrolumen-version-" + std::to_string(GetCurrentProcessId()));
    const std::u16string path_ = winapi::WindowsPath(file_.string());
};

TEST_F(VersionFiles, GiveTheSameBlockOrNoneWhereTheyAreCut) {
    DWORD size = 0;
    for (const Bytes& image : images) {
        const auto block = Load(image, size);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(Bytes(block.get(), block.get() + size), good);
        // The numbers, the translation, and texts whose lengths count their terminators.
        EXPECT_EQ(ReadAll(block.get(), size), sizeof(VS_FIXEDFILEINFO) + 4 + 7 + 1);
        for (std::size_t length = 0; length < image.size(); length += 7) {
            const Bytes cut(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(length));
            EXPECT_EQ(Load(cut, size), nullptr) << length << " of " << image.size();
        }
    }
}

TEST_F(VersionFiles, MayHoldAnyBytes) {
    std::mt19937 random(7);  // NOLINT: the same bytes in each run
    std::size_t sum = 0, loaded = 0;
    for (int round = 0; round < 6000; ++round) {
        Bytes spoilt = images[static_cast<std::size_t>(round) % images.size()];
        for (std::size_t count = 1 + random() % 4; count > 0; --count) {
            static constexpr BYTE values[] = {0, 1, 5, 6, 7, 0x7F, 0xFF};
            const std::size_t place = random() % spoilt.size();
            spoilt[place] = values[random() % std::size(values)];
        }
        DWORD size = 0;
        if (const auto block = Load(spoilt, size)) {
            sum += ReadAll(block.get(), size);
            ++loaded;
        }
    }
    EXPECT_GT(sum, 0U);
    EXPECT_GT(loaded, 1000U) << "most of a file's bytes don't matter for finding the block";
}

}  // namespace
