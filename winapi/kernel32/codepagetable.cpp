#include "codepagetable.h"

#include <algorithm>
#include <cerrno>
#include <iconv.h>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace winapi {
namespace {

constexpr std::array<std::uint8_t, 4> shiftJisLeads = {0x81, 0x9F, 0xE0, 0xFC};
constexpr std::array<std::uint8_t, 4> wideLeads = {0x81, 0xFE};

constexpr CodePageFacts knownPages[] = {
    {437, u"437   (OEM - United States)"},
    {850, u"850   (OEM - Multilingual Latin I)"},
    {852, u"852   (OEM - Latin II)"},
    {855, u"855   (OEM - Cyrillic)"},
    {857, u"857   (OEM - Turkish)", {}, u'?', 0xF8BB},
    {858, u"858   (OEM - Multilingual Latin I + Euro)"},
    {860, u"860   (OEM - Portuguese)"},
    {861, u"861   (OEM - Icelandic)"},
    {862, u"862   (OEM - Hebrew)"},
    {863, u"863   (OEM - Canadian French)"},
    {865, u"865   (OEM - Nordic)"},
    {866, u"866   (OEM - Russian)"},
    {874, u"874   (ANSI/OEM - Thai)", {}, u'?', 0xF8C1},
    {932, u"932   (ANSI/OEM - Japanese Shift-JIS)", shiftJisLeads, u'\u30FB', 0xF8F0},
    {936, u"936   (ANSI/OEM - Simplified Chinese GBK)", wideLeads, u'?', 0xF8F5},
    {949, u"949   (ANSI/OEM - Korean)", wideLeads, u'?', 0xF8F7},
    {950, u"950   (ANSI/OEM - Traditional Chinese Big5)", wideLeads, u'?', 0xF8F8},
    {1250, u"1250  (ANSI - Central Europe)"},
    {1251, u"1251  (ANSI - Cyrillic)"},
    {1252, u"1252  (ANSI - Latin I)"},
    {1253, u"1253  (ANSI - Greek)", {}, u'?', 0xF8F9},
    {1254, u"1254  (ANSI - Turkish)"},
    {1255, u"1255  (ANSI - Hebrew)", {}, u'?', 0xF88D},
    {1256, u"1256  (ANSI - Arabic)"},
    {1257, u"1257  (ANSI - Baltic)", {}, u'?', 0xF8FC},
    {1258, u"1258  (ANSI/OEM - Viet Nam)"},
    {utf8CodePage, u"65001 (UTF-8)", {}, u'\uFFFD'},
};

// One conversion of iconv's, open as long as the object lives.
class Iconv {
  public:
    Iconv(const std::string& to, const std::string& from) : handle_(iconv_open(to.c_str(), from.c_str())) {}
    ~Iconv() {
        if (IsOpen()) iconv_close(handle_);
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    [[nodiscard]] bool IsOpen() const noexcept { return reinterpret_cast<std::intptr_t>(handle_) != -1; }

    // The result in bytes, or nothing if iconv refuses the source or has to substitute.
    std::optional<std::string> Convert(std::string source) {
        std::string result(16, '\0');
        char* in = source.data();
        std::size_t inLeft = source.size();
        char* out = result.data();
        std::size_t outLeft = result.size();
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        const bool exact = iconv(handle_, &in, &inLeft, &out, &outLeft) == 0 &&
                           iconv(handle_, nullptr, nullptr, &out, &outLeft) == 0;
        if (!exact) return std::nullopt;
        result.resize(result.size() - outLeft);
        return result;
    }

  private:
    iconv_t handle_;
};

std::string Bytes(std::uint16_t code) {
    std::string bytes;
    if (code > 0xFF) bytes += static_cast<char>(code >> 8);
    bytes += static_cast<char>(code & 0xFF);
    return bytes;
}

// The unit that `code` means to iconv, or 0.
char16_t UnitOf(Iconv& decoder, std::uint16_t code) {
    const auto result = decoder.Convert(Bytes(code));
    if (!result || result->size() != 2) return 0;
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>((*result)[i]); };
    return static_cast<char16_t>(byte(0) | byte(1) << 8);
}

// The code of `unit` to iconv, or 0.
std::uint16_t CodeOf(Iconv& encoder, char16_t unit) {
    const auto result = encoder.Convert({static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)});
    if (!result || result->size() > 2) return 0;
    std::uint16_t code = 0;
    for (const char byte : *result)
        code = static_cast<std::uint16_t>(code << 8 | static_cast<std::uint8_t>(byte));
    return code;
}

void SetSingleBytes(CodePage& page, Iconv& decoder) {
    char16_t nextUndefined = page.facts.undefinedFrom;
    for (std::uint16_t byte = 0; byte < 256; ++byte) {
        if (page.facts.IsLeadByte(static_cast<std::uint8_t>(byte))) continue;
        char16_t unit = UnitOf(decoder, byte);
        if (page.facts.number == 1255 && byte == 0xCA) unit = u'\u05BA';  // Windows has it, iconv doesn't
        if (unit == 0) {
            const bool isControl = byte < 0xA0 || nextUndefined == 0;
            page.undefined[byte] = !isControl;
            unit = isControl ? byte : nextUndefined++;
        }
        page.unitOfCode[byte] = unit;
        page.codeOfUnit[unit] = byte;
    }
}

void SetPairs(CodePage& page, Iconv& decoder, Iconv& encoder) {
    for (std::size_t code = 0x8000; code < page.unitOfCode.size(); ++code) {
        if (!page.facts.IsLeadByte(static_cast<std::uint8_t>(code >> 8)) || code % 256 == 0) continue;
        const char16_t unit = UnitOf(decoder, static_cast<std::uint16_t>(code));
        page.unitOfCode[code] = unit;
        if (page.codeOfUnit[unit] == 0) page.codeOfUnit[unit] = static_cast<std::uint16_t>(code);
    }
    page.codeOfUnit[0] = 0;
    // Several pairs may mean one unit: iconv knows the one that stands for it.
    for (std::size_t unit = 0; unit < page.codeOfUnit.size(); ++unit) {
        if (page.codeOfUnit[unit] <= 0xFF) continue;
        const std::uint16_t code = CodeOf(encoder, static_cast<char16_t>(unit));
        if (code > 0xFF && page.unitOfCode[code] == unit) page.codeOfUnit[unit] = code;
    }
}

std::unique_ptr<CodePage> Build(const CodePageFacts& facts) {
    const std::string name = "CP" + std::to_string(facts.number);
    Iconv decoder("UTF-16LE", name);
    Iconv encoder(name, "UTF-16LE");
    if (!decoder.IsOpen() || !encoder.IsOpen()) return nullptr;
    const std::size_t codes = facts.MaxCharSize() == 2 ? 0x10000 : 0x100;
    auto page = std::make_unique<CodePage>(
        CodePage{facts, std::vector<char16_t>(codes), std::vector<std::uint16_t>(0x10000), {}});
    SetSingleBytes(*page, decoder);
    SetPairs(*page, decoder, encoder);
    return page;
}

}  // namespace

const CodePageFacts* FindFacts(UINT codePage) noexcept {
    const auto* const found =
        std::find_if(std::begin(knownPages), std::end(knownPages),
                     [&](const CodePageFacts& facts) { return facts.number == codePage; });
    return found == std::end(knownPages) ? nullptr : found;
}

const CodePage* FindCodePage(UINT codePage) {
    const CodePageFacts* const facts = FindFacts(codePage);
    if (facts == nullptr || facts->number == utf8CodePage) return nullptr;

    static std::mutex mutex;
    static auto& pages =
        *new std::map<UINT, std::unique_ptr<CodePage>>;  // static objects may still convert text
    const std::lock_guard lock(mutex);
    auto& page = pages[codePage];
    if (page == nullptr) page = Build(*facts);
    return page.get();
}

}  // namespace winapi
