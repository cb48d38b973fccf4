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

// Puts a value into an image under construction, which grows as needed.
template <class Value>
void Put(Bytes& image, std::size_t at, const Value& value) {
    if (image.size() < at + sizeof value) image.resize(at + sizeof value);
    std::memcpy(image.data() + at, &value, sizeof value);
}

// A library of this width, with the block in the section that the stand-in looks for.
Bytes ElfImage(const Bytes& block) {
    const std::string names = std::string("\0.shstrtab\0.version_resource", 28) + '\0';
    ElfW(Ehdr) header{};
    std::memcpy(header.e_ident, ELFMAG, SELFMAG);
    header.e_ident[EI_CLASS] = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    header.e_shentsize = sizeof(ElfW(Shdr));
    header.e_shnum = 3;
    header.e_shstrndx = 1;
    header.e_shoff = sizeof header;
    ElfW(Shdr) sections[3]{};
    sections[1].sh_name = 1;
    sections[1].sh_type = SHT_STRTAB;
    sections[1].sh_offset = sizeof header + sizeof sections;
    sections[1].sh_size = static_cast<ElfW(Word)>(names.size());
    sections[2].sh_name = 11;
    sections[2].sh_type = SHT_PROGBITS;
    sections[2].sh_offset = sections[1].sh_offset + sections[1].sh_size;
    sections[2].sh_size = static_cast<ElfW(Word)>(block.size());
    Bytes image;
    Put(image, 0, header);
    Put(image, sizeof header, sections);
    image.insert(image.end(), names.begin(), names.end());
    image.insert(image.end(), block.begin(), block.end());
    return image;
}

// A DLL of Windows, of either width, with one section that holds the resources.
Bytes PeImage(WORD magic, const Bytes& block) {
    constexpr std::size_t pe = 0x80, coff = pe + 4, optional = coff + 20, optionalSize = 240;
    constexpr std::size_t section = optional + optionalSize, content = 0x200;
    constexpr DWORD address = 0x3000, flag = 0x80000000;
    const std::size_t directories = optional + (magic == 0x10B ? 96 : 112);
    Bytes image = {'M', 'Z'};
    const std::pair<std::size_t, DWORD> values[] = {
        {0x3C, pe},
        {pe, 0x4550},
        {coff + 2, 1},
        {coff + 16, optionalSize},
        {directories - 4, 16},
        {directories + 16, address},
        {section + 12, address},
        {section + 16, 0x100 + block.size()},
        {section + 20, content},
        // Two types, of which the second is a version; then one name and one language.
        {content + 14, 2},
        {content + 16, 3},
        {content + 24, 16},
        {content + 28, flag | 0x40},
        {content + 0x40 + 14, 1},
        {content + 0x40 + 16, 1},
        {content + 0x40 + 20, flag | 0x60},
        {content + 0x60 + 14, 1},
        {content + 0x60 + 16, 0x409},
        {content + 0x60 + 20, 0x80},
        {content + 0x80, address + 0x100},
        {content + 0x84, block.size()},
    };
    for (const auto& [at, value] : values) Put(image, at, value);
    Put(image, optional, magic);
    image.resize(content + 0x100);
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

    // Asks for what there may be and reads what is found. Gives how many bytes.
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
