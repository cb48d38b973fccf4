// Hexadecimal and six-bit text of any bytes, and any bytes read as such text.
#include "fuzz.h"

#include "text/codings.h"

#include <algorithm>
#include <cctype>

using fuzz::Check;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::Bytes input(data, size);
    const auto isInput = [&](const std::vector<std::uint8_t>& bytes) {
        return bytes.size() >= size && std::equal(input.begin(), input.end(), bytes.begin());
    };
    Check(isInput(BytesFromHex(HexFromBytes(input))), "hexadecimal text of bytes gives the bytes");
    Check(isInput(BytesFromText6(Text6FromBytes(input))), "six-bit text of bytes gives the bytes");

    const CStringA text = fuzz::Narrow(input);
    const std::vector<std::uint8_t> loose = BytesFromHex(text);
    Check(loose.size() == size / 2, "a byte for two characters");
    const CStringA strict = TextAFromHex(text);
    if (!strict.IsEmpty()) {
        Check(HexFromBytes(loose).Left(2 * strict.GetLength()) ==
                  CStringA(text.GetString()).MakeUpper().Left(2 * strict.GetLength()),
              "what is read strictly is hexadecimal text");
        Check(std::equal(
                  loose.begin(), loose.begin() + strict.GetLength(), strict.GetString(),
                  [](std::uint8_t unit, char character) { return static_cast<char>(unit) == character; }),
              "strict and loose reading agree");
    }
    const CStringW wide = fuzz::Wide(input);
    Check(TextWFromHex(HexFromTextW(wide)) == CStringW(wide.GetString()),
          "hexadecimal wide text gives the text");
    static_cast<void>(TextWFromHex(wide));

    Check(BytesFromText6(text).size() == (size * 6 + 7) / 8, "six bits a character, rounded up");
    return 0;
}
