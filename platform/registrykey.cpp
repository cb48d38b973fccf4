#include "platform/registrykey.h"

#include "errors/vex.h"
#include "platform/securityattributes.h"

#include <windows.h>

#include <processenv.h>

#include <array>
#include <iterator>
#include <limits>

namespace {

constexpr REGSAM viewBits = KEY_WOW64_32KEY | KEY_WOW64_64KEY;

constexpr REGSAM ViewBits(std::uint32_t view) noexcept {
    if (view == 1) return KEY_WOW64_32KEY;
    return view == 2 ? KEY_WOW64_64KEY : 0;
}

// Ahead of anything else that could change the thread's last error.
CStringW ResultText(LSTATUS result) {
    const DWORD error = GetLastError();
    return CStringWFormat(TEXT("(rc=%d, err=%d)"), result, error);
}

constexpr const char* valueRead = "RegistryKey::ValueRead";

void RequireRead(LSTATUS result, const RegistryKey& key, const RegistryValueName& name, const char* raiser) {
    if (result == ERROR_SUCCESS) return;
    const CStringW text = ResultText(result);
    throw VexRegValueReadFailed(raiser, VexCode::RegValueRead, text, CStringW(name.get()), key.KeyName(0));
}

void RequireKind(bool fits, const RegistryKey& key, const RegistryValueName& name, const char* raiser,
                 std::int32_t mismatch) {
    if (!fits) throw VexRegValueReadFailed(raiser, mismatch, CStringW(name.get()), key.KeyName(0));
}

CStringW Expanded(const CStringW& text) {
    constexpr DWORD size = 32768;
    std::vector<WCHAR> buffer(size + 1);
    const DWORD needed = ExpandEnvironmentStringsW(text.GetString(), buffer.data(), size);
    return needed == 0 || needed > size ? text : CStringW(buffer.data());
}

template <typename Text, typename Read>
Text EmptyOnFailure(Read read) noexcept {
    try {
        return read();
    } catch (...) {
        return Text();
    }
}

}  // namespace

// ---- The key itself ------------------------------------------------------------------------------------

RegistryKey::RegistryKey(std::uint32_t view, HKEY root, const WCHAR* subkey, REGSAM access,
                         SECURITY_ATTRIBUTES* securityAttributes)
    : view_(view), root_(root), subkey_(subkey) {
    const REGSAM wanted = (access & ~viewBits) | ViewBits(view);
    const bool writes = (access & KEY_WRITE) == KEY_WRITE;
    if (writes && !Exists(root, subkey)) {
        const LSTATUS result = RegCreateKeyExW(root, subkey_.GetString(), 0, nullptr, 0, wanted,
                                               securityAttributes, &key_, &disposition_);
        if (result != ERROR_SUCCESS) {
            const CStringW text = ResultText(result);
            throw VexRegKeyCreateFailed("RegistryKey::RegistryKey", VexCode::RegKeyCreate, text, KeyName(0));
        }
    } else if (const LSTATUS result = RegOpenKeyExW(root, subkey, 0, wanted, &key_);
               result != ERROR_SUCCESS) {
        const CStringW text = ResultText(result);
        throw VexRegKeyOpenFailed("RegistryKey::RegistryKey", VexCode::RegKeyOpen, text, KeyName(0));
    }
}

RegistryKey::~RegistryKey() {
    RegCloseKey(key_);
}

bool RegistryKey::Exists(HKEY root, const WCHAR* subkey) noexcept {
    try {
        const RegistryKey key(1, root, subkey, KEY_READ, NullSecurityAttributes().get());
        return true;
    } catch (...) {
        return false;
    }
}

CStringW RegistryKey::KeyName(std::uint16_t form) const {
    if (form == 0) return RootKeyName(root_) + TEXT("\\") + subkey_;
    return form == 1 ? subkey_ : subkey_.Mid(subkey_.ReverseFind(TEXT('\\')) + 1);
}

CStringW RegistryKey::RootKeyName(HKEY root) {
    const struct {
        HKEY root;
        const WCHAR* name;
    } names[] = {
        {HKEY_CLASSES_ROOT, TEXT("HKEY_CLASSES_ROOT")},
        {HKEY_CURRENT_CONFIG, TEXT("HKEY_CURRENT_CONFIG")},
        {HKEY_CURRENT_USER, TEXT("HKEY_CURRENT_USER")},
        {HKEY_DYN_DATA, TEXT("HKEY_DYN_DATA")},
        {HKEY_LOCAL_MACHINE, TEXT("HKEY_LOCAL_MACHINE")},
        {HKEY_PERFORMANCE_DATA, TEXT("HKEY_PERFORMANCE_DATA")},
        {HKEY_USERS, TEXT("HKEY_USERS")},
    };
    for (const auto& [handle, name] : names) {
        if (handle == root) return name;
    }
    return {};
}

FILETIME RegistryKey::LastWriteTime() const noexcept {
    FILETIME time{};
    RegQueryInfoKeyW(key_, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                     nullptr, &time);
    return time;
}

// ---- Values --------------------------------------------------------------------------------------------

bool RegistryKey::ValueExists(const RegistryValueName& name) const noexcept {
    return RegQueryValueExW(key_, name.get(), nullptr, nullptr, nullptr, nullptr) != ERROR_FILE_NOT_FOUND;
}

std::vector<CStringW> RegistryKey::ValueNames(std::uint32_t kind) const {
    std::vector<CStringW> names;
    for (DWORD index = 0;; ++index) {
        std::array<WCHAR, 1025> name;
        auto size = static_cast<DWORD>(name.size());
        DWORD found = 0;
        const LSTATUS result =
            RegEnumValueW(key_, index, name.data(), &size, nullptr, &found, nullptr, nullptr);
        if (result == ERROR_MORE_DATA) continue;
        if (result != ERROR_SUCCESS) return names;
        if (kind == anyKind || kind == found) names.emplace_back(name.data(), static_cast<int>(size));
    }
}

LSTATUS RegistryKey::Query(const RegistryValueName& name, DWORD& kind, void* data,
                           DWORD& size) const noexcept {
    return RegQueryValueExW(key_, name.get(), nullptr, &kind, static_cast<BYTE*>(data), &size);
}

std::uint64_t RegistryKey::ReadNumber(const RegistryValueName& name, const char* raiser, DWORD kind,
                                      DWORD size, std::int32_t mismatch) const {
    std::uint64_t number = 0;
    DWORD found = 0;
    const LSTATUS result = Query(name, found, &number, size);
    RequireRead(result, *this, name, raiser);
    RequireKind(found == kind, *this, name, raiser, mismatch);
    return number;
}

std::uint32_t RegistryKey::ReadDword(const RegistryValueName& name) const {
    return static_cast<std::uint32_t>(
        ReadNumber(name, valueRead, REG_DWORD, sizeof(std::uint32_t), VexCode::RegValueNotDword));
}

std::int32_t RegistryKey::ValueReadInt(const RegistryValueName& name) const {
    return static_cast<std::int32_t>(ReadDword(name));
}

std::int64_t RegistryKey::ValueReadInt64(const RegistryValueName& name) const {
    return static_cast<std::int64_t>(ReadNumber(name, "RegistryKey::ValueReadInt64", REG_QWORD,
                                                sizeof(std::int64_t), VexCode::RegValueNotQword));
}

// A value's units, and zero ones behind them whatever the value ends in.
struct RegistryKey::Text {
    DWORD kind = 0;
    std::vector<WCHAR> units;
};

// Data of at most `firstSize` bytes takes one query, longer data of the right kind a second one.
RegistryKey::Text RegistryKey::ReadText(const RegistryValueName& name, DWORD firstSize,
                                        bool (*isRight)(DWORD kind), std::int32_t mismatch) const {
    const auto unitsFor = [](DWORD size) { return std::vector<WCHAR>(size / sizeof(WCHAR) + 3); };
    Text text{0, unitsFor(firstSize)};
    DWORD size = firstSize;
    LSTATUS result = Query(name, text.kind, text.units.data(), size);
    if (result == ERROR_MORE_DATA && isRight(text.kind)) {
        text.units = unitsFor(size);
        result = Query(name, text.kind, text.units.data(), size);
    }
    RequireRead(result, *this, name, valueRead);
    RequireKind(isRight(text.kind), *this, name, valueRead, mismatch);
    return text;
}

void RegistryKey::ValueRead(const RegistryValueName& name, CStringW& out) const {
    const auto isString = [](DWORD kind) { return kind == REG_SZ || kind == REG_EXPAND_SZ; };
    const Text text = ReadText(name, 1024, isString, VexCode::RegValueNotString);
    const CStringW found(text.units.data());
    out = text.kind == REG_EXPAND_SZ ? Expanded(found) : found;
}

void RegistryKey::ValueRead(const RegistryValueName& name, CStringA& out) const {
    CStringW wide;
    ValueRead(name, wide);
    out = CStringAFromWide(wide.GetString());
}

void RegistryKey::ValueRead(const RegistryValueName& name, std::vector<CStringW>& out) const {
    const auto isList = [](DWORD kind) { return kind == REG_MULTI_SZ; };
    const Text text = ReadText(name, 1025, isList, VexCode::RegValueNotMultiString);
    std::vector<CStringW> pieces;
    for (const WCHAR* piece = text.units.data(); *piece != 0; piece += pieces.back().GetLength() + 1) {
        pieces.emplace_back(piece);
    }
    out.insert(out.end(), std::make_move_iterator(pieces.begin()), std::make_move_iterator(pieces.end()));
}

void RegistryKey::ValueRead(const RegistryValueName& name, Bytes& out) const {
    DWORD kind = 0, size = 0;
    RequireRead(Query(name, kind, nullptr, size), *this, name, valueRead);
    RequireKind(kind == REG_BINARY, *this, name, valueRead, VexCode::RegValueNotBinary);
    Bytes bytes(size);
    // Another process may have put another value in its place, which counts then.
    RequireRead(Query(name, kind, bytes.empty() ? nullptr : bytes.data(), size), *this, name, valueRead);
    RequireKind(kind == REG_BINARY, *this, name, valueRead, VexCode::RegValueNotBinary);
    bytes.resize(size);
    out = std::move(bytes);
}

RegistryKey::Bytes RegistryKey::ValueReadBinary(const RegistryValueName& name) const {
    Bytes bytes;
    ValueRead(name, bytes);
    return bytes;
}

CStringW RegistryKey::ValueReadStringW(const RegistryValueName& name) const noexcept {
    return EmptyOnFailure<CStringW>([&] {
        CStringW text;
        ValueRead(name, text);
        return text;
    });
}

CStringA RegistryKey::ValueReadStringA(const RegistryValueName& name) const noexcept {
    return EmptyOnFailure<CStringA>([&] {
        CStringA text;
        ValueRead(name, text);
        return text;
    });
}

StdWString RegistryKey::ValueReadStdWString(const RegistryValueName& name) const noexcept {
    return EmptyOnFailure<StdWString>([&] { return StdWString(ValueReadStringW(name).GetString()); });
}

std::string RegistryKey::ValueReadStdString(const RegistryValueName& name) const noexcept {
    return EmptyOnFailure<std::string>([&] { return std::string(ValueReadStringA(name).GetString()); });
}

void RegistryKey::Write(const RegistryValueName& name, DWORD kind, const void* data, std::size_t size) {
    const bool fits = size <= std::numeric_limits<DWORD>::max();
    const LSTATUS result = fits ? RegSetValueExW(key_, name.get(), 0, kind, static_cast<const BYTE*>(data),
                                                 static_cast<DWORD>(size))
                                : LSTATUS{ERROR_INVALID_PARAMETER};
    if (result != ERROR_SUCCESS) {
        const CStringW text = ResultText(result);
        throw VexRegValueWriteFailed("RegistryKey::ValueWrite", VexCode::RegValueWrite, text,
                                     CStringW(name.get()), KeyName(0));
    }
}

void RegistryKey::ValueWrite(const RegistryValueName& name, const CStringW& value) {
    Write(name, REG_SZ, value.GetString(), (static_cast<std::size_t>(value.GetLength()) + 1) * sizeof(WCHAR));
}

void RegistryKey::ValueWrite(const RegistryValueName& name, const CStringA& value) {
    ValueWrite(name, CStringWFromAnsi(value.GetString()));
}

void RegistryKey::ValueWrite(const RegistryValueName& name, const StdWString& value) {
    Write(name, REG_SZ, value.c_str(), (value.size() + 1) * sizeof(WCHAR));
}

void RegistryKey::ValueWrite(const RegistryValueName& name, const std::string& value) {
    ValueWrite(name, CStringWFromAnsi(value.c_str()));
}

void RegistryKey::ValueWrite(const RegistryValueName& name, const WCHAR* value) {
    ValueWrite(name, CStringW(value));
}

void RegistryKey::ValueWrite(const RegistryValueName& name, const char* value) {
    ValueWrite(name, CStringW(value));
}

void RegistryKey::ValueWrite(const RegistryValueName& name, const Bytes& value) {
    Write(name, REG_BINARY, value.empty() ? nullptr : value.data(), value.size());
}

void RegistryKey::ValueDelete(const RegistryValueName& name) {
    const LSTATUS result = RegDeleteValueW(key_, name.get());
    if (result != ERROR_SUCCESS) {
        const CStringW text = ResultText(result);
        throw VexRegValueDeleteFailed("RegistryKey::ValueDelete", VexCode::RegValueDelete, text,
                                      CStringW(name.get()), KeyName(0));
    }
}

// ---- Subkeys -------------------------------------------------------------------------------------------

void RegistryKey::SubkeysIterate(bool includeSelf, bool recursive, ULONG_PTR context,
                                 SubkeyCallback callback) {
    if (includeSelf) callback(0, this, context);
    SubkeysIteratePrivate(1, recursive, context, callback);
}

void RegistryKey::SubkeysIteratePrivate(std::int32_t depth, bool recursive, ULONG_PTR context,
                                        SubkeyCallback callback) const {
    for (DWORD index = 0;; ++index) {
        std::array<WCHAR, 1025> name{};
        auto size = static_cast<DWORD>(name.size());
        const LSTATUS result =
            RegEnumKeyExW(key_, index, name.data(), &size, nullptr, nullptr, nullptr, nullptr);
        if (result == ERROR_NO_MORE_ITEMS) return;
        if (result != ERROR_SUCCESS && result != ERROR_MORE_DATA) {
            const CStringW text = ResultText(result);
            throw VexRegKeyEnumFailed("RegistryKey::SubkeysIteratePrivate", VexCode::RegKeyEnum, text,
                                      KeyName(0));
        }
        // The system takes no path that begins with a backslash.
        const CStringW path = subkey_.IsEmpty() ? CStringW(name.data()) : subkey_ + TEXT("\\") + name.data();
        RegistryKey child(view_, root_, path.GetString(), KEY_READ, NullSecurityAttributes().get());
        callback(depth, &child, context);
        if (recursive) child.SubkeysIteratePrivate(depth + 1, recursive, context, callback);
    }
}
