// A version resource built by the compiler: the VS_VERSIONINFO block that a resource compiler makes on
// Windows, for the ELF section from which GetFileVersionInfoW reads it here.
#pragma once

#include "winapi/version.h"

#include <array>
#include <span>
#include <string_view>

namespace winapi {

struct VersionFacts {
    struct Text {
        std::u16string_view name;
        std::u16string_view value;
    };

    std::array<WORD, 4> number;  // of the file and of the product
    DWORD fileType;              // VFT_APP or VFT_DLL
    WORD language;
    WORD codePage;
    std::u16string_view languageAndCodePage;  // the same as eight hexadecimal digits
    std::span<const Text> texts;
};

// The bytes of a block; those behind `size` are not part of it.
struct VersionBlock {
    std::array<BYTE, 4096> bytes{};
    std::size_t size = 0;
};

namespace detail {

class VersionBlockWriter {
  public:
    // A node up to its value, which may be followed by children. Gives what EndNode wants.
    constexpr std::size_t BeginNode(std::u16string_view key, std::size_t valueLength, bool isText) {
        Align();
        const std::size_t start = block_.size;
        Word(0);
        Word(valueLength);
        Word(isText ? 1 : 0);
        Text(key);
        Align();
        return start;
    }
    constexpr void EndNode(std::size_t start) { PutWord(start, block_.size - start); }

    constexpr void Word(std::size_t value) {
        PutWord(block_.size, value);
        block_.size += sizeof(WORD);
    }
    constexpr void Dword(DWORD value) {
        Word(value & 0xFFFF);
        Word(value >> 16);
    }
    constexpr void Text(std::u16string_view text) {
        for (const char16_t unit : text) Word(unit);
        Word(0);
    }
    constexpr void TextNode(const VersionFacts::Text& text) {
        const std::size_t start = BeginNode(text.name, text.value.size() + 1, true);
        Text(text.value);
        EndNode(start);
    }

    [[nodiscard]] constexpr const VersionBlock& Block() const noexcept { return block_; }

  private:
    constexpr void Align() { block_.size = (block_.size + 3) / 4 * 4; }
    constexpr void PutWord(std::size_t at, std::size_t value) {
        block_.bytes[at] = static_cast<BYTE>(value & 0xFF);
        block_.bytes[at + 1] = static_cast<BYTE>(value >> 8);
    }

    VersionBlock block_;
};

}  // namespace detail

constexpr VersionBlock MakeVersionBlock(const VersionFacts& facts) {
    constexpr DWORD windows32OnNt = 0x40004;
    detail::VersionBlockWriter writer;
    const std::size_t root = writer.BeginNode(u"VS_VERSION_INFO", sizeof(VS_FIXEDFILEINFO), false);
    const auto number = [&](std::size_t high) {
        return DWORD{facts.number[high]} << 16 | facts.number[high + 1];
    };
    for (const DWORD value :
         {DWORD{VS_FFI_SIGNATURE}, DWORD{VS_FFI_STRUCVERSION}, number(0), number(2), number(0), number(2),
          DWORD{0x3F}, DWORD{0}, windows32OnNt, facts.fileType, DWORD{0}, DWORD{0}, DWORD{0}}) {
        writer.Dword(value);
    }

    const std::size_t strings = writer.BeginNode(u"StringFileInfo", 0, true);
    const std::size_t table = writer.BeginNode(facts.languageAndCodePage, 0, true);
    for (const VersionFacts::Text& text : facts.texts) writer.TextNode(text);
    writer.EndNode(table);
    writer.EndNode(strings);

    const std::size_t variables = writer.BeginNode(u"VarFileInfo", 0, true);
    const std::size_t translation = writer.BeginNode(u"Translation", 2 * sizeof(WORD), false);
    writer.Word(facts.language);
    writer.Word(facts.codePage);
    writer.EndNode(translation);
    writer.EndNode(variables);
    writer.EndNode(root);
    return writer.Block();
}

// The block in as many bytes as it has.
template <std::size_t Size>
constexpr std::array<BYTE, Size> Trimmed(const VersionBlock& block) {
    std::array<BYTE, Size> bytes{};
    for (std::size_t i = 0; i < Size; ++i) bytes[i] = block.bytes[i];
    return bytes;
}

}  // namespace winapi
