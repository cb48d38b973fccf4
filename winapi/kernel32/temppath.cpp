#include "winapi/temppath.h"

#include "failure.h"
#include "paths.h"

#include <cstdlib>
#include <string>

using winapi::AtBorder;
using winapi::Failure;

namespace {

std::string TemporaryFolder() {
    for (const char* variable : {"TMP", "TEMP", "TMPDIR", "USERPROFILE"}) {
        const char* const value = std::getenv(variable);
        if (value != nullptr && *value != '\0') {
            return winapi::FullPath(winapi::SystemPath(winapi::Utf16FromUtf8(value)));
        }
    }
    return "/tmp";
}

}  // namespace

DWORD WINAPI GetTempPathW(DWORD size, LPWSTR path) noexcept {
    return AtBorder(DWORD{0}, [&] {
        std::u16string text = winapi::WindowsPath(TemporaryFolder());
        if (!text.ends_with(u'\\')) text += u'\\';
        if (text.size() >= MAX_PATH) throw Failure{ERROR_FILENAME_EXCED_RANGE};
        if (text.size() < size) {
            path[text.copy(path, text.size())] = u'\0';
            return static_cast<DWORD>(text.size());
        }
        if (size != 0) path[0] = u'\0';
        return static_cast<DWORD>(text.size() + 1);
    });
}
