#include "failure.h"
#include "paths.h"

#include "winapi/files.h"

#include <algorithm>
#include <cerrno>

#include <sys/stat.h>

DWORD WINAPI GetLongPathNameW(LPCWSTR path, LPWSTR longPath, DWORD size) noexcept {
    return winapi::AtBorder(DWORD{0}, [&] {
        const std::u16string_view text(path);
        const std::string file = winapi::SystemPath(text);
        struct stat facts {};
        if (lstat(file.c_str(), &facts) != 0) throw winapi::Failure{winapi::ErrorForFile(errno, file)};
        const auto length = static_cast<DWORD>(text.size());
        if (length >= size) return length + 1;
        std::copy_n(path, length + 1, longPath);
        return length;
    });
}
