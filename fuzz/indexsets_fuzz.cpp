// Packed index sets of any bytes: refused, or sets that keep their values when they are packed again; and any
// values packed.
#include "fuzz.h"

#include "platform/bits.h"
#include "platform/indexsets.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <vector>

using fuzz::Check;

namespace {

using Values = std::vector<std::int32_t>;

Values Sorted(Values values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

void CheckRoundTrip(const Values& values) {
    const std::vector<std::uint8_t> packed = PackIndexSet(values);
    const bool list = packed[3] < 0x80;
    Check(packed.size() <= 4 + 4 * values.size(), "the smaller form is taken");
    Check(UnpackIndexSet(packed) == (list ? values : Sorted(values)), "the values come back");
}

void CheckUnpacking(const std::vector<std::uint8_t>& packed) {
    try {
        const Values values = UnpackIndexSet(packed);
        std::uint32_t header = 0;
        std::memcpy(&header, packed.data(), sizeof header);
        if (header >> 31 == 0) {
            Check(values.size() == header, "a list has as many values as it says");
        } else {
            const auto largest = static_cast<std::int32_t>(header & 0x7FFFFFFF);
            Check(BitCountOfArray(&packed[4], largest + 1) == static_cast<std::int32_t>(values.size()) &&
                      std::all_of(
                          values.begin(), values.end(),
                          [&](std::int32_t value) { return value <= largest && TestBit(&packed[4], value); }),
                  "each value has its bit");
        }
        CheckRoundTrip(values);
    } catch (const std::length_error&) {
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CheckUnpacking({data, data + size});
    Values wide(size / 4), narrow(data, data + size), steps(narrow);
    if (size >= 4) std::memcpy(wide.data(), data, size / 4 * 4);
    for (std::size_t i = 1; i < steps.size(); ++i) steps[i] += steps[i - 1];
    for (const Values& values : {wide, narrow, steps}) CheckRoundTrip(values);
    return 0;
}
