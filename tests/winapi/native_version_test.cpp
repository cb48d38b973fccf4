// Version resources in files that aren't what they should be: nothing beyond a file's or a block's end is
// read, which is for the sanitizers to tell.
#include "winapi/versionblock.h"

#include "src/paths.h"

#include <windows.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <elf.h>

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<BYTE>;

constexpr winapi::VersionFacts::Text texts[] = {
    {u"CompanyName", u"A firm"}, {u"Comments", u""}, {u"ProductName", u"\u00E9\u4E2D"}};

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

void Append(Bytes& image, const Bytes& more) {
    image.insert(image.end(), more.begin(), more.end());
}

template <class Header, class Section>
Bytes ElfImage(unsigned char elfClass, const Bytes& block) {
    const std::string names = std::string("\0.shstrtab\0.version_resource", 28) + '\0';
    Header header{};
    std::memcpy(header.e_ident, ELFMAG, SELFMAG);
    header.e_ident[EI_CLASS] = elfClass;
    header.e_shentsize = sizeof(Section);
    header.e_shnum = 3;
    header.e_shstrndx = 1;
    header.e_shoff = sizeof header;
    const std::size_t namesAt = sizeof header + 3 * sizeof(Section), blockAt = namesAt + names.size();
    Section nameTable{}, resource{};
    nameTable.sh_name = 1;
    nameTable.sh_type = SHT_STRTAB;
    nameTable.sh_offset = static_cast<decltype(nameTable.sh_offset)>(namesAt);
    nameTable.sh_size = static_cast<decltype(nameTable.sh_size)>(names.size());
    resource.sh_name = 11;
    resource.sh_type = SHT_PROGBITS;
    resource.sh_offset = static_cast<decltype(resource.sh_offset)>(blockAt);
    resource.sh_size = static_cast<decltype(resource.sh_size)>(block.size());
    Bytes image;
    Put(image, 0, header);
    Put(image, sizeof header + sizeof(Section), nameTable);
    Put(image, sizeof header + 2 * sizeof(Section), resource);
    Append(image, Bytes(names.begin(), names.end()));
    Append(image, block);
    return image;
}

Bytes PeImage(WORD magic, const Bytes& block) {
    constexpr std::size_t pe = 0x80, coff = pe + 4, optional = coff + 20, optionalSize = 240;
    constexpr std::size_t section = optional + optionalSize, content = 0x200;
    constexpr DWORD address = 0x3000, flag = 0x80000000;
    const std::size_t directories = optional + (magic == 0x10B ? 96 : 112);
    Bytes image = {'M', 'Z'};
    Put(image, 0x3C, DWORD{pe});
    Put(image, pe, DWORD{0x4550});
    Put(image, coff + 2, WORD{1});
    Put(image, coff + 16, WORD{optionalSize});
    Put(image, optional, magic);
    Put(image, directories - 4, DWORD{16});
    Put(image, directories + 16, address);
    Put(image, section + 12, address);
    Put(image, section + 16, static_cast<DWORD>(0x100 + block.size()));
    Put(image, section + 20, DWORD{content});
    // Two types, of which the second is a version; then one name and one language.
    Put(image, content + 14, WORD{2});
    Put(image, content + 16, DWORD{3});
    Put(image, content + 24, DWORD{16});
    Put(image, content + 28, flag | 0x40);
    Put(image, content + 0x40 + 14, WORD{1});
    Put(image, content + 0x40 + 16, DWORD{1});
    Put(image, content + 0x40 + 20, flag | 0x60);
    Put(image, content + 0x60 + 14, WORD{1});
    Put(image, content + 0x60 + 16, DWORD{0x409});
    Put(image, content + 0x60 + 20, DWORD{0x80});
    Put(image, content + 0x80, address + 0x100);
    Put(image, content + 0x84, static_cast<DWORD>(block.size()));
    image.resize(content + 0x100);
    Append(image, block);
    return image;
}

std::vector<Bytes> AllKinds(const Bytes& block) {
    return {ElfImage<Elf32_Ehdr, Elf32_Shdr>(ELFCLASS32, block),
            ElfImage<Elf64_Ehdr, Elf64_Shdr>(ELFCLASS64, block), PeImage(0x10B, block),
            PeImage(0x20B, block)};
}

class VersionFiles : public testing::Test {
  protected:
    ~VersionFiles() override { std::filesystem::remove(file_); }

    // Writes the file and reads its version resource. The copy has its own exact heap block.
    std::unique_ptr<BYTE[]> Load(const Bytes& image, DWORD& size) const {
        std::filesystem::remove(file_);  // a new file is written far faster than an old one anew
        std::ofstream(file_, std::ios::binary)
            .write(reinterpret_cast<const char*>(image.data()), static_cast<std::streamsize>(image.size()));
        size = GetFileVersionInfoSizeW(path_.c_str(), nullptr);
        auto block = std::make_unique<BYTE[]>(size);
        if (size == 0 || GetFileVersionInfoW(path_.c_str(), 0, size, block.get()) == FALSE) return nullptr;
        return block;
    }

    // Asks for all there may be, and reads what is found.
    static unsigned ReadAll(const BYTE* block, DWORD size) {
        unsigned sum = 0;
        for (const WCHAR* path :
             {u"\\", u"\\VarFileInfo\\Translation", u"\\StringFileInfo\\040704E4\\CompanyName",
              u"\\StringFileInfo\\040704E4\\Comments", u"\\StringFileInfo\\040704E4\\ProductName",
              u"\\StringFileInfo\\040704E4\\Missing"}) {
            void* value = nullptr;
            UINT length = 0;
            if (VerQueryValueW(block, path, &value, &length) == FALSE) continue;
            const auto* bytes = static_cast<const BYTE*>(value);
            EXPECT_LE(bytes + length, block + size);
            for (UINT i = 0; i < length; ++i) sum += bytes[i];
        }
        return sum;
    }

    const std::filesystem::path file_ = std::filesystem::temp_directory_path() /
                                        ("kestrolumen-version-" + std::to_string(GetCurrentProcessId()));
    const std::u16string path_ = winapi::WindowsPath(file_.string());
};

TEST_F(VersionFiles, OfEachKindGiveTheSameBlock) {
    const Bytes good = GoodBlock();
    for (const Bytes& image : AllKinds(good)) {
        DWORD size = 0;
        const auto block = Load(image, size);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(Bytes(block.get(), block.get() + size), good);
    }
    void* value = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(good.data(), u"\\StringFileInfo\\040704e4\\productname", &value, &length));
    EXPECT_EQ(std::u16string(static_cast<WCHAR*>(value), length), std::u16string(u"\u00E9\u4E2D\0", 3));
    ASSERT_TRUE(VerQueryValueW(good.data(), u"\\StringFileInfo\\040704E4\\Comments", &value, &length));
    EXPECT_EQ(length, 1U) << "present and empty: its terminator";
}

TEST_F(VersionFiles, MayEndAnywhere) {
    for (const Bytes& image : AllKinds(GoodBlock())) {
        for (std::size_t length = 0; length < image.size(); length += 7) {
            DWORD size = 0;
            const Bytes cut(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(length));
            EXPECT_EQ(Load(cut, size), nullptr) << length << " of " << image.size();
        }
    }
}

TEST_F(VersionFiles, MayHoldAnyBytes) {
    std::mt19937 random(7);  // NOLINT: the same bytes in each run
    unsigned sum = 0, loaded = 0;
    for (const Bytes& image : AllKinds(GoodBlock())) {
        for (int round = 0; round < 1000; ++round) {
            Bytes spoilt = image;
            for (std::size_t count = 1 + random() % 4; count > 0; --count) {
                spoilt[random() % spoilt.size()] = static_cast<BYTE>(random());
            }
            DWORD size = 0;
            if (const auto block = Load(spoilt, size)) {
                sum += ReadAll(block.get(), size);
                ++loaded;
            }
        }
    }
    EXPECT_GT(sum, 0U);
    EXPECT_GT(loaded, 1000U) << "most of a file's bytes don't matter for finding the block";
}

TEST_F(VersionFiles, BlocksMayHoldAnyLengths) {
    const Bytes good = GoodBlock();
    unsigned sum = 0;
    for (std::size_t at = 0; at + 1 < good.size(); at += 2) {
        for (const WORD value : {WORD{0}, WORD{1}, WORD{5}, WORD{6}, WORD{7}, WORD{0x7FFF}, WORD{0xFFFF}}) {
            Bytes spoilt = good;
            Put(spoilt, at, value);
            DWORD size = 0;
            const auto block = Load(ElfImage<Elf64_Ehdr, Elf64_Shdr>(ELFCLASS64, spoilt), size);
            ASSERT_NE(block, nullptr);
            sum += ReadAll(block.get(), size);
        }
    }
    EXPECT_GT(sum, 0U);
}

TEST_F(VersionFiles, APartOfABlockIsReadAsFarAsItGoes) {
    const Bytes good = GoodBlock();
    DWORD size = 0;
    ASSERT_NE(Load(ElfImage<Elf64_Ehdr, Elf64_Shdr>(ELFCLASS64, good), size), nullptr);
    for (DWORD part = 2; part <= good.size(); ++part) {
        const auto block = std::make_unique<BYTE[]>(part);
        ASSERT_TRUE(GetFileVersionInfoW(path_.c_str(), 0, part, block.get()));
        ReadAll(block.get(), part);
        void* value = nullptr;
        UINT length = 0;
        const bool hasFixedInfo =
            VerQueryValueW(block.get(), u"\\", &value, &length) != FALSE && length == 52;
        EXPECT_EQ(hasFixedInfo, part >= 40 + 52);
    }
}

}  // namespace
