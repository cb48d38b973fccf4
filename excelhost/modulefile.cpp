#include "excelhost/modulefile.h"

#include <cstdint>
#include <fstream>
#include <string_view>

namespace excelhost {
namespace {

constexpr int kOwnBits = sizeof(void*) == 8 ? 64 : 32;

// Of a module, by the formats' published heads: ELF's class, PE's machine. 0 for any other file.
struct Kind {
    std::string_view system;
    int bits = 0;
};

Kind KindOf(const std::string& head) {
    if (head.size() > 4 && head.starts_with("\x7F"
                                            "ELF"))
        return {"Linux", head[4] == 2 ? 64 : 32};
    const auto at = [&](std::size_t place) { return static_cast<unsigned char>(head[place]); };
    constexpr std::size_t kPlaceOfHeader = 0x3C;
    if (head.size() < kPlaceOfHeader + 4 || !head.starts_with("MZ")) return {};
    const std::size_t header = at(kPlaceOfHeader) | std::size_t{at(kPlaceOfHeader + 1)} << 8;
    if (header + 6 > head.size() || head.compare(header, 4, std::string_view("PE\0\0", 4)) != 0) return {};
    switch (at(header + 4) | at(header + 5) << 8) {
        case 0x014C:
            return {"Windows", 32};
        case 0x8664:
        case 0xAA64:
            return {"Windows", 64};
        default:
            return {"Windows", 0};
    }
}

// The system that this program itself is a module of.
constexpr std::string_view kOwnSystem =
    std::filesystem::path::preferred_separator == '\\' ? "Windows" : "Linux";

}  // namespace

std::string WrongKindOfModule(const std::filesystem::path& file) {
    constexpr std::size_t kHead = 4096;
    std::string head(kHead, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(stream.gcount()));
    const Kind kind = KindOf(head);
    if (kind.system.empty()) return "it is no module";
    if (kind.system != kOwnSystem) {
        return "it is a module for " + std::string(kind.system) + ", and this is the program for " +
               std::string(kOwnSystem);
    }
    if (kind.bits == 0) return "it is a module for another processor";
    if (kind.bits == kOwnBits) return {};
    return "it is a " + std::to_string(kind.bits) + "-bit module, and this is the " +
           std::to_string(kOwnBits) + "-bit program: take the other one";
}

}  // namespace excelhost
