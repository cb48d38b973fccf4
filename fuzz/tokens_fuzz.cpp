// Tokens and search. The input up to its first line feed gives the delimiters and what is sought, the rest
// the text.
#include "fuzz.h"

#include "text/search.h"
#include "text/tokens.h"

#include <algorithm>

using fuzz::Check;

namespace {

void CheckSplit(const CStringW& text, const CStringW& delimiters) {
    const std::vector<CStringW> tokens = SplitCStringW(text, delimiters, false);
    std::size_t count = 0;
    for (int position = 0;; ++count) {
        const CStringW token = text.Tokenize(delimiters, position);
        if (position == -1) break;
        Check(count < tokens.size() && tokens[count] == token, "split is Tokenize");
    }
    Check(count == tokens.size(), "split is Tokenize to the end");
}

template <typename Unit>
using Tokenizer = CStringT<Unit> (*)(const CStringT<Unit>&, const CStringT<Unit>&, int&);

template <typename Unit>
void CheckQuoted(Tokenizer<Unit> tokenize, const CStringT<Unit>& text, const CStringT<Unit>& delimiters) {
    for (int position = 0;;) {
        const int before = position;
        const CStringT<Unit> token = tokenize(text, delimiters, position);
        if (position == -1) {
            Check(token.IsEmpty() || before >= 0, "the end gives an empty token");
            return;
        }
        Check(position > before && position <= text.GetLength(), "each call goes on");
        Check(!token.IsEmpty() && text.Mid(position - token.GetLength(), token.GetLength()) == token,
              "the token ends at the position");
    }
}

bool IsAscii(fuzz::Bytes bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte > 0 && byte < 0x80; });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::Bytes input(data, size);
    const auto head = static_cast<std::size_t>(std::find(input.begin(), input.end(), '\n') - input.begin());
    const fuzz::Bytes first = input.first(head);
    const fuzz::Bytes rest = input.subspan(std::min(head + 1, size));
    const CStringW text = fuzz::Wide(rest);
    const CStringW delimiters = fuzz::Wide(first);
    CheckSplit(text, delimiters);
    CheckQuoted<WCHAR>(TokenizeQuotedW, text, delimiters);

    const CStringA narrow = fuzz::Narrow(rest);
    const CStringA sought = fuzz::Narrow(first);
    const char* const found = FindNoCaseA(narrow, sought);
    static_cast<void>(FindNoCaseW(text, delimiters));
    if (!IsAscii(input)) return 0;  // what is converted there and back is something else
    CheckQuoted<char>(TokenizeQuotedA, narrow, sought);
    const int place = sought.IsEmpty() ? -1 : LowerA(narrow).Find(LowerA(sought));
    Check((found == nullptr ? -1 : static_cast<int>(found - narrow.GetString())) == place,
          "search that ignores case is search in lower case");
    const std::uint64_t shortened = head + std::uint64_t{3} + head;
    Check(static_cast<std::uint64_t>(
              AbbreviatedA(narrow, static_cast<std::uint32_t>(head), static_cast<std::uint32_t>(head))
                  .GetLength()) == std::min<std::uint64_t>(shortened, rest.size()),
          "shortened to its length");
    return 0;
}
