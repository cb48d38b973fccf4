#include "platform/file.h"

#include "platform/checksums.h"
#include "support/folder.h"
#include "support/raised.h"

#include <functional>

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

class Files : public support::FileTest {
  protected:
    std::vector<std::string> Lines(const std::string& bytes) {
        folder.Write("lines", bytes);
        return File(folder / TEXT("lines"), TEXT("rb")).get_lines();
    }
};

File::Bytes Counted(std::size_t size) {
    File::Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * i >> 3);
    return bytes;
}

std::string Text(const File::Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

TEST_F(Files, AreWrittenReadCopiedAndSummedAtTheBoundsOfTheirBuffers) {
    const StdWString path = folder / TEXT("\u20AC \U0001F600"), copyPath = folder / TEXT("copy");
    for (const std::size_t size : {0U, 1U, 0xFFFFU, 0x10000U, 0x10001U, 0x3FFFCU, 0x3FFFDU, 0x400000U}) {
        SCOPED_TRACE(size);
        const File::Bytes bytes = Counted(size);
        File file(path, TEXT("w+b"));
        file.write(bytes);
        file.write("tail", 4);
        EXPECT_EQ(file.size(), size + 4);
        EXPECT_EQ(file.tell(), size + 4);
        file.seek(-4, 2);
        File::Bytes tail(4), none;
        file.read(tail);
        file.read(none);
        EXPECT_EQ(Text(tail), "tail");

        File copy(copyPath.c_str(), TEXT("w+b"));
        copy.write("head", 4);
        copy.seek(1);
        copy.append(file);
        EXPECT_EQ(file.tell(), file.size());
        copy.append_range(file, static_cast<std::int64_t>(size), 2);
        EXPECT_EQ(file.tell(), size + 2);
        copy.seek(0);
        EXPECT_EQ(Text(copy.read()), "head" + Text(bytes) + "tailta");
        copy.seek(1);
        copy.append_range(file, 3, 0);
        EXPECT_EQ(file.tell(), 3);
        EXPECT_EQ(copy.tell(), copy.size());

        const File::Bytes all = (file.seek(0), file.read());
        for (const std::int64_t position : {0, 2}) {
            file.seek(position);
            EXPECT_EQ(file.crc64(), Crc64(all.data(), all.size()));
            EXPECT_EQ(file.tell(), position);
        }
    }
    File empty(copyPath, TEXT("w+b"));
    EXPECT_TRUE(empty.read().empty());
    EXPECT_EQ(empty.crc64(), 0);
}

TEST_F(Files, GiveTheirLines) {
    const std::string a(1023, 'a'), long10MiB(10 << 20, 'b');
    EXPECT_THAT(Lines(""), ElementsAre());
    EXPECT_THAT(Lines("\n"), ElementsAre(""));
    EXPECT_THAT(Lines("a\n\nb"), ElementsAre("a", "", "b"));
    EXPECT_THAT(Lines("\xEF\xBB\xBFx\r\ny\rz\n\r\n"), ElementsAre("\xEF\xBB\xBFx\r", "y\rz", "\r"));
    EXPECT_THAT(Lines(a + "\n" + a + "b\nc"), ElementsAre(a, a + "b", "c"));
    EXPECT_THAT(Lines("a" + long10MiB + "\n" + long10MiB), ElementsAre("a" + long10MiB, long10MiB));
    using namespace std::string_literals;
    EXPECT_THAT(Lines("a\0b\nc\n\0d\n"s), ElementsAre("ac")) << "the LF behind a zero is lost with the rest";

    File file(folder / TEXT("lines"), TEXT("rb"));
    file.seek(4);
    EXPECT_THAT(file.get_lines(), ElementsAre("c"));
    EXPECT_EQ(file.tell(), file.size());
    EXPECT_THAT(file.get_lines(), ElementsAre());
}

TEST_F(Files, TellWhatTheyCanNotDo) {
    folder.Write("read", "12345");
    folder.Write("closed", "");
    const auto path = [&](const char* name) { return Utf8FromWString(folder / WStringFromUtf8(name)); };
    File reader(folder / TEXT("read"), TEXT("rb")), writer(folder / TEXT("written"), TEXT("wb")),
        closed(folder / TEXT("closed"), TEXT("rb"));
    closed.close();
    closed.close();
    closed.flush();
    EXPECT_EQ(closed.tell(), -1);
    File::Bytes six(6), none;
    const struct {
        std::function<void()> operation;
        std::string raised;
    } rows[] = {
        {[&] { File(folder / TEXT("none"), TEXT("rb")); },
         "VexErrorOpeningFile File::File 2616 <" + path("none") + ">"},
        {[&] { File(nullptr, TEXT("rb")); }, "VexErrorOpeningFile File::File 2616 <>"},
        {[&] { reader.seek(-1234567, 2); },
         "VexErrorSeekingFile File::seek 2845 <Error seeking to -1,234,567 from 2 in file \"" + path("read") +
             "\".>"},
        {[&] { reader.read(six); },
         "VexErrorReadingFile File::read 2845 <Error reading from file \"" + path("read") + "\".>"},
        {[&] { static_cast<void>((reader.seek(1), reader.read())); },
         "VexErrorReadingFile File::read 2845 <Error reading from file \"" + path("read") + "\".>"},
        {[&] { reader.write("x", 1); },
         "VexErrorWritingFile File::write 2845 <Error writing to file \"" + path("read") + "\".>"},
        {[&] { writer.append_range(reader, 3, 3); },
         "VexErrorReadingFile File::read 2845 <Error reading from file \"" + path("read") + "\".>"},
        {[&] { static_cast<void>((writer.write("x", 1), writer.crc64())); },
         "VexErrorReadingFile File::read 2845 <Error reading from file \"" + path("written") + "\".>"},
        {[&] { closed.read(none); },
         "VexErrorReadingFile File::read 2845 <Error reading from file \"" + path("closed") + "\".>"},
        {[&] { closed.write(none); },
         "VexErrorWritingFile File::write 2845 <Error writing to file \"" + path("closed") + "\".>"},
        {[&] { static_cast<void>(closed.get_lines()); },
         "VexErrorReadingFile File::get_lines 2845 <Error reading from file \"" + path("closed") + "\".>"},
        {[&] { static_cast<void>(closed.crc64()); },
         "VexErrorSeekingFile File::seek 2845 <Error seeking to 0 from 2 in file \"" + path("closed") +
             "\".>"},
    };
    for (const auto& row : rows) EXPECT_EQ(support::Raised(row.operation), row.raised);
    reader.seek(0);
    EXPECT_EQ(Text(reader.read()), "12345") << "open and usable";
}

TEST_F(Files, BeyondFourGibibytesAreSoughtAndCopiedButNotReadWhole) {
    const std::int64_t offset = (std::int64_t{5} << 30) + 3;
    File file(folder / TEXT("large"), TEXT("w+b")), copy(folder / TEXT("copy"), TEXT("w+b"));
    file.seek(offset);
    file.write("end", 3);
    EXPECT_EQ(file.size(), offset + 3);
    EXPECT_EQ(file.tell(), offset + 3);
    copy.append_range(file, offset - 1, 4);
    copy.seek(0);
    EXPECT_EQ(Text(copy.read()), std::string("\0end", 4));
    file.seek(0);
    EXPECT_EQ(support::Raised([&] { static_cast<void>(file.read()); }),
              "VexErrorReadingFile File::read 2845 <The file \"" + Utf8FromWString(folder / TEXT("large")) +
                  "\" contains too much data to be read into a vector<byte>.>");
    EXPECT_EQ(file.tell(), 0);
}

}  // namespace
