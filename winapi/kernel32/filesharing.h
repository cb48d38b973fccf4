// What the handles of a file let each other do, between all processes of this layer.
//
// A handle announces each right that it has and each that it denies to others by a read lock of its open file
// description on a byte of its own, far behind every file's end. Who opens a file looks for locks of others
// on the bytes opposed to its own. The kernel drops the locks with the description, however it ends.
#pragma once

namespace winapi {

// With the values of FILE_SHARE_READ, FILE_SHARE_WRITE and FILE_SHARE_DELETE.
enum FileRight : unsigned { mayRead = 1, mayWrite = 2, mayRemove = 4, allFileRights = 7 };

// Announces the rights of a new description, and false if they clash with those of another; then it has to be
// closed. Where the file system has no such locks nothing ever clashes.
[[nodiscard]] bool ShareFile(int descriptor, unsigned rights, unsigned shared) noexcept;

// Whether some description denies a right of FileRight to others.
[[nodiscard]] bool IsDenied(int descriptor, FileRight right) noexcept;

}  // namespace winapi
