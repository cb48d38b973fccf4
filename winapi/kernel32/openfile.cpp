#include "openfile.h"

#include "failure.h"
#include "filesharing.h"
#include "paths.h"

#include "winapi/files.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace winapi {
namespace {

int OpenOnce(const std::string& path, unsigned rights, int flags) noexcept {
    constexpr mode_t mode = 0666;
    const bool reads = (rights & mayRead) != 0, writes = (rights & mayWrite) != 0;
    const int access = !writes ? O_RDONLY : reads ? O_RDWR : O_WRONLY;
    return Retry([&] { return open(path.c_str(), access | flags | O_NONBLOCK, mode); });
}

void WaitAgain(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    if (flags < 0 || fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) != 0) {
        FailErrno();
    }
}

OpenedFile OpenOrMake(const std::string& path, const FileOpening& opening) {
    const bool mayMake = opening.disposition != OPEN_EXISTING && opening.disposition != TRUNCATE_EXISTING;
    if (mayMake) {
        Descriptor made(OpenOnce(path, opening.rights, opening.flags | O_CREAT | O_EXCL));
        if (made.IsOpen()) return {std::move(made), false};
        if (errno != EEXIST) throw Failure{ErrorForFile(errno, path)};
        if (opening.disposition == CREATE_NEW) throw Failure{ERROR_FILE_EXISTS};
    }
    // A link that leads nowhere exists, and is made good.
    Descriptor opened(OpenOnce(path, opening.rights, opening.flags | (mayMake ? O_CREAT : 0)));
    if (!opened.IsOpen()) throw Failure{ErrorForFile(errno, path)};
    return {std::move(opened), true};
}

}  // namespace

OpenedFile OpenFile(const std::string& path, const FileOpening& opening) {
    OpenedFile file = OpenOrMake(path, opening);
    const int descriptor = file.descriptor.Get();
    struct stat facts {};
    if (fstat(descriptor, &facts) != 0) FailErrno();
    if (S_ISDIR(facts.st_mode)) throw Failure{ERROR_ACCESS_DENIED};
    if (!S_ISREG(facts.st_mode)) {
        // A named pipe goes on without waiting, as the opening did: nobody may ever come to its other end.
        if (!S_ISFIFO(facts.st_mode)) WaitAgain(descriptor);
        return file;
    }

    if (file.existed && (opening.rights & mayWrite) != 0 && IsReadOnly(facts)) {
        throw Failure{ERROR_ACCESS_DENIED};
    }
    if (!ShareFile(descriptor, opening.rights, opening.shared)) throw Failure{ERROR_SHARING_VIOLATION};
    const bool empties = opening.disposition == CREATE_ALWAYS || opening.disposition == TRUNCATE_EXISTING;
    if (empties && file.existed && Retry([&] { return ftruncate(descriptor, 0); }) != 0) {
        FailErrno();
    }
    return file;
}

bool IsReadOnly(const struct stat& facts) noexcept {
    return (facts.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

}  // namespace winapi
