// Texts, numbers as text and automation's values, one at a time as a worksheet call has them: beside C written by
// hand on the Windows calls, or the standard library.
#include "support/operation.h"

#include "automation/automation.h"
#include "text/text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace {

using bench::Compare;
using bench::Least;
using benchmark::DoNotOptimize;

const char narrowText[] = "Quarterly result of the northern plants";
const char accentedText[] = "R\xE9sultat trimestriel des usines du nord!";
const WCHAR wideText[] = TEXT("Quarterly result of the northern plants");

struct Free {
    void operator()(void* block) const { std::free(block); }
};
template <typename T>
using Block = std::unique_ptr<T[], Free>;

// A value that the compiler doesn't know.
template <typename T>
T Unknown(T value) {
    DoNotOptimize(value);
    return value;
}

template <typename T>
Block<T> NewBlock(std::size_t count) {
    return Block<T>(static_cast<T*>(std::malloc(count * sizeof(T))));
}

template <typename T>
Block<T> CopyOf(const T* text, std::size_t count) {
    auto block = NewBlock<T>(count + 1);
    std::memcpy(block.get(), text, count * sizeof(T));
    block[count] = 0;
    return block;
}

// ---- By hand on the Windows calls: the size is asked for, a block made, the text converted into it ---------

Block<WCHAR> Widened(UINT codePage, const char* text) {
    const int size = MultiByteToWideChar(codePage, 0, text, -1, nullptr, 0);
    auto block = NewBlock<WCHAR>(static_cast<std::size_t>(size));
    MultiByteToWideChar(codePage, 0, text, -1, block.get(), size);
    return block;
}

Block<char> Narrowed(UINT codePage, const WCHAR* text) {
    const int size = WideCharToMultiByte(codePage, 0, text, -1, nullptr, 0, nullptr, nullptr);
    auto block = NewBlock<char>(static_cast<std::size_t>(size));
    WideCharToMultiByte(codePage, 0, text, -1, block.get(), size, nullptr, nullptr);
    return block;
}

void AddCodePages() {
    const auto keep = [](const auto& text) { DoNotOptimize(text); };
    const Least one{1};
    Compare(
        "CStringWFromAnsi, ASCII", one, [=] { keep(CStringWFromAnsi(narrowText)); }, "MultiByteToWideChar",
        [=] { keep(Widened(CP_ACP, narrowText)); });
    Compare(
        "CStringWFromAnsi, an accent", one, [=] { keep(CStringWFromAnsi(accentedText)); },
        "MultiByteToWideChar", [=] { keep(Widened(CP_ACP, accentedText)); });
    Compare(
        "CStringAFromWide", one, [=] { keep(CStringAFromWide(wideText)); }, "WideCharToMultiByte",
        [=] { keep(Narrowed(CP_ACP, wideText)); });
    static const StdWString wide = wideText;
    static const std::string utf8 = narrowText;
    Compare(
        "Utf8FromWString", one, [=] { keep(Utf8FromWString(wide)); }, "WideCharToMultiByte",
        [=] { keep(Narrowed(CP_UTF8, wideText)); });
    Compare(
        "WStringFromUtf8", one, [=] { keep(WStringFromUtf8(utf8)); }, "MultiByteToWideChar",
        [=] { keep(Widened(CP_UTF8, narrowText)); });
}

// ---- Formatted texts and numbers ---------------------------------------------------------------------------

template <typename... Arguments>
std::array<char, 256> Printed(const char* format, Arguments... arguments) {
    std::array<char, 256> text;
    std::snprintf(text.data(), text.size(), format, arguments...);
    return text;
}

Block<WCHAR> GroupedByHand(std::int64_t value) {
    WCHAR digits[32];
    WCHAR* const end = digits + std::size(digits);
    WCHAR* first = end;
    auto rest = static_cast<std::uint64_t>(value < 0 ? -value : value);
    for (int count = 0; rest != 0 || count == 0; ++count, rest /= 10) {
        if (count != 0 && count % 3 == 0) *--first = ',';
        *--first = static_cast<WCHAR>('0' + rest % 10);
    }
    if (value < 0) *--first = '-';
    return CopyOf(first, static_cast<std::size_t>(end - first));
}

Block<WCHAR> LettersByHand(std::int32_t index) {
    WCHAR letters[8];
    WCHAR* const end = letters + std::size(letters);
    WCHAR* first = end;
    for (++index; index > 0; index = (index - 1) / 26) *--first = static_cast<WCHAR>('A' + (index - 1) % 26);
    return CopyOf(first, static_cast<std::size_t>(end - first));
}

void AddFormats() {
    static const char plant[] = "plant";
    static constexpr int number = 42;
    static constexpr double share = 0.375;
    static constexpr std::int64_t large = -1234567890123;
    static constexpr std::int32_t column = 16383;
    const auto print = [] { return Printed("%d of %s: %g", number, plant, share); };
    Compare(
        "CStringAFormat", {1}, [] { DoNotOptimize(CStringAFormat("%d of %s: %g", number, plant, share)); },
        "snprintf",
        [=] {
            const auto text = print();
            DoNotOptimize(CopyOf(text.data(), std::strlen(text.data())));
        });
    Compare(
        "StdStringFormat", {1}, [] { DoNotOptimize(StdStringFormat("%d of %s: %g", number, plant, share)); },
        "snprintf",
        [=] {
            const auto text = print();
            DoNotOptimize(std::string(text.data()));
        });
    Compare(
        "CStringWFormat", {1},
        [] { DoNotOptimize(CStringWFormat(TEXT("%d of %S: %g"), number, plant, share)); },
        "snprintf and MultiByteToWideChar", [=] { DoNotOptimize(Widened(CP_ACP, print().data())); });
    Compare(
        "CStringWFromDouble", {1}, [] { DoNotOptimize(CStringWFromDouble(share, 15, '.')); },
        "snprintf and MultiByteToWideChar",
        [=] { DoNotOptimize(Widened(CP_ACP, Printed("%.15g", share).data())); });
    Compare(
        "CStringWFromInt64Grouped", {1}, [] { DoNotOptimize(CStringWFromInt64Grouped(Unknown(large))); },
        "by hand", [] { DoNotOptimize(GroupedByHand(Unknown(large))); });
    Compare(
        "ColumnLettersFromIndex", {1}, [] { DoNotOptimize(ColumnLettersFromIndex(Unknown(column))); },
        "by hand", [] { DoNotOptimize(LettersByHand(Unknown(column))); });
}

// ---- Tokens ------------------------------------------------------------------------------------------------

const WCHAR tenTokens[] = TEXT("Quarterly,result,of the,northern,plants,in,thousands,of,crates,each");

// Ten tokens one by one, each in a block of its own; the delimiters are a set, which the caller chooses.
template <typename Take>
std::size_t TokensByHand(Take take) {
    const std::basic_string_view<WCHAR> text(tenTokens, std::size(tenTokens) - 1);
    const std::basic_string_view<WCHAR> delimiters(Unknown(static_cast<const WCHAR*>(TEXT(","))));
    std::size_t count = 0;
    for (std::size_t end, at = text.find_first_not_of(delimiters); at != text.npos;
         at = text.find_first_not_of(delimiters, end)) {
        end = std::min(text.find_first_of(delimiters, at), text.size());
        take(text.substr(at, end - at));
        ++count;
    }
    return count;
}
Block<WCHAR> CopyOf(std::basic_string_view<WCHAR> text) {
    return CopyOf(text.data(), text.size());
}

void AddTokens() {
    static const CStringW text = tenTokens;
    static const CStringW comma = TEXT(",");
    Compare(
        "TokenizeQuotedW, ten tokens", {10},
        [] {
            for (int position = 0;;) {
                const CStringW token = TokenizeQuotedW(text, comma, position);
                if (position < 0) break;
                DoNotOptimize(token);
            }
        },
        "std::basic_string_view", [] { TokensByHand([](auto token) { DoNotOptimize(CopyOf(token)); }); });
    Compare(
        "SplitCStringW, ten tokens", {11}, [] { DoNotOptimize(SplitCStringW(text, comma, false)); },
        "std::basic_string_view",
        [] {
            const std::size_t count = TokensByHand([](auto) {});
            std::vector<Block<WCHAR>> tokens;
            tokens.reserve(count);
            TokensByHand([&](auto token) { tokens.push_back(CopyOf(token)); });
            DoNotOptimize(tokens);
        });
    Compare(
        "AbbreviatedW", {1}, [] { DoNotOptimize(AbbreviatedW(text, 10, 10)); }, "std::basic_string",
        [] {
            static const StdWString standard = tenTokens;
            StdWString shortened;
            shortened.reserve(23);
            shortened.append(standard, 0, 10).append(TEXT("...")).append(standard, standard.size() - 10, 10);
            DoNotOptimize(shortened);
        });
}

// ---- Automation --------------------------------------------------------------------------------------------

struct Strings {
    std::vector<CStringW> texts{10, CStringW(wideText)};
    SAFEARRAY* array = VbArrayFromVectorCStringW(texts, false, 1);
    BSTR bstr = SysAllocString(wideText);
    BSTR slot = nullptr;
    SAFEARRAY* doubles = VbArrayFromVectorDouble(std::vector<double>(10, 1.5), 1);
};

// An array of the kind that Visual Basic's ReDim makes: descriptor and data by themselves.
SAFEARRAY* ArrayByHand(ULONG count, ULONG elementSize, USHORT features) {
    SAFEARRAY* array = nullptr;
    SafeArrayAllocDescriptor(1, &array);
    array->rgsabound[0] = {count, 1};
    array->cbElements = elementSize;
    array->fFeatures = static_cast<USHORT>(array->fFeatures | features);
    SafeArrayAllocData(array);
    return array;
}
void DestroyByHand(SAFEARRAY* array) {
    SafeArrayDestroyData(array);
    SafeArrayDestroyDescriptor(array);
}

void AddAutomation() {
    static Strings strings;
    static const std::vector<double> values(10, 1.5);
    Compare(
        "CStringWFromBstr", {1}, [] { DoNotOptimize(CStringWFromBstr(strings.bstr, false)); }, "by hand",
        [] { DoNotOptimize(CopyOf<WCHAR>(strings.bstr, SysStringLen(strings.bstr))); });
    Compare(
        "MakeBstr", {0, 1}, [] { SysFreeString(MakeBstr(wideText)); }, "SysAllocString",
        [] { SysFreeString(SysAllocString(wideText)); });
    Compare(
        "AssignBstrW", {0, 1}, [] { AssignBstrW(strings.slot, false, wideText); }, "SysAllocString",
        [] {
            SysFreeString(strings.slot);
            strings.slot = SysAllocString(wideText);
        });
    Compare(
        "element of an array of strings", {1},
        [] { DoNotOptimize(CStringWFromBstrArray(strings.array, false, 7)); }, "SafeArrayGetElement",
        [] {
            LONG index = 8;
            BSTR element = nullptr;
            SafeArrayGetElement(strings.array, &index, &element);
            DoNotOptimize(CopyOf<WCHAR>(element, SysStringLen(element)));
            SysFreeString(element);
        });
    Compare(
        "VbArrayFromVectorDouble, ten", {0, 2},
        [] {
            SAFEARRAY* array = VbArrayFromVectorDouble(values, 1);
            DestroyVbArray(&array);
        },
        "SafeArrayAllocData",
        [] {
            SAFEARRAY* const array = ArrayByHand(static_cast<ULONG>(values.size()), sizeof(double), 0);
            SafeArrayLock(array);
            std::memcpy(array->pvData, values.data(), values.size() * sizeof(double));
            SafeArrayUnlock(array);
            DestroyByHand(array);
        });
    Compare(
        "VectorDoubleFromVbArray, ten", {1}, [] { DoNotOptimize(VectorDoubleFromVbArray(strings.doubles)); },
        "SafeArrayAccessData",
        [] {
            void* data = nullptr;
            SafeArrayAccessData(strings.doubles, &data);
            const auto* const first = static_cast<const double*>(data);
            DoNotOptimize(std::vector<double>(first, first + strings.doubles->rgsabound[0].cElements));
            SafeArrayUnaccessData(strings.doubles);
        });
    Compare(
        "VbArrayFromVectorCStringW, ten", {0, 12},
        [] {
            SAFEARRAY* array = VbArrayFromVectorCStringW(strings.texts, false, 1);
            DestroyVbArray(&array);
        },
        "SafeArrayAllocData",
        [] {
            SAFEARRAY* const array = ArrayByHand(10, sizeof(BSTR), FADF_BSTR);
            SafeArrayLock(array);
            auto* slot = static_cast<BSTR*>(array->pvData);
            for (const CStringW& text : strings.texts) *slot++ = SysAllocString(text.GetString());
            SafeArrayUnlock(array);
            DestroyByHand(array);
        });
}

const bool registered = (AddCodePages(), AddFormats(), AddTokens(), AddAutomation(), true);

}  // namespace
