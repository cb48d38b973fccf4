#include "registrytext.h"

#include "kernel32/failure.h"
#include "winreg.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <system_error>
#include <utility>

namespace winapi {
namespace {

constexpr std::string_view header = "Kestrolumen registry 1\n";
constexpr std::string_view hexDigits = "0123456789ABCDEF";

// ---- Writing -------------------------------------------------------------------------------------------

void AppendHex(std::string& text, std::uint64_t number, unsigned digits) {
    for (unsigned shift = 4 * digits; shift != 0; shift -= 4) text += hexDigits[number >> (shift - 4) & 0xF];
}

void AppendQuoted(std::string& text, std::u16string_view units) {
    text += '"';
    for (const char16_t unit : units) {
        if (unit == u'"' || unit == u'\\') text += '\\';
        if (unit >= u' ' && unit <= u'~') {
            text += static_cast<char>(unit);
        } else {
            text += "\\u";
            AppendHex(text, unit, 4);
        }
    }
    text += '"';
}

// Text with its terminator, if that is what the data is.
bool AppendAsText(std::string& text, const RegistryValue& value) {
    const std::size_t size = value.data.size();
    if ((value.kind != REG_SZ && value.kind != REG_EXPAND_SZ) || size == 0 || size % sizeof(char16_t) != 0) {
        return false;
    }
    std::u16string units(size / sizeof(char16_t), u'\0');
    std::memcpy(units.data(), value.data.data(), size);
    if (units.back() != u'\0') return false;
    units.pop_back();
    AppendQuoted(text, units);
    return true;
}

void AppendKey(std::string& text, std::u16string& path, const RegistryNode& node) {
    text += '[';
    AppendQuoted(text, path);
    text += "] ";
    AppendHex(text, node.lastWrite, 16);
    text += '\n';
    for (const RegistryValue& value : node.values) {
        AppendQuoted(text, value.name);
        text += '=' + std::to_string(value.kind) + ':';
        if (!AppendAsText(text, value)) {
            for (const BYTE octet : value.data) AppendHex(text, octet, 2);
        }
        text += '\n';
    }
    for (const RegistryNode& subkey : node.subkeys) {
        const std::size_t length = path.size();
        path.append(u"\\").append(subkey.name);
        AppendKey(text, path, subkey);
        path.resize(length);
    }
}

// ---- Reading -------------------------------------------------------------------------------------------

class Reader {
  public:
    explicit Reader(std::string_view text) noexcept : rest_(text) {}

    [[nodiscard]] bool IsAtEnd() const noexcept { return rest_.empty(); }
    [[nodiscard]] bool IsAt(char c) const noexcept { return rest_.starts_with(c); }

    void Expect(std::string_view text) {
        if (!rest_.starts_with(text)) throw Failure{ERROR_BADDB};
        rest_.remove_prefix(text.size());
    }

    template <class Number>
    Number TakeNumber(int base, std::size_t longest) {
        Number number{};
        const char* const end = rest_.data() + std::min(longest, rest_.size());
        const auto [stop, error] = std::from_chars(rest_.data(), end, number, base);
        if (error != std::errc()) throw Failure{ERROR_BADDB};
        rest_.remove_prefix(static_cast<std::size_t>(stop - rest_.data()));
        return number;
    }

    std::u16string TakeQuoted() {
        Expect("\"");
        std::u16string units;
        while (!IsAt('"')) {
            const char16_t unit = TakeUnit();
            units += unit == u'\\' ? TakeEscaped() : unit;
        }
        Expect("\"");
        return units;
    }

    std::vector<BYTE> TakeBytes() {
        std::vector<BYTE> bytes(std::min(rest_.find('\n'), rest_.size()) / 2);
        for (BYTE& octet : bytes) octet = TakeNumber<BYTE>(16, 2);
        return bytes;
    }

  private:
    char16_t TakeUnit() {
        if (IsAtEnd()) throw Failure{ERROR_BADDB};
        const char c = rest_.front();
        if (c < ' ' || c > '~') throw Failure{ERROR_BADDB};
        rest_.remove_prefix(1);
        return static_cast<char16_t>(c);
    }
    char16_t TakeEscaped() {
        const char16_t unit = TakeUnit();
        if (unit == u'u') return TakeNumber<std::uint16_t>(16, 4);
        if (unit != u'"' && unit != u'\\') throw Failure{ERROR_BADDB};
        return unit;
    }

    std::string_view rest_;
};

// Refuses a path of no name and one that is longer or deeper than any key's.
RegistryNode& MadeKey(RegistryNode& root, const std::u16string& path) {
    try {
        RegistryNode& key = root.Make(path, 0);
        if (&key != &root) return key;
    } catch (const Failure&) {
        throw Failure{ERROR_BADDB};
    }
    throw Failure{ERROR_BADDB};
}

std::vector<BYTE> TakeData(Reader& reader) {
    if (!reader.IsAt('"')) return reader.TakeBytes();
    const std::u16string text = reader.TakeQuoted();
    std::vector<BYTE> data((text.size() + 1) * sizeof(char16_t));
    std::memcpy(data.data(), text.c_str(), data.size());
    return data;
}

}  // namespace

std::string TextFromRegistry(const RegistryNode& root) {
    std::string text(header);
    for (const RegistryNode& top : root.subkeys) {
        std::u16string path = top.name;
        AppendKey(text, path, top);
    }
    return text;
}

RegistryNode EmptyRegistry() {
    RegistryNode root;
    for (const std::u16string_view name : registryRoots) root.Make(name, 0);
    return root;
}

RegistryNode RegistryFromText(std::string_view text) {
    Reader reader(text);
    reader.Expect(header);
    RegistryNode root = EmptyRegistry();
    RegistryNode* key = nullptr;  // whose values the next lines are
    while (!reader.IsAtEnd()) {
        if (reader.IsAt('[')) {
            reader.Expect("[");
            key = &MadeKey(root, reader.TakeQuoted());
            reader.Expect("] ");
            key->lastWrite = reader.TakeNumber<std::uint64_t>(16, 16);
        } else if (key == nullptr) {
            throw Failure{ERROR_BADDB};
        } else {
            RegistryValue value{reader.TakeQuoted(), 0, {}};
            reader.Expect("=");
            value.kind = reader.TakeNumber<DWORD>(10, 10);
            reader.Expect(":");
            value.data = TakeData(reader);
            key->SetValue(std::move(value));
        }
        reader.Expect("\n");
    }
    return root;
}

}  // namespace winapi
