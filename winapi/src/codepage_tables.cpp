#include "codepage_tables.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <iconv.h>
#include <iterator>
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

std::unique_ptr<CodePage> BuildByIconv(const CodePageFacts& facts) {
    const std::string name = "CP" + std::to_string(facts.number);
    Iconv decoder("UTF-16LE", name);
    Iconv encoder(name, "UTF-16LE");
    if (!decoder.IsOpen() || !encoder.IsOpen()) return nullptr;

    CodePage::SingleBytes single;
    for (std::uint16_t byte = 0; byte < 256; ++byte) single[byte] = UnitOf(decoder, byte);
    if (facts.number == 1255) single[0xCA] = u'\u05BA';  // Windows has it, iconv doesn't
    auto page = std::make_unique<CodePage>(facts, single);
    for (unsigned lead = 0; lead < 256; ++lead) {
        if (!page->IsLeadByte(static_cast<std::uint8_t>(lead))) continue;
        for (unsigned trail = 1; trail < 256; ++trail) {
            const char16_t unit = UnitOf(decoder, static_cast<std::uint16_t>(lead << 8 | trail));
            if (unit != 0) {
                page->AddPair(static_cast<std::uint8_t>(lead), static_cast<std::uint8_t>(trail), unit);
            }
        }
    }
    for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
        const auto wide = static_cast<char16_t>(unit);
        const std::uint16_t code = page->CodeOfUnit(wide);
        if (code <= 0xFF) continue;  // lacking, or a single byte, of which no two mean the same
        const auto bytes = encoder.Convert({static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)});
        if (!bytes || bytes->size() != 2) continue;
        const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>((*bytes)[i]); };
        page->PreferCode(wide, static_cast<std::uint16_t>(byte(0) << 8 | byte(1)));
    }
    return page;
}

// The page that nearly every Windows of the West has needs no iconv.
std::unique_ptr<CodePage> BuildLatin1252(const CodePageFacts& facts) {
    constexpr char16_t from0x80[] =
        u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u008D\u017D\u008F"
        u"\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u009D\u017E\u0178";
    CodePage::SingleBytes single;
    for (std::size_t byte = 0; byte < 256; ++byte) single[byte] = static_cast<char16_t>(byte);
    std::copy_n(from0x80, 32, single.begin() + 0x80);
    return std::make_unique<CodePage>(facts, single);
}

}  // namespace

const CodePageFacts* FindFacts(UINT codePage) noexcept {
    const auto* const found =
        std::find_if(std::begin(knownPages), std::end(knownPages),
                     [&](const CodePageFacts& facts) { return facts.number == codePage; });
    return found == std::end(knownPages) ? nullptr : found;
}

CodePage::CodePage(const CodePageFacts& pageFacts, const SingleBytes& single)
    : facts_(pageFacts), singleBytes_(single), codes_(256) {
    std::uint8_t rows = 0;
    for (std::size_t range = 0; range < facts_.leadBytes.size(); range += 2) {
        if (facts_.leadBytes[range] == 0) break;
        for (unsigned byte = facts_.leadBytes[range]; byte <= facts_.leadBytes[range + 1]; ++byte) {
            leadRows_[byte] = ++rows;
            singleBytes_[byte] = 0;
        }
    }
    unsigned byte = 0xA0;
    while (byte < 256 && singleBytes_[byte] == byte) ++byte;
    hasLatin1_ = byte == 256;
    pairs_.resize(rows * std::size_t{256});
    SetSingleBytes();
}

void CodePage::SetSingleBytes() {
    char16_t nextUndefined = facts_.undefinedFrom;
    for (std::uint16_t byte = 0; byte < 256; ++byte) {
        if (leadRows_[byte] != 0) continue;
        char16_t& unit = singleBytes_[byte];
        if (unit == 0 && byte != 0) {
            const bool isControl = (byte >= 0x80 && byte < 0xA0) || nextUndefined == 0;
            undefined_[byte] = !isControl;
            unit = isControl ? byte : nextUndefined++;
        }
        SetCode(unit, byte);
    }
}

void CodePage::SetCode(char16_t unit, std::uint16_t code) {
    std::uint16_t& row = codeRows_[unit >> 8];
    if (row == 0) {
        row = static_cast<std::uint16_t>(codes_.size() / 256);
        codes_.resize(codes_.size() + 256);
    }
    codes_[row * std::size_t{256} + (unit & 0xFFu)] = code;
}

void CodePage::AddPair(std::uint8_t lead, std::uint8_t trail, char16_t unit) {
    pairs_[(leadRows_[lead] - 1u) * std::size_t{256} + trail] = unit;
    if (CodeOfUnit(unit) == 0) SetCode(unit, static_cast<std::uint16_t>(lead << 8 | trail));
}

void CodePage::PreferCode(char16_t unit, std::uint16_t code) {
    const auto lead = static_cast<std::uint8_t>(code >> 8);
    if (IsLeadByte(lead) && UnitOfPair(lead, static_cast<std::uint8_t>(code & 0xFF)) == unit) {
        SetCode(unit, code);
    }
}

const CodePage* FindCodePage(UINT codePage) {
    const CodePageFacts* const facts = FindFacts(codePage);
    if (facts == nullptr || facts->number == utf8CodePage) return nullptr;

    static std::array<std::atomic<const CodePage*>, std::size(knownPages)> built;
    auto& slot = built[static_cast<std::size_t>(facts - std::begin(knownPages))];
    if (const CodePage* const page = slot.load(std::memory_order_acquire)) return page;

    static std::mutex building;
    const std::lock_guard lock(building);
    if (const CodePage* const page = slot.load(std::memory_order_relaxed)) return page;
    auto page = facts->number == 1252 ? BuildLatin1252(*facts) : BuildByIconv(*facts);
    slot.store(page.get(), std::memory_order_release);
    return page.release();  // kept to the end, when static objects may still convert text
}

}  // namespace winapi
