// What Wine doesn't do as Windows does: streams that aren't shared, read-only files that nobody may write.
#include "support/folder.h"

#include <windows.h>

#include <fileapi.h>
#include <io.h>
#include <share.h>

#include <cerrno>

namespace {

class NativeFileCalls : public support::FileTest {};

TEST_F(NativeFileCalls, OpenStreamsThatOnlyReadersShare) {
    folder.Write("file", "12345");
    const support::WidePath path = folder / TEXT("file");
    const auto errorOf = [&](const WCHAR* mode) {
        std::FILE* file = nullptr;
        const errno_t error = _wfopen_s(&file, path.c_str(), mode);
        if (file != nullptr) std::fclose(file);
        return error;
    };
    const WCHAR* const modes[] = {TEXT("r"), TEXT("r+"), TEXT("a"), TEXT("w")};
    for (const WCHAR* first : modes) {
        std::FILE* file = nullptr;
        ASSERT_EQ(_wfopen_s(&file, path.c_str(), first), 0);
        for (const WCHAR* second : modes) {
            const bool bothRead = first == modes[0] && second == modes[0];
            EXPECT_EQ(errorOf(second), bothRead ? 0 : EACCES);
        }
        std::fclose(file);
        EXPECT_EQ(folder.Read("file").empty(), first == modes[3]) << "what is refused empties nothing";
    }
    std::FILE* const both = _wfsopen(path.c_str(), TEXT("r"), _SH_DENYNO);
    std::FILE* const writer = _wfsopen(path.c_str(), TEXT("w"), _SH_DENYNO);
    EXPECT_NE(writer, nullptr);
    EXPECT_EQ(_wfsopen(path.c_str(), TEXT("r"), _SH_DENYWR), nullptr);
    std::fclose(both);
    std::fclose(writer);

    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(errorOf(TEXT("r")), 0);
    EXPECT_EQ(errorOf(TEXT("w")), EACCES) << "whoever the user is";
}

}  // namespace
