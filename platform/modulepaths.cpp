#include "platform/modulepaths.h"

#include <stdlib.h>

#include <vector>

namespace {

bool EndsInBackslash(const CStringW& path) {
    const int length = path.GetLength();
    return length > 0 && path.GetAt(length - 1) == TEXT('\\');
}

}  // namespace

void SplitPath(const WCHAR* path, CStringW& drive, CStringW& dir, CStringW& fname, CStringW& ext) {
    if (path == nullptr) path = TEXT("");
    // Each field has room for the whole path, so that none can be too short.
    const std::size_t size = StdWStringView(path).size() + 1;
    std::vector<WCHAR> fields(4 * size);
    WCHAR* const field = fields.data();
    static_cast<void>(
        _wsplitpath_s(path, field, size, field + size, size, field + 2 * size, size, field + 3 * size, size));
    drive = field;
    dir = field + size;
    fname = field + 2 * size;
    ext = field + 3 * size;
}

CStringW AddTrailingBackslash(const WCHAR* path) {
    CStringW result(path);
    if (!EndsInBackslash(result)) result += TEXT('\\');
    return result;
}

CStringW RemoveTrailingBackslash(const CStringW& path) {
    return EndsInBackslash(path) ? path.Left(path.GetLength() - 1) : path;
}

CStringW GetModulePath(HMODULE module) {
    constexpr int size = 2049;
    CStringW path;
    const DWORD length = GetModuleFileNameW(module, path.GetBuffer(size), size);
    // A path that was cut fills the buffer to its end, with the terminator among the units counted on some
    // systems and not on others.
    path.ReleaseBuffer(length < size ? static_cast<int>(length) : size - 1);
    return path;
}

CStringW GetModulePathParts(HMODULE module, CStringW* directory, CStringW* baseName, CStringW* fileName) {
    CStringW path = GetModulePath(module);
    CStringW drive;
    CStringW dir;
    CStringW fname;
    CStringW ext;
    SplitPath(path.GetString(), drive, dir, fname, ext);
    if (directory != nullptr) *directory = drive + dir;
    if (baseName != nullptr) *baseName = fname;
    if (fileName != nullptr) *fileName = fname + ext;
    return path;
}
