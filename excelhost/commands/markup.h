// JSON and XML, written.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace excelhost {

// A JSON text (RFC 8259), two spaces a level. Names and values are UTF-8.
//
//     JsonWriter json;
//     json.Open('{');
//     json.Name("count").Number(2);
//     json.Close();
class JsonWriter {
  public:
    // '{' or '['.
    void Open(char bracket);
    void Close();
    JsonWriter& Name(std::string_view name);
    void String(std::string_view text);
    void Number(std::size_t number) { Item(std::to_string(number)); }
    void Truth(bool truth) { Item(truth ? "true" : "false"); }

    // The whole, with a line end.
    [[nodiscard]] std::string Text() const { return text_ + "\n"; }

  private:
    void Item(std::string_view text);
    void NewLine();

    std::string text_;
    std::string open_;  // the closing brackets to come
    bool isFirst_ = true;
    bool isNamed_ = false;
};

// Text for an attribute or an element of XML 1.0: what has a meaning there is escaped, and a character that XML can't
// hold is written as \uXXXX.
[[nodiscard]] std::string XmlText(std::string_view utf8);

}  // namespace excelhost
