#include "platform/tempdirectory.h"

#include "platform/modulepaths.h"

#include <windows.h>

CStringW TempDirectoryNoSlash() {
    WCHAR buffer[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, buffer);
    const CStringW path = buffer[0] != 0 ? buffer : TEXT("C:\\");
    return path.Left(path.GetLength() - 1);
}

CStringW TempDirectory() {
    return AddTrailingBackslash(TempDirectoryNoSlash().GetString());
}
