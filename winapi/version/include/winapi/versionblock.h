// A version resource built by the compiler: the VS_VERSIONINFO block that a resource compiler makes on
// Windows, for the ELF section from which GetFileVersionInfoW reads it here.
#pragma once

#include "winapi/version.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <vector>

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

using VersionWords = std::vector<WORD>;

// One node of the block: its size and its value's (a text's in units, any other's in bytes), whether it is a
// text, its key, its value and other nodes, each of these at an even word.
struct VersionNode {
    VersionWords words;

    constexpr VersionNode(std::u16string_view key, bool isText, const VersionWords& value = {})
        : words{0, static_cast<WORD>(value.size() * (isText ? 1 : sizeof(WORD))), WORD{isText}} {
        words.insert(words.end(), key.begin(), key.end());
        words.push_back(0);
        Append(value);
    }
    constexpr VersionNode& Add(const VersionNode& child) { return Append(child.words); }

  private:
    constexpr VersionNode& Append(const VersionWords& part) {
        if (words.size() % 2 != 0) words.push_back(0);
        words.insert(words.end(), part.begin(), part.end());
        words[0] = static_cast<WORD>(words.size() * sizeof(WORD));
        return *this;
    }
};

constexpr VersionWords MakeVersionBlock(const VersionFacts& facts) {
    constexpr DWORD windows32OnNt = 0x40004;
    const auto number = [&](std::size_t high) {
        return DWORD{facts.number[high]} << 16 | facts.number[high + 1];
    };
    VersionWords fixed;
    for (const DWORD value :
         {DWORD{VS_FFI_SIGNATURE}, DWORD{VS_FFI_STRUCVERSION}, number(0), number(2), number(0), number(2),
          DWORD{0x3F}, DWORD{0}, windows32OnNt, facts.fileType, DWORD{0}, DWORD{0}, DWORD{0}}) {
        fixed.push_back(static_cast<WORD>(value & 0xFFFF));
        fixed.push_back(static_cast<WORD>(value >> 16));
    }
    VersionNode table(facts.languageAndCodePage, true);
    for (const VersionFacts::Text& text : facts.texts) {
        VersionWords value(text.value.begin(), text.value.end());
        value.push_back(0);
        table.Add({text.name, true, value});
    }
    return VersionNode(u"VS_VERSION_INFO", false, fixed)
        .Add(VersionNode(u"StringFileInfo", true).Add(table))
        .Add(VersionNode(u"VarFileInfo", true).Add({u"Translation", false, {facts.language, facts.codePage}}))
        .words;
}

// A block in as many words as it has.
template <std::size_t Size>
constexpr std::array<WORD, Size> Fixed(const VersionWords& block) {
    std::array<WORD, Size> words{};
    std::copy(block.begin(), block.end(), words.begin());
    return words;
}

}  // namespace winapi
