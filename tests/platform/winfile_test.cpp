#include "platform/winfile.h"

#include "support/folder.h"
#include "support/raised.h"

#include <functional>

namespace {

constexpr std::uint32_t readWrite = GENERIC_READ | GENERIC_WRITE;

class WinFiles : public support::FileTest {
  protected:
    const StdWString path = folder / TEXT("a\u0416");
};

TEST_F(WinFiles, AreWrittenReadAndCopiedAlsoBeyondFourGibibytes) {
    for (const std::size_t size : {0U, 1U, 0x10000U, 0x10001U}) {
        for (const std::int64_t start : {std::int64_t{0}, std::int64_t{5} << 30}) {
            WinFile file(path.c_str(), readWrite, 0, CREATE_ALWAYS, 0);
            WinFile copy((folder / TEXT("copy")).c_str(), readWrite, 0, CREATE_ALWAYS, 0);
            const WinFile::Bytes bytes(size, 0x5A);
            file.seek(start);
            file.write(bytes);
            file.write({1, 2});
            file.flush();
            const auto length = start + static_cast<std::int64_t>(size) + 2;
            EXPECT_EQ(file.tell(), length);
            EXPECT_EQ(file.size(), length);
            EXPECT_EQ(GetHandleFileSize(file.handle()), length);
            file.seek(-1, FILE_CURRENT);
            WinFile::Bytes last(1), none, copied(size + 2);
            file.read(last);
            file.read(none);
            EXPECT_EQ(last, WinFile::Bytes{2});

            copy.append_range(file, start, static_cast<std::int64_t>(size) + 2);
            EXPECT_EQ(file.tell(), length);
            EXPECT_EQ(SetHandlePosition(copy.handle(), 0), 0);
            copy.read(copied);
            EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), copied.begin()));
            EXPECT_EQ(copied.back(), 2);
            file.append(copy);
            EXPECT_EQ(file.tell(), length + copy.size());
        }
    }
}

TEST_F(WinFiles, TellWhatTheyCanNotDo) {
    WinFile reader((folder / TEXT("r")).c_str(), GENERIC_READ, 7, CREATE_NEW, 0);
    WinFile closed(path.c_str(), readWrite, 0, CREATE_NEW, 0);
    closed.close();
    closed.close();
    closed.flush();
    WinFile::Bytes none, one(1);
    const std::string name = " file \"" + Utf8FromWString(path) + "\".>",
                      readerName = " file \"" + Utf8FromWString(folder / TEXT("r")) + "\".>";
    const struct {
        std::function<void()> operation;
        std::string raised;
    } rows[] = {
        {[&] { WinFile(path.c_str(), GENERIC_READ, 0, CREATE_NEW, 0); },
         "VexErrorOpeningFile WinFile::WinFile 2616 <" + Utf8FromWString(path) + ">"},
        {[&] { reader.read(one); },
         "VexErrorReadingFile WinFile::read 2845 <Error reading from" + readerName},
        {[&] { reader.write(one); },
         "VexErrorWritingFile WinFile::write 2845 <Error writing to" + readerName},
        {[&] { reader.seek(-1000, FILE_CURRENT); },
         "VexErrorSeekingFile WinFile::seek 2845 <Error seeking to -1,000 from 1 in" + readerName},
        {[&] { closed.read(none); }, "VexErrorReadingFile WinFile::read 2845 <Error reading from" + name},
        {[&] { closed.write(none); }, "VexErrorWritingFile WinFile::write 2845 <Error writing to" + name},
        {[&] { closed.seek(0); },
         "VexErrorSeekingFile WinFile::seek 2845 <Error seeking to 0 from 0 in" + name},
        {[&] { static_cast<void>(closed.tell()); },
         "VexErrorSeekingFile WinFile::tell 2845 <Error getting current file position in" + name},
        {[&] { reader.append(closed); },
         "VexErrorSeekingFile WinFile::size 2845 <Error getting current file size in" + name},
    };
    for (const auto& row : rows) EXPECT_EQ(support::Raised(row.operation), row.raised);
    EXPECT_EQ(GetHandleFileSize(closed.handle()), -1);
    EXPECT_EQ(SetHandlePosition(reader.handle(), -1), 0xFFFFFFFF);
}

}  // namespace
