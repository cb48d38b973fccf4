#include "platform/folders.h"

#include "platform/modulepaths.h"
#include "platform/registrykey.h"
#include "platform/securityattributes.h"

#include <windows.h>

#include <shlobj.h>
#include <sysinfoapi.h>

#include <vector>

namespace {

CStringW ReadFolder(const CStringW& subkey, const WCHAR* value) {
    const RegistryKey key(1, HKEY_LOCAL_MACHINE, subkey.GetString(), KEY_READ,
                          NullSecurityAttributes().get());
    CStringW folder;
    key.ValueRead(value, folder);
    return folder;
}

CStringW WithBackslash(const CStringW& folder) {
    return AddTrailingBackslash(folder.IsEmpty() ? TEXT("C:") : folder.GetString());
}

CStringW ProgramDirectory(const CStringW& subkey) {
    CStringW folder;
    try {
        folder = ReadFolder(subkey, TEXT("Program Directory"));
    } catch (...) {
        // A product that isn't installed: the fallback.
    }
    return WithBackslash(folder);
}

CStringW ShellFolder(int folder) {
    WCHAR path[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathW(nullptr, folder, nullptr, 0, path))) path[0] = 0;
    return CStringW(path);
}

}  // namespace

CStringW OmbrageProgramDirectory(std::int32_t version) {
    return ProgramDirectory(
        CStringWFromAnsi(CStringAFormat("Software\\Quillmar\\Ombrage for Excel\\%d.0", version).GetString()));
}

CStringW TallyhostProgramDirectory() {
    return ProgramDirectory(TEXT("Software\\Quillmar\\Tallyhost"));
}

CStringW QuillmarSystemDirectory() {
    return WithBackslash(ReadFolder(TEXT("Software\\Quillmar"), TEXT("System Directory")));
}

CStringW CommonAppDataDirectory() {
    return ShellFolder(CSIDL_COMMON_APPDATA);
}

CStringW CommonAppDataDirectorySlash() {
    return CommonAppDataDirectory() + TEXT("\\");
}

CStringW AppDataDirectory() {
    return ShellFolder(CSIDL_APPDATA);
}

CStringW AppDataDirectorySlash() {
    return AppDataDirectory() + TEXT("\\");
}

CStringW SystemDirectory() {
    std::vector<WCHAR> path(8);
    for (;;) {
        const auto size = static_cast<UINT>(path.size());
        const UINT length = GetSystemDirectoryW(path.data(), size);
        if (length < size) return AddTrailingBackslash(path.data());
        path.assign(length, 0);
    }
}
