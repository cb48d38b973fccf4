#include "registrytext.h"

#include "kernel32/failure.h"
#include "winreg.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace winapi {
namespace {

constexpr std::string_view header = "Kestrolumen registry 1\n";

// ---- Writing -------------------------------------------------------------------------------------------

void AppendHex(std::string& text, std::uint64_t number, int digits) {
    char hex[17];
    const int length =
        std::snprintf(hex, sizeof hex, "%0*llX", digits, static_cast<unsigned long long>(number));
    text.append(hex, static_cast<std::size_t>(length));
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
void AppendData(std::string& text, const RegistryValue& value) {
    std::u16string units(value.data.size() / sizeof(char16_t), u'\0');
    if (!units.empty()) std::memcpy(units.data(), value.data.data(), units.size() * sizeof(char16_t));
    const bool isText = value.kind == REG_SZ || value.kind == REG_EXPAND_SZ;
    if (isText && value.data.size() % sizeof(char16_t) == 0 && units.ends_with(u'\0')) {
        units.pop_back();
        return AppendQuoted(text, units);
    }
    for (const BYTE octet : value.data) AppendHex(text, octet, 2);
}

// ---- Reading -------------------------------------------------------------------------------------------

class Reader {
  public:
    explicit Reader(std::string_view text) noexcept : rest_(text) {}

    [[nodiscard]] bool IsAtEnd() const noexcept { return rest_.empty(); }

    bool Skip(std::string_view text) noexcept {
        const bool isThere = rest_.starts_with(text);
        if (isThere) rest_.remove_prefix(text.size());
        return isThere;
    }
    void Expect(std::string_view text) {
        if (!Skip(text)) throw Failure{ERROR_BADDB};
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
        std::u16string units;
        Expect("\"");
        while (!Skip("\"")) {
            if (Skip("\\u")) {
                units += static_cast<char16_t>(TakeNumber<std::uint16_t>(16, 4));
                continue;
            }
            Skip("\\");
            if (IsAtEnd() || rest_.front() < ' ' || rest_.front() > '~') throw Failure{ERROR_BADDB};
            units += static_cast<char16_t>(rest_.front());
            rest_.remove_prefix(1);
        }
        return units;
    }

    std::vector<BYTE> TakeData() {
        if (rest_.starts_with('"')) {
            const std::u16string text = TakeQuoted();
            const auto* const bytes = reinterpret_cast<const BYTE*>(text.c_str());
            return {bytes, bytes + (text.size() + 1) * sizeof(char16_t)};
        }
        std::vector<BYTE> bytes(std::min(rest_.find('\n'), rest_.size()) / 2);
        for (BYTE& octet : bytes) octet = TakeNumber<BYTE>(16, 2);
        return bytes;
    }

  private:
    std::string_view rest_;
};

}  // namespace

std::string TextFromRegistry(const Registry& registry) {
    std::string text(header);
    for (const auto& [folded, node] : registry.nodes) {
        text += '[';
        AppendQuoted(text, node.path);
        text += "] ";
        AppendHex(text, node.lastWrite, 16);
        text += '\n';
        for (const RegistryValue& value : node.values) {
            AppendQuoted(text, value.name);
            text += '=' + std::to_string(value.kind) + ':';
            AppendData(text, value);
            text += '\n';
        }
    }
    return text;
}

Registry RegistryFromText(std::string_view text) {
    Reader reader(text);
    reader.Expect(header);
    Registry registry;
    RegistryNode* key = nullptr;  // whose values the next lines are
    while (!reader.IsAtEnd()) {
        const bool isKey = reader.Skip("[");
        std::u16string name = reader.TakeQuoted();
        if (isKey) key = registry.Make(JoinedPath({}, name), 0);
        if (key == nullptr) throw Failure{ERROR_BADDB};
        if (isKey) {
            reader.Expect("] ");
            key->lastWrite = reader.TakeNumber<std::uint64_t>(16, 16);
        } else {
            reader.Expect("=");
            const auto kind = reader.TakeNumber<DWORD>(10, 10);
            reader.Expect(":");
            key->SetValue({std::move(name), kind, reader.TakeData()});
        }
        reader.Expect("\n");
    }
    return registry;
}

}  // namespace winapi
