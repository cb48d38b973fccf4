#include "winapi/crt.h"

#include "crtfailure.h"
#include "kernel32/filesharing.h"
#include "kernel32/openfile.h"
#include "kernel32/paths.h"

#include "winapi/files.h"

#include <io.h>
#include <share.h>

#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>

using winapi::Failure;

namespace {

struct StreamMode {
    char plain[3];  // fdopen's
    winapi::FileOpening opening;
};

StreamMode ModeOf(const WCHAR* mode) {
    const std::u16string_view text = mode != nullptr ? mode : u"";
    if (text.empty() || std::u16string_view(u"rwa").find(text.front()) == text.npos) {
        throw Failure{ERROR_INVALID_PARAMETER};
    }
    const auto kind = static_cast<char>(text.front());
    const bool updates = text.find(u'+') != text.npos;
    const unsigned right = kind == 'r' ? winapi::mayRead : winapi::mayWrite;
    return {{kind, updates ? '+' : '\0', '\0'},
            {.rights = updates ? winapi::mayRead | winapi::mayWrite : right,
             .shared = 0,
             .disposition = static_cast<DWORD>(kind == 'r'   ? OPEN_EXISTING
                                               : kind == 'w' ? CREATE_ALWAYS
                                                             : OPEN_ALWAYS),
             .flags = (kind == 'a' ? O_APPEND : 0) | (text.find(u'N') != text.npos ? O_CLOEXEC : 0)}};
}

unsigned SharedBy(int share) {
    switch (share) {
        case _SH_DENYRW:
            return 0;
        case _SH_DENYWR:
            return winapi::mayRead;
        case _SH_DENYRD:
            return winapi::mayWrite;
        case _SH_DENYNO:
            return winapi::mayRead | winapi::mayWrite;
        default:
            throw Failure{ERROR_INVALID_PARAMETER};
    }
}

std::FILE* Open(const WCHAR* path, const StreamMode& mode) {
    if (path == nullptr) throw Failure{ERROR_INVALID_PARAMETER};
    winapi::Descriptor descriptor = winapi::OpenFile(winapi::SystemPath(path), mode.opening).descriptor;
    std::FILE* const stream = fdopen(descriptor.Get(), mode.plain);
    if (stream == nullptr) throw std::bad_alloc();
    static_cast<void>(descriptor.Release());
    return stream;
}

}  // namespace

std::FILE* _wfsopen(const WCHAR* path, const WCHAR* mode, int share) noexcept {
    return winapi::AtCrtBorder<std::FILE*>(nullptr, [&] {
        StreamMode streamMode = ModeOf(mode);
        streamMode.opening.shared = SharedBy(share);
        return Open(path, streamMode);
    });
}

errno_t _wfopen_s(std::FILE** file, const WCHAR* path, const WCHAR* mode) noexcept {
    if (file == nullptr) return errno = EINVAL;
    *file = winapi::AtCrtBorder<std::FILE*>(nullptr, [&] {
        StreamMode streamMode = ModeOf(mode);
        const bool onlyReads = streamMode.opening.rights == winapi::mayRead;
        streamMode.opening.shared = onlyReads ? winapi::mayRead : 0U;
        return Open(path, streamMode);
    });
    return *file != nullptr ? 0 : errno;
}

int _fseeki64(std::FILE* stream, std::int64_t offset, int origin) noexcept {
    return fseeko(stream, offset, origin);
}

std::int64_t _ftelli64(std::FILE* stream) noexcept {
    return ftello(stream);
}

int _fileno(std::FILE* stream) noexcept {
    return fileno(stream);
}

std::int64_t _filelengthi64(int descriptor) noexcept {
    struct stat facts {};
    return fstat(descriptor, &facts) == 0 ? std::int64_t{facts.st_size} : -1;
}
