#include "winapi/crt.h"

#include "failure.h"
#include "paths.h"

#include <sys/stat.h>

#include <string>
#include <string_view>

using winapi::Failure;

namespace {

// What fopen wants for a mode of Microsoft's; empty for one that is none.
std::string SystemMode(std::u16string_view mode) {
    if (mode.empty() || std::u16string_view(u"rwa").find(mode.front()) == mode.npos) return {};
    std::string plain(1, static_cast<char>(mode.front()));
    if (mode.find(u'+') != mode.npos) plain += '+';
    if (mode.find(u'N') != mode.npos) plain += 'e';
    return plain;
}

bool IsFolder(std::FILE* file) noexcept {
    struct stat facts {};
    return fstat(fileno(file), &facts) == 0 && S_ISDIR(facts.st_mode);
}

// Microsoft's library tells neither a folder from a forbidden file nor a file on the way from a missing
// folder.
errno_t FileError(int error) noexcept {
    if (error == EISDIR) return EACCES;
    return error == ENOTDIR ? ENOENT : error;
}

errno_t Open(std::FILE** file, const WCHAR* path, const WCHAR* mode) {
    const std::string systemMode = SystemMode(mode);
    if (systemMode.empty()) return EINVAL;
    *file = std::fopen(winapi::SystemPath(path).c_str(), systemMode.c_str());
    if (*file == nullptr) return FileError(errno);
    if (!IsFolder(*file)) return 0;
    static_cast<void>(std::fclose(*file));
    *file = nullptr;
    return EACCES;
}

}  // namespace

errno_t _wfopen_s(std::FILE** file, const WCHAR* path, const WCHAR* mode) noexcept {
    errno_t error = EINVAL;
    if (file != nullptr) *file = nullptr;
    if (file != nullptr && path != nullptr && mode != nullptr) {
        try {
            error = Open(file, path, mode);
        } catch (const Failure&) {
            error = ENOENT;  // no file can have such a path
        } catch (const std::bad_alloc&) {
            error = ENOMEM;
        }
    }
    if (error != 0) errno = error;
    return error;
}
