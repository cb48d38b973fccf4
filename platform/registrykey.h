#pragma once

#include "text/text.h"

#include <windows.h>

#include <winreg.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <vector>

// The name of a registry value, from zero-terminated wide text or from narrow text of the ANSI code page.
// Null means the key's unnamed default value. Wide text isn't copied: it has to outlive the call.
class RegistryValueName {
  public:
    RegistryValueName(const WCHAR* name) noexcept : name_(name) {}
    RegistryValueName(const char* name)
        : widened_(CStringWFromAnsi(name)), name_(name != nullptr ? widened_.GetString() : nullptr) {}
    RegistryValueName(const CStringW& name) noexcept : name_(name.GetString()) {}
    RegistryValueName(std::nullptr_t) noexcept {}
    RegistryValueName(const RegistryValueName&) = delete;
    RegistryValueName& operator=(const RegistryValueName&) = delete;

    // May be null.
    [[nodiscard]] const WCHAR* get() const noexcept { return name_; }

  private:
    CStringW widened_;
    const WCHAR* name_ = nullptr;
};

// The whole numbers of 32 bits, which the registry keeps as REG_DWORD, and of 64 bits, kept as REG_QWORD.
template <typename Number>
concept RegistryDword = std::integral<Number> && sizeof(Number) == sizeof(std::uint32_t);
template <typename Number>
concept RegistryQword = std::integral<Number> && sizeof(Number) == sizeof(std::uint64_t);

// One open registry key, closed by the destructor. An object belongs to one thread at a time.
//
// Values are read and written with a check of their kind: one of another kind is an error, never a
// conversion. What fails raises one of the VexRegKeyError family with the full path of the key, as
// KeyName(0) tells it, last in `args`, and the name of the value, empty for a null one, ahead of it. Where a
// call of the system failed, the first of `args` is "(rc=%d, err=%d)": its result, and the thread's last
// error, which the registry's calls need not have set. Errors of the memory layer pass on.
class RegistryKey {
  public:
    using Bytes = std::vector<std::uint8_t>;

    // For ValueNames: all kinds.
    static constexpr std::uint32_t anyKind = 0xFFFFFFFF;

    // Opens the key at `subkey` below `root`; null means the root itself. `view` is 0 for no request, 1 for
    // the registry's 32-bit view, 2 for its 64-bit view, and alone decides that: view bits in `access` are
    // dropped. A key that isn't there is made if `access` has all of KEY_WRITE, with `securityAttributes`,
    // and then disposition() tells so. Looking for it and making it are two steps.
    // Raises VexRegKeyOpenFailed, VexCode::RegKeyOpen, and VexRegKeyCreateFailed, VexCode::RegKeyCreate.
    [[nodiscard]] RegistryKey(std::uint32_t view, HKEY root, const WCHAR* subkey, REGSAM access,
                              SECURITY_ATTRIBUTES* securityAttributes);
    ~RegistryKey();
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    // Whether the key can be opened for reading in the 32-bit view.
    [[nodiscard]] static bool Exists(HKEY root, const WCHAR* subkey) noexcept;

    // What the constructor was given, and the open key, which stays this object's.
    [[nodiscard]] std::uint32_t view() const noexcept { return view_; }
    [[nodiscard]] HKEY root() const noexcept { return root_; }
    [[nodiscard]] HKEY key() const noexcept { return key_; }
    // REG_CREATED_NEW_KEY or REG_OPENED_EXISTING_KEY.
    [[nodiscard]] DWORD disposition() const noexcept { return disposition_; }
    // The path below the root; empty for the root itself.
    [[nodiscard]] const CStringW& subkey() const noexcept { return subkey_; }

    // `form` 0: the root's name, a backslash and the path below it. 1: that path alone. Any other: the last
    // name of the path.
    [[nodiscard]] CStringW KeyName(std::uint16_t form) const;

    // "HKEY_CURRENT_USER" and so on; empty for a handle that is no root.
    [[nodiscard]] static CStringW RootKeyName(HKEY root);

    // When the key was last written to; zero if the system doesn't tell.
    [[nodiscard]] FILETIME LastWriteTime() const noexcept;

    // False only for what the system calls missing: a value that can't be read for another cause exists.
    [[nodiscard]] bool ValueExists(const RegistryValueName& name) const noexcept;

    // The names of all values of one kind, or of anyKind, in the system's order. Names beyond 1024 units are
    // left out. If the system stops telling, by an error that concerns the whole key, the names end there.
    [[nodiscard]] std::vector<CStringW> ValueNames(std::uint32_t kind) const;

    // Each ValueRead puts a value into `out`, which on failure stays as it was. Raises VexRegValueReadFailed:
    // VexCode::RegValueRead where the system's query failed, else the code named here, with no result text in
    // `args`, for a value of another kind.

    // REG_DWORD; VexCode::RegValueNotDword. Data longer than 4 bytes fails in the query, shorter data counts
    // with zero bytes behind it.
    template <RegistryDword Number>
    void ValueRead(const RegistryValueName& name, Number& out) const {
        out = static_cast<Number>(ReadDword(name));
    }

    // REG_SZ, or REG_EXPAND_SZ with its environment variables expanded, unless that makes more than 32767
    // units of it; the text ends at its first zero unit. VexCode::RegValueNotString; but data of another kind
    // that is longer than 1024 bytes fails in the query. Narrow text comes by the ANSI code page.
    void ValueRead(const RegistryValueName& name, CStringW& out) const;
    void ValueRead(const RegistryValueName& name, CStringA& out) const;

    // REG_MULTI_SZ; VexCode::RegValueNotMultiString, with the same reserve for data longer than 1025 bytes.
    // The strings are appended to `out`; the first empty one ends the list.
    void ValueRead(const RegistryValueName& name, std::vector<CStringW>& out) const;

    // REG_BINARY; VexCode::RegValueNotBinary.
    void ValueRead(const RegistryValueName& name, Bytes& out) const;

    // The same values as results.
    [[nodiscard]] std::int32_t ValueReadInt(const RegistryValueName& name) const;
    [[nodiscard]] Bytes ValueReadBinary(const RegistryValueName& name) const;

    // REG_QWORD; VexCode::RegValueNotQword.
    [[nodiscard]] std::int64_t ValueReadInt64(const RegistryValueName& name) const;

    // Text as ValueRead gives it, but empty where that raises anything at all.
    [[nodiscard]] CStringW ValueReadStringW(const RegistryValueName& name) const noexcept;
    [[nodiscard]] CStringA ValueReadStringA(const RegistryValueName& name) const noexcept;
    [[nodiscard]] StdWString ValueReadStdWString(const RegistryValueName& name) const noexcept;
    [[nodiscard]] std::string ValueReadStdString(const RegistryValueName& name) const noexcept;

    // Each creates or replaces a value: text as REG_SZ with a terminator, narrow text widened first by the
    // ANSI code page up to its first zero, a null pointer as empty text; bytes as REG_BINARY; numbers as
    // REG_DWORD or REG_QWORD by their size. Raises VexRegValueWriteFailed, VexCode::RegValueWrite; data of 4
    // GiB or more has result 87 (ERROR_INVALID_PARAMETER) there.
    void ValueWrite(const RegistryValueName& name, const CStringW& value);
    void ValueWrite(const RegistryValueName& name, const CStringA& value);
    void ValueWrite(const RegistryValueName& name, const StdWString& value);
    void ValueWrite(const RegistryValueName& name, const std::string& value);
    void ValueWrite(const RegistryValueName& name, const WCHAR* value);
    void ValueWrite(const RegistryValueName& name, const char* value);
    void ValueWrite(const RegistryValueName& name, const Bytes& value);
    template <typename Number>
    requires RegistryDword<Number> || RegistryQword<Number>
    void ValueWrite(const RegistryValueName& name, Number value) {
        Write(name, RegistryDword<Number> ? REG_DWORD : REG_QWORD, &value, sizeof value);
    }

    // Raises VexRegValueDeleteFailed, VexCode::RegValueDelete, for a missing value too.
    void ValueDelete(const RegistryValueName& name);

    // `key` is open for reading during the callback alone. What it throws ends the walk and passes on.
    using SubkeyCallback = void (*)(std::int32_t depth, RegistryKey* key, ULONG_PTR context);

    // Calls `callback` at depth 0 for this key if `includeSelf` says so, then at depth 1 for each key right
    // below it, and, with `recursive`, at the next depth for those below that one before its next sibling.
    // Raises VexRegKeyEnumFailed, VexCode::RegKeyEnum, with the path of the key whose subkeys it tells, and
    // VexRegKeyOpenFailed, VexCode::RegKeyOpen, for a subkey that can't be opened; both end the walk.
    void SubkeysIterate(bool includeSelf, bool recursive, ULONG_PTR context, SubkeyCallback callback);

  private:
    struct Text;
    [[nodiscard]] LSTATUS Query(const RegistryValueName& name, DWORD& kind, void* data,
                                DWORD& size) const noexcept;
    [[nodiscard]] std::uint64_t ReadNumber(const RegistryValueName& name, const char* raiser, DWORD kind,
                                           DWORD size, std::int32_t mismatch) const;
    [[nodiscard]] std::uint32_t ReadDword(const RegistryValueName& name) const;
    [[nodiscard]] Text ReadText(const RegistryValueName& name, DWORD firstSize, bool (*isRight)(DWORD kind),
                                std::int32_t mismatch) const;
    void Write(const RegistryValueName& name, DWORD kind, const void* data, std::size_t size);
    void SubkeysIteratePrivate(std::int32_t depth, bool recursive, ULONG_PTR context,
                               SubkeyCallback callback) const;

    std::uint32_t view_;
    HKEY root_;
    HKEY key_ = nullptr;
    DWORD disposition_ = REG_OPENED_EXISTING_KEY;
    CStringW subkey_;
};
