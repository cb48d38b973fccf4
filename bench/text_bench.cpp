// The conversions of text/ beside ICU and iconv, and formatting beside {fmt}.
//
// Ours are measured as callers have them: a string goes in, a new string comes out. The rivals convert into a
// buffer that is there already and large enough, with their converter opened before the clock runs, which is
// the most that can be got from them. Each text has a MiB in its narrow form and is put together from words
// at random, so that no branch predictor can learn it by heart.

#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <fmt/xchar.h>
#include <iconv.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "text/text.h"

namespace {

constexpr std::size_t textSize = std::size_t{1} << 20;

using Words = std::span<const std::string_view>;

constexpr std::string_view asciiWords[] = {
    "The",    "yield",  "of",     "each",   "batch",    "is",       "given",     "with",    "its",
    "spread", "and",    "the",    "number", "samples;", "a",        "value",     "below",   "detection",
    "limit",  "counts", "as",     "zero.",  "Prices,",  "in",       "thousands", "include", "(net)",
    "rates",  "from",   "12.50",  "to",     "1,840.75", "for",      "all",       "orders",  "of",
    "March",  "2019",   "except", "those",  "marked",   "\"void\"", "by",        "hand.",
};

// French and German as a word processor writes them, with its quotation marks, dashes and apostrophes.
constexpr std::string_view accentedWords[] = {
    "L’été",       "dernier,",   "la",      "société",  "a",        "publié",    "des",      "résultats",
    "très",        "supérieurs", "à",       "ceux",     "de",       "l’année",   "passée",   "–",
    "Für",         "die",        "Prüfung", "der",      "Beiträge", "müssen",    "alle",     "Belege",
    "vollständig", "vorliegen.", "Größe",   "und",      "Gewicht",  "können",    "je",       "nach",
    "Ausführung",  "abweichen.", "où",      "l’élève",  "reçoit",   "son",       "diplôme",  "«",
    "Straße",      "»",          "œuvre",   "coûte",    "45",       "€",         "tout",     "compris",
    "Überweisung", "bis",        "Jänner",  "ça",       "déjà",     "für",       "français", "nächste",
    "il",          "est",        "le",      "Ergebnis", "dem",      "Verfahren", "plus",     "liste",
};

constexpr std::string_view greekWords[] = {
    "Η",        "τιμή",    "του", "προϊόντος",  "είναι",  "μεγαλύτερη", "από",  "τον",
    "μέσο",     "όρο",     "των", "τελευταίων", "ετών.",  "Το",         "2019", "οι",
    "πωλήσεις", "έφτασαν", "στο", "υψηλότερο",  "σημείο", "και",        "μετά", "έπεσαν,",
};

constexpr std::string_view cyrillicWords[] = {
    "Цена",    "товара",  "выше", "средней", "за",      "последние", "годы.",   "В",
    "отчёте",  "за",      "2019", "год",     "все",     "значения",  "указаны", "в",
    "тысячах", "рублей,", "если", "не",      "сказано", "иное;",     "итого",   "—",
};

constexpr std::string_view chineseWords[] = {
    "产品的",   "价格", "高于",   "过去", "几年的", "平均水平。", "在", "2019",
    "年的报告", "中，", "所有",   "数值", "都以",   "千元",       "为", "单位，",
    "除非",     "另有", "说明。", "总计", "增长",   "百分之五",   "和", "库存",
};

std::string Utf8Text(Words words) {
    std::mt19937 random(20190301);
    std::uniform_int_distribution<std::size_t> any(0, words.size() - 1);
    std::string text;
    while (text.size() < textSize) text.append(words[any(random)]).append(1, ' ');
    return text;
}

struct Corpus {
    const char* name;
    const char* ansiConverter;  // ICU's and iconv's name of the code page, or null if no page has the text
    std::string utf8;
    StdWString wide;
    std::string ansi;
};

Corpus MakeCorpus(const char* name, Words words, const char* ansiConverter) {
    Corpus corpus{name, ansiConverter, Utf8Text(words), {}, {}};
    corpus.wide = WStringFromUtf8(corpus.utf8);
    if (ansiConverter != nullptr) corpus.ansi = CStringAFromWide(corpus.wide.c_str()).GetString();
    return corpus;
}

const std::array<Corpus, 5>& Corpora() {
    static const std::array corpora{
        MakeCorpus("ascii", asciiWords, "windows-1252"),
        MakeCorpus("accented", accentedWords, "windows-1252"), MakeCorpus("greek", greekWords, nullptr),
        MakeCorpus("cyrillic", cyrillicWords, nullptr), MakeCorpus("chinese", chineseWords, nullptr)};
    return corpora;
}

void Count(benchmark::State& state, std::size_t narrowBytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(narrowBytes) * state.iterations());
}

// Runs `convert` and checks the last result: a fast wrong answer is none.
template <class Convert, class Expected>
void Measure(benchmark::State& state, std::size_t narrowBytes, const Expected& expected, Convert convert) {
    for (auto _ : state) {
        auto result = convert();
        benchmark::DoNotOptimize(result);
    }
    if (!(convert() == expected)) state.SkipWithError("wrong result");
    Count(state, narrowBytes);
}

class Iconv {
  public:
    Iconv(const char* to, const char* from) : handle(iconv_open(to, from)) {}
    ~Iconv() { iconv_close(handle); }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    template <class To, class From>
    std::basic_string_view<To> operator()(const std::basic_string<From>& from, std::vector<To>& buffer) {
        char* in = const_cast<char*>(reinterpret_cast<const char*>(from.data()));
        std::size_t inLeft = from.size() * sizeof(From);
        char* out = reinterpret_cast<char*>(buffer.data());
        std::size_t outLeft = buffer.size() * sizeof(To);
        iconv(handle, &in, &inLeft, &out, &outLeft);
        return {buffer.data(), buffer.size() - outLeft / sizeof(To)};
    }

  private:
    iconv_t handle;
};

class IcuConverter {
  public:
    explicit IcuConverter(const char* name) : converter(ucnv_open(name, &error)) {}
    ~IcuConverter() { ucnv_close(converter); }
    IcuConverter(const IcuConverter&) = delete;
    IcuConverter& operator=(const IcuConverter&) = delete;

    std::u16string_view Decode(const std::string& from, std::vector<char16_t>& buffer) {
        const auto units = ucnv_toUChars(converter, buffer.data(), static_cast<std::int32_t>(buffer.size()),
                                         from.data(), static_cast<std::int32_t>(from.size()), &error);
        return {buffer.data(), static_cast<std::size_t>(units)};
    }
    std::string_view Encode(const std::u16string& from, std::vector<char>& buffer) {
        const auto bytes = ucnv_fromUChars(converter, buffer.data(), static_cast<std::int32_t>(buffer.size()),
                                           from.data(), static_cast<std::int32_t>(from.size()), &error);
        return {buffer.data(), static_cast<std::size_t>(bytes)};
    }

  private:
    UErrorCode error = U_ZERO_ERROR;
    UConverter* converter;
};

void Utf8FromWStringOurs(benchmark::State& state, const Corpus& corpus) {
    Measure(state, corpus.utf8.size(), corpus.utf8, [&] { return Utf8FromWString(corpus.wide); });
}

void Utf8FromWStringIcu(benchmark::State& state, const Corpus& corpus) {
    std::vector<char> buffer(corpus.wide.size() * 3 + 1);
    Measure(state, corpus.utf8.size(), corpus.utf8, [&] {
        std::int32_t length = 0;
        UErrorCode error = U_ZERO_ERROR;
        u_strToUTF8(buffer.data(), static_cast<std::int32_t>(buffer.size()), &length, corpus.wide.data(),
                    static_cast<std::int32_t>(corpus.wide.size()), &error);
        return std::string_view(buffer.data(), static_cast<std::size_t>(length));
    });
}

void Utf8FromWStringIconv(benchmark::State& state, const Corpus& corpus) {
    Iconv convert("UTF-8", "UTF-16LE");
    std::vector<char> buffer(corpus.wide.size() * 3 + 1);
    Measure(state, corpus.utf8.size(), corpus.utf8, [&] { return convert(corpus.wide, buffer); });
}

void WStringFromUtf8Ours(benchmark::State& state, const Corpus& corpus) {
    Measure(state, corpus.utf8.size(), corpus.wide, [&] { return WStringFromUtf8(corpus.utf8); });
}

void WStringFromUtf8Icu(benchmark::State& state, const Corpus& corpus) {
    std::vector<char16_t> buffer(corpus.utf8.size() + 1);
    Measure(state, corpus.utf8.size(), corpus.wide, [&] {
        std::int32_t length = 0;
        UErrorCode error = U_ZERO_ERROR;
        u_strFromUTF8(buffer.data(), static_cast<std::int32_t>(buffer.size()), &length, corpus.utf8.data(),
                      static_cast<std::int32_t>(corpus.utf8.size()), &error);
        return std::u16string_view(buffer.data(), static_cast<std::size_t>(length));
    });
}

void WStringFromUtf8Iconv(benchmark::State& state, const Corpus& corpus) {
    Iconv convert("UTF-16LE", "UTF-8");
    std::vector<char16_t> buffer(corpus.utf8.size() + 1);
    Measure(state, corpus.utf8.size(), corpus.wide, [&] { return convert(corpus.utf8, buffer); });
}

void CStringWFromAnsiOurs(benchmark::State& state, const Corpus& corpus) {
    const CStringW expected(corpus.wide.c_str());
    Measure(state, corpus.ansi.size(), expected, [&] { return CStringWFromAnsi(corpus.ansi.c_str()); });
}

void CStringWFromAnsiIcu(benchmark::State& state, const Corpus& corpus) {
    IcuConverter converter(corpus.ansiConverter);
    std::vector<char16_t> buffer(corpus.ansi.size() + 1);
    Measure(state, corpus.ansi.size(), corpus.wide, [&] { return converter.Decode(corpus.ansi, buffer); });
}

void CStringWFromAnsiIconv(benchmark::State& state, const Corpus& corpus) {
    Iconv convert("UTF-16LE", corpus.ansiConverter);
    std::vector<char16_t> buffer(corpus.ansi.size() + 1);
    Measure(state, corpus.ansi.size(), corpus.wide, [&] { return convert(corpus.ansi, buffer); });
}

void CStringAFromWideOurs(benchmark::State& state, const Corpus& corpus) {
    const CStringA expected(corpus.ansi.c_str());
    Measure(state, corpus.ansi.size(), expected, [&] { return CStringAFromWide(corpus.wide.c_str()); });
}

void CStringAFromWideIcu(benchmark::State& state, const Corpus& corpus) {
    IcuConverter converter(corpus.ansiConverter);
    std::vector<char> buffer(corpus.wide.size() + 1);
    Measure(state, corpus.ansi.size(), corpus.ansi, [&] { return converter.Encode(corpus.wide, buffer); });
}

void CStringAFromWideIconv(benchmark::State& state, const Corpus& corpus) {
    Iconv convert(corpus.ansiConverter, "UTF-16LE");
    std::vector<char> buffer(corpus.wide.size() + 1);
    Measure(state, corpus.ansi.size(), corpus.ansi, [&] { return convert(corpus.wide, buffer); });
}

constexpr int row = 1048576;
constexpr double value = 0.8414709848;
const StdWString heading = TEXT("Probability");

void FormatOurs(benchmark::State& state) {
    for (auto _ : state) {
        CStringW text = CStringWFormat(TEXT("%s, row %d: %.6f"), heading.c_str(), row, value);
        benchmark::DoNotOptimize(text);
    }
}

void FormatFmt(benchmark::State& state) {
    const std::wstring wideHeading(heading.begin(), heading.end());
    for (auto _ : state) {
        std::wstring text = fmt::format(L"{}, row {}: {:.6f}", wideHeading, row, value);
        benchmark::DoNotOptimize(text);
    }
}

using Run = void (*)(benchmark::State&, const Corpus&);

struct Operation {
    const char* name;
    bool isAnsi;
    Run ours;
    Run icu;
    Run iconv;
};

constexpr Operation operations[] = {
    {"Utf8FromWString", false, Utf8FromWStringOurs, Utf8FromWStringIcu, Utf8FromWStringIconv},
    {"WStringFromUtf8", false, WStringFromUtf8Ours, WStringFromUtf8Icu, WStringFromUtf8Iconv},
    {"CStringWFromAnsi", true, CStringWFromAnsiOurs, CStringWFromAnsiIcu, CStringWFromAnsiIconv},
    {"CStringAFromWide", true, CStringAFromWideOurs, CStringAFromWideIcu, CStringAFromWideIconv},
};

void Register(const Operation& operation, const Corpus& corpus) {
    const std::string stem = std::string(operation.name) + "/" + corpus.name + "/";
    const auto add = [&](const char* who, Run run) {
        benchmark::RegisterBenchmark((stem + who).c_str(),
                                     [run, &corpus](benchmark::State& state) { run(state, corpus); });
    };
    add("ours", operation.ours);
    add("icu", operation.icu);
    add("iconv", operation.iconv);
}

const bool registered = [] {
    for (const Operation& operation : operations) {
        for (const Corpus& corpus : Corpora()) {
            if (!operation.isAnsi || corpus.ansiConverter != nullptr) Register(operation, corpus);
        }
    }
    benchmark::RegisterBenchmark("CStringWFormat/ours", FormatOurs);
    benchmark::RegisterBenchmark("CStringWFormat/fmt", FormatFmt);
    return true;
}();

}  // namespace
