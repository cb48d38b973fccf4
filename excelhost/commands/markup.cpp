#include "excelhost/commands/markup.h"

#include "excelhost/characters.h"

#include <array>
#include <cstdio>

namespace excelhost {
namespace {

std::string Escaped(unsigned unit) {
    std::array<char, 8> text{};
    (void)std::snprintf(text.data(), text.size(), "\\u%04X", unit);
    return text.data();
}

}  // namespace

void JsonWriter::Open(char bracket) {
    Item({&bracket, 1});
    open_ += bracket == '{' ? '}' : ']';
    isFirst_ = true;
}

void JsonWriter::Close() {
    const char bracket = open_.back();
    open_.pop_back();
    if (!isFirst_) NewLine();
    text_ += bracket;
    isFirst_ = false;
}

JsonWriter& JsonWriter::Name(std::string_view name) {
    String(name);
    text_ += ": ";
    isNamed_ = true;
    return *this;
}

void JsonWriter::String(std::string_view text) {
    std::string quoted;
    AppendJson(quoted, text);
    Item(quoted);
}

void JsonWriter::Item(std::string_view text) {
    if (!isNamed_ && !open_.empty()) {
        if (!isFirst_) text_ += ',';
        NewLine();
    }
    isNamed_ = false;
    isFirst_ = false;
    text_ += text;
}

void JsonWriter::NewLine() {
    text_ += '\n' + std::string(2 * open_.size(), ' ');
}

std::string XmlText(std::string_view utf8) {
    std::string text;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto c = static_cast<unsigned char>(utf8[i]);
        // U+FFFE and U+FFFF are no characters.
        const bool isNone =
            utf8.substr(i).starts_with("\xEF\xBF\xBE") || utf8.substr(i).starts_with("\xEF\xBF\xBF");
        if (isNone) {
            text += Escaped(0xFF00U | (static_cast<unsigned char>(utf8[i + 2]) + 0x40U));
            i += 2;
        } else if (c == '<' || c == '&' || c == '>' || c == '"' || c == '\n' || c == '\r' || c == '\t') {
            text += "&#" + std::to_string(c) + ";";
        } else if (c < 0x20) {
            text += Escaped(c);
        } else {
            text += utf8[i];
        }
    }
    return text;
}

}  // namespace excelhost
