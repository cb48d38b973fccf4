// What File and WinFile do in the same steps.
#pragma once

#include "text/text.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace kestrolumen::detail {

// The sentences of their failures.
[[nodiscard]] inline CStringW ReadingFailed(const CStringW& name) {
    return CStringWFormat(TEXT("Error reading from file \"%s\"."), name);
}
[[nodiscard]] inline CStringW WritingFailed(const CStringW& name) {
    return CStringWFormat(TEXT("Error writing to file \"%s\"."), name);
}
[[nodiscard]] inline CStringW SeekingFailed(const CStringW& name, std::int64_t offset, std::uint32_t origin) {
    return CStringWFormat(TEXT("Error seeking to %s from %d in file \"%s\"."),
                          CStringWFromInt64Grouped(offset), origin, name);
}

// Appends `count` bytes of `source` from `offset` at the end of `target`.
template <class AnyFile>
void AppendRange(AnyFile& target, AnyFile& source, std::int64_t offset, std::int64_t count) {
    constexpr std::int64_t chunk = 0x10000;
    constexpr std::int32_t fromEnd = 2;
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(std::clamp<std::int64_t>(count, 0, chunk)));
    source.seek(offset);
    target.seek(0, fromEnd);
    for (std::int64_t left = count; left > 0; left -= chunk) {
        buffer.resize(static_cast<std::size_t>(std::min(left, chunk)));
        source.read(buffer);
        target.write(buffer);
    }
}

}  // namespace kestrolumen::detail
