#include "failure.h"
#include "paths.h"

#include "winapi/files.h"

#include <cerrno>

#include <sys/stat.h>
#include <sys/statvfs.h>

using winapi::Failure;

BOOL WINAPI GetDiskFreeSpaceExW(LPCWSTR folder, PULARGE_INTEGER freeForCaller, PULARGE_INTEGER total,
                                PULARGE_INTEGER free) noexcept {
    return winapi::AtBorder(FALSE, [&] {
        const std::string path = folder != nullptr ? winapi::SystemPath(folder) : ".";
        struct stat facts {};
        struct statvfs volume {};
        if (stat(path.c_str(), &facts) != 0 || statvfs(path.c_str(), &volume) != 0) {
            throw Failure{winapi::ErrorForFile(errno, path)};
        }
        if (!S_ISDIR(facts.st_mode)) throw Failure{ERROR_DIRECTORY};
        const auto tell = [&](PULARGE_INTEGER target, ULONGLONG blocks) {
            if (target != nullptr) target->QuadPart = blocks * volume.f_frsize;
        };
        tell(freeForCaller, volume.f_bavail);
        tell(total, volume.f_blocks);
        tell(free, volume.f_bfree);
        return TRUE;
    });
}
