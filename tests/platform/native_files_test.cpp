// What only the stand-in, or the system below it, brings about: links, pipes, errors of streams, a full disk.
#include "platform/checksums.h"
#include "platform/directories.h"
#include "platform/file.h"
#include "platform/fileinfo.h"
#include "platform/fileversioninfo.h"
#include "platform/winfile.h"
#include "support/folder.h"
#include "support/raised.h"

#include <csignal>
#include <fstream>

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

class NativeFiles : public support::FileTest {};

TEST_F(NativeFiles, OutsideATreeStayWhenItIsRemoved) {
    const auto& root = folder.Path();
    std::filesystem::create_directories(root / "tree" / "below");
    std::filesystem::create_directory(root / "kept");
    folder.Write("kept/file", "kept");
    std::filesystem::create_directory_symlink("../../kept", root / "tree" / "below" / "link");
    std::filesystem::create_directory_symlink("..", root / "tree" / "parent");
    std::filesystem::create_symlink("../kept/file", root / "tree" / "file link");
    std::filesystem::create_symlink("nowhere", root / "tree" / "broken link");
    std::filesystem::create_directory_symlink("kept", root / "link");
    folder.Write("victim", "kept");
    folder.Write("tree/..\\victim", "a name that would lead out");

    EXPECT_FALSE(RemoveDirectoryTree((folder / TEXT("tree")).c_str())) << "what has no path stays";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(root / "tree"), {}), 1);
    std::filesystem::remove(root / "tree" / "..\\victim");
    EXPECT_TRUE(RemoveDirectoryTree((folder / TEXT("tree")).c_str()));
    EXPECT_TRUE(RemoveDirectoryTree((folder / TEXT("link\\")).c_str()));
    EXPECT_FALSE(exists(symlink_status(root / "link")));
    EXPECT_EQ(folder.Read("kept/file"), "kept");
    EXPECT_EQ(folder.Read("victim"), "kept");
}

// Under Wine, too, neither a pipe nor a socket is a file or a folder, and to open a pipe takes no writer. But Wine
// deletes none of them, so that a tree that holds one stays.
TEST_F(NativeFiles, OfOtherKindsAreNoFoldersAndNobodyWaitsForThem) {
    const auto& root = folder.Path();
    std::filesystem::create_directory(root / "tree");
    ASSERT_EQ(mkfifo((root / "tree" / "pipe").c_str(), 0600), 0);
    const int socketFile = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (root / "tree" / "socket").string().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(socketFile, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(socketFile);

    const StdWString pipe = folder / TEXT("tree\\pipe");
    EXPECT_GT(FileLastWriteTime(pipe), 0);
    EXPECT_EQ(FileCrc32(pipe.c_str()), 0xFFFFFFFF);
    EXPECT_EQ(FileVersionInfo(pipe.c_str()).data, nullptr);
    EXPECT_FALSE(CreateEmptyFile(pipe.c_str()));
    for (const StdWString& path : {pipe, folder / TEXT("tree\\socket")}) {
        EXPECT_FALSE(FileExists(path.c_str()));
        EXPECT_FALSE(DirectoryExists(path.c_str(), false, nullptr));
    }
    EXPECT_TRUE(RemoveDirectoryTree((folder / TEXT("tree")).c_str()));
}

TEST_F(NativeFiles, OpenForWritingAloneGiveNoLines) {
    const StdWString path = folder / TEXT("written");
    File file(path, TEXT("wb"));
    file.write("1\n2\n", 4);
    file.seek(0);
    EXPECT_EQ(support::Raised([&] { static_cast<void>(file.get_lines()); }),
              "VexErrorReadingFile File::get_lines 2845 <Error reading from file \"" + Utf8FromWString(path) +
                  "\".>");
}

TEST_F(NativeFiles, OnAFullDiskAreReportedAndKeepWhatFitted) {
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    constexpr std::size_t room = 100'000;
    const rlimit limit{room, before.rlim_max};
    const StdWString path = folder / TEXT("full");
    const File::Bytes bytes(room - 1, 'x');
    std::string raised[3];
    std::size_t kept[3];
    setrlimit(RLIMIT_FSIZE, &limit);
    {
        File file(path, TEXT("wb"));
        file.write(bytes);
        raised[0] = support::Raised([&] { file.write(bytes); });
        kept[0] = static_cast<std::size_t>(file.size());
    }
    {
        WinFile file(path.c_str(), GENERIC_WRITE, 0, CREATE_ALWAYS, 0);
        file.write(bytes);
        raised[1] = support::Raised([&] { file.write({1, 2}); });
        kept[1] = static_cast<std::size_t>(file.size());
        raised[2] = support::Raised([&] { file.write({1}); });
        kept[2] = GetLastError();
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    const std::string sentence = " 2845 <Error writing to file \"" + Utf8FromWString(path) + "\".>";
    EXPECT_EQ(raised[0], "VexErrorWritingFile File::write" + sentence);
    EXPECT_EQ(raised[1], "VexErrorWritingFile WinFile::write" + sentence);
    EXPECT_EQ(raised[2], raised[1]);
    EXPECT_EQ(kept[0], room);
    EXPECT_EQ(kept[1], room) << "a part of what was to be written";
    EXPECT_EQ(kept[2], DWORD{ERROR_DISK_FULL});
    EXPECT_EQ(folder.Read("full").size(), room);
}

}  // namespace
