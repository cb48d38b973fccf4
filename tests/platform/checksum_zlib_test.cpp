#include "platform/checksums.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <numeric>

namespace {

TEST(ChecksumsBesideZlib, AreTheSameButForTheFinalComplement) {
    std::vector<unsigned char> bytes(70000);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    for (std::size_t length = 0; length < bytes.size(); length = length < 300 ? length + 1 : length * 3 / 2) {
        for (std::size_t offset = 0; offset < 16; ++offset) {
            const unsigned char* const data = bytes.data() + offset;
            const std::size_t count = std::min(length, bytes.size() - offset);
            ASSERT_EQ(~Crc32(data, count), crc32(0, data, static_cast<uInt>(count)))
                << count << ", " << offset;
        }
    }
}

}  // namespace
