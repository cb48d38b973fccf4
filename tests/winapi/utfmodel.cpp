#include "utfmodel.h"

#include <algorithm>
#include <iterator>

namespace utfmodel {
namespace {

// The Unicode Standard, table 3-7.
struct Row {
    std::uint8_t firstLead, lastLead;
    std::uint8_t firstSecond, lastSecond;
    std::size_t length;
};
constexpr Row wellFormed[] = {
    {0x00, 0x7F, 0, 0, 1},       {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

const Row* RowOf(std::uint8_t lead) {
    const auto* const row = std::find_if(std::begin(wellFormed), std::end(wellFormed), [&](const Row& each) {
        return lead >= each.firstLead && lead <= each.lastLead;
    });
    return row == std::end(wellFormed) ? nullptr : row;
}

// The units of `text` that a sequence of the row has in common with it.
std::size_t InCommon(const Row& row, std::string_view text) {
    std::size_t count = 1;
    for (; count < row.length && count < text.size(); ++count) {
        const auto byte = static_cast<std::uint8_t>(text[count]);
        const std::uint8_t first = count == 1 ? row.firstSecond : 0x80;
        const std::uint8_t last = count == 1 ? row.lastSecond : 0xBF;
        if (byte < first || byte > last) break;
    }
    return count;
}

void AppendWide(Wide& wide, std::uint32_t character) {
    if (character > 0xFFFF) {
        wide += static_cast<WCHAR>(0xD800 + ((character - 0x10000) >> 10));
        character = 0xDC00 + ((character - 0x10000) & 0x3FF);
    }
    wide += static_cast<WCHAR>(character);
}

void AppendUtf8(std::string& utf8, std::uint32_t character) {
    if (character < 0x80) {
        utf8 += static_cast<char>(character);
        return;
    }
    const int trails = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    const std::uint32_t mark = trails == 1 ? 0xC0 : trails == 2 ? 0xE0 : 0xF0;
    utf8 += static_cast<char>(mark | character >> (6 * trails));
    for (int i = trails - 1; i >= 0; --i) utf8 += static_cast<char>(0x80 | (character >> (6 * i) & 0x3F));
}

bool IsHigh(WCHAR unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLow(WCHAR unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

std::uint32_t Between(std::mt19937& random, std::uint32_t first, std::uint32_t last) {
    return std::uniform_int_distribution<std::uint32_t>(first, last)(random);
}

std::uint32_t RandomCharacter(std::mt19937& random, std::uint32_t kind) {
    switch (kind) {
        case 0:
            return Between(random, 1, 0x7F);
        case 1:
            return Between(random, 0x80, 0x7FF);
        case 2:
            return Between(random, 0x800, 0xFFF);  // E0 as the lead byte
        case 3:
            return Between(random, 0x1000, 0xCFFF);
        case 4:
            return Between(random, 0xD000, 0xD7FF);  // ED
        case 5:
            return Between(random, 0xE000, 0xFFFF);
        case 6:
            return Between(random, 0x10000, 0x3FFFF);  // F0
        default:
            return Between(random, 0x40000, 0x10FFFF);
    }
}

// Appends characters until there are `length` units; `append` takes a character, `appendIllFormed` nothing.
template <class Text, class Append, class AppendIllFormed>
void Fill(std::mt19937& random, Text& text, std::size_t length, bool illFormed, Append append,
          AppendIllFormed appendIllFormed) {
    while (text.size() < length) {
        const std::uint32_t kind = Between(random, 0, 2) == 0 ? Between(random, 0, 7) : 0;
        for (std::uint32_t run = Between(random, 1, 40); run != 0; --run) {
            const bool isMixed = Between(random, 0, 5) == 0;
            append(RandomCharacter(random, isMixed ? Between(random, 0, 3) : kind));
        }
        if (illFormed && Between(random, 0, 3) == 0) appendIllFormed();
    }
    text.resize(length);
}

}  // namespace

Wide WideFromUtf8(std::string_view text) {
    Wide wide;
    while (!text.empty()) {
        const Row* const row = RowOf(static_cast<std::uint8_t>(text[0]));
        const std::size_t count = row == nullptr ? 1 : InCommon(*row, text);
        std::uint32_t character = 0xFFFD;
        if (row != nullptr && count == row->length) {
            character = static_cast<std::uint8_t>(text[0]) & (count == 1 ? 0x7Fu : 0x7Fu >> count);
            for (std::size_t i = 1; i < count; ++i)
                character = character << 6 | (static_cast<std::uint8_t>(text[i]) & 0x3Fu);
        }
        AppendWide(wide, character);
        text.remove_prefix(count);
    }
    return wide;
}

std::string Utf8FromWide(WideView text) {
    std::string utf8;
    while (!text.empty()) {
        const bool isPair = IsHigh(text[0]) && text.size() > 1 && IsLow(text[1]);
        if (isPair) {
            AppendUtf8(utf8, 0x10000u + ((text[0] - 0xD800u) << 10) + (text[1] - 0xDC00u));
        } else {
            AppendUtf8(utf8, IsHigh(text[0]) || IsLow(text[0]) ? 0xFFFDu : text[0]);
        }
        text.remove_prefix(isPair ? 2 : 1);
    }
    return utf8;
}

std::string RandomUtf8(std::mt19937& random, std::size_t length, bool illFormed) {
    std::string text;
    const auto append = [&](std::uint32_t character) {
        std::string bytes;
        AppendUtf8(bytes, character);
        if (text.size() + bytes.size() > length) bytes.assign(1, '.');  // so that the end is well formed
        text += bytes;
    };
    const auto appendIllFormed = [&] {
        static constexpr std::string_view sequences[] = {"\xC3",         "\x80",
                                                         "\xC0\x80",     "\xC1\xBF",
                                                         "\xE0\x80\x80", "\xE0\x9F\xBF",
                                                         "\xE2\x82",     "\xED\xA0\x80",
                                                         "\xED\xBF\xBF", "\xF0\x80\x80\x80",
                                                         "\xF0\x9F\x98", "\xF4\x90\x80\x80",
                                                         "\xF5",         "\xFE",
                                                         "\xFF",         "\xF0\x90",
                                                         "\xEF",         "\xE2\x28\xA1"};
        const auto last = static_cast<std::uint32_t>(std::size(sequences) - 1);
        if (Between(random, 0, 1) == 0) {
            text += sequences[Between(random, 0, last)];
        } else {
            text += static_cast<char>(Between(random, 0x80, 0xFF));
        }
    };
    Fill(random, text, length, illFormed, append, appendIllFormed);
    return text;
}

Wide RandomWide(std::mt19937& random, std::size_t length, bool illFormed) {
    Wide text;
    const auto append = [&](std::uint32_t character) {
        AppendWide(text, character > 0xFFFF && text.size() + 2 > length ? 0x2Eu : character);
    };
    const auto appendIllFormed = [&] { text += static_cast<WCHAR>(Between(random, 0xD800, 0xDFFF)); };
    Fill(random, text, length, illFormed, append, appendIllFormed);
    return text;
}

}  // namespace utfmodel
