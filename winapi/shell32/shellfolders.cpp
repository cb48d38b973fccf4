#include "shlobj.h"

#include "advapi32/accounts.h"
#include "kernel32/failure.h"
#include "kernel32/paths.h"

#include <string>

#include <sys/stat.h>

using winapi::Failure;

namespace {

// As .NET maps them.
std::string FolderOf(int folder) {
    switch (folder) {
        case CSIDL_APPDATA:
            return winapi::UserFolder("XDG_CONFIG_HOME", ".config");
        case CSIDL_COMMON_APPDATA:
            return "/usr/share";
        default:
            throw Failure{ERROR_INVALID_PARAMETER};
    }
}

std::u16string ExistingFolder(int folder) {
    const std::string path = FolderOf(folder);
    struct stat facts {};
    if (stat(path.c_str(), &facts) != 0) throw Failure{winapi::ErrorForFile(errno, path)};
    if (!S_ISDIR(facts.st_mode)) throw Failure{ERROR_PATH_NOT_FOUND};
    std::u16string text = winapi::WindowsPath(path);
    while (text.ends_with(u'\\')) text.pop_back();
    if (text.size() >= MAX_PATH) throw Failure{ERROR_FILENAME_EXCED_RANGE};
    return text;
}

}  // namespace

HRESULT WINAPI SHGetFolderPathW(HWND, int folder, HANDLE, DWORD, LPWSTR path) noexcept {
    constexpr HRESULT win32Error = WINAPI_HRESULT(0x80070000);
    if (path == nullptr) return E_INVALIDARG;
    path[0] = u'\0';
    try {
        const std::u16string text = ExistingFolder(folder);
        path[text.copy(path, text.size())] = u'\0';
        return S_OK;
    } catch (const Failure& failure) {
        return win32Error | static_cast<HRESULT>(failure.code);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}
