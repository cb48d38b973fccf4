// How the cost of an operation grows with what it is given: from a thousand elements to a million. What is made
// goes untimed. The names are growth of KIND/OPERATION/ELEMENTS.
#include "automation/automation.h"
#include "excelhost/host.h"
#include "excelhost/sheet.h"
#include "excelvalues/xxloper.h"
#include "platform/platform.h"
#include "text/text.h"

#include <benchmark/benchmark.h>

#include <io.h>

#include <memory>
#include <string>
#include <vector>

namespace {

// `prepare` gives what makes one result of so many elements.
template <typename Prepare>
void Add(const std::string& name, Prepare prepare) {
    auto* const added =
        benchmark::RegisterBenchmark(("growth of " + name).c_str(), [=](benchmark::State& state) {
            auto make = prepare(static_cast<std::size_t>(state.range(0)));
            for (auto _ : state) {
                auto made = make();
                benchmark::DoNotOptimize(made);
                state.PauseTiming();
                made = decltype(made)();
                state.ResumeTiming();
            }
        });
    added->Unit(benchmark::kMillisecond);
    for (const int elements : {1'000, 10'000, 100'000, 1'000'000}) added->Arg(elements);
}

// As many digits a number wherever it stands.
std::vector<double> Numbers(std::size_t count) {
    std::vector<double> numbers(count);
    for (std::size_t i = 0; i < count; ++i) numbers[i] = 1.37 + static_cast<double>(i % 1000) * 0.01;
    return numbers;
}

std::vector<CStringW> Texts(std::size_t count) {
    std::vector<CStringW> texts(count);
    for (std::size_t i = 0; i < count; ++i) texts[i] = CStringWFormat(TEXT("Batch %d"), static_cast<int>(i));
    return texts;
}

struct Destroy {
    void operator()(SAFEARRAY* array) const { DestroyVbArray(&array); }
};
using ArrayPtr = std::unique_ptr<SAFEARRAY, Destroy>;

void AddMakers() {
    Add("makers/XXloperFromDoubles", [](std::size_t count) {
        return [count, numbers = Numbers(count)] {
            return XXloperFromDoubles(static_cast<RW>(count), 1, numbers);
        };
    });
    Add("makers/XXloperFromCells, texts", [](std::size_t count) {
        std::vector<XXloperPtr> cells;
        for (const CStringW& text : Texts(count)) cells.push_back(XXloperFromString(text.GetString()));
        return [count, cells] { return XXloperFromCells(static_cast<RW>(count), 1, cells); };
    });
    Add("makers/XXloperCopy, numbers", [](std::size_t count) {
        const XXloperPtr array = XXloperFromDoubles(static_cast<RW>(count), 1, Numbers(count));
        return [array] { return XXloperCopy(*array); };
    });
}

void AddConversions() {
    Add("conversions/VbArrayFromVectorDouble", [](std::size_t count) {
        return [numbers = Numbers(count)] { return ArrayPtr(VbArrayFromVectorDouble(numbers, 1)); };
    });
    Add("conversions/MatrixFromVbArray", [](std::size_t count) {
        const Matrix matrix(count / 10, std::vector<double>(10, 1.5));
        const std::shared_ptr<SAFEARRAY> array(VbArrayFromMatrix(matrix, 1), Destroy());
        return [array] { return MatrixFromVbArray(array.get()); };
    });
    Add("conversions/VbArrayFromVectorCStringW", [](std::size_t count) {
        return [texts = Texts(count)] { return ArrayPtr(VbArrayFromVectorCStringW(texts, false, 1)); };
    });
    Add("conversions/VectorCStringWFromBstrArray", [](std::size_t count) {
        const std::shared_ptr<SAFEARRAY> array(VbArrayFromVectorCStringW(Texts(count), false, 1), Destroy());
        return [array] { return VectorCStringWFromBstrArray(array.get(), false); };
    });
    Add("conversions/CStringAFromVectorDouble", [](std::size_t count) {
        return [numbers = Numbers(count)] { return CStringAFromVectorDouble(numbers); };
    });
    Add("conversions/SplitCStringW", [](std::size_t count) {
        CStringW text;
        text.Preallocate(static_cast<int>(count) * 6);
        for (std::size_t i = 0; i < count; ++i) text += TEXT("token,");
        return [text] { return SplitCStringW(text, TEXT(","), false); };
    });
    Add("conversions/Utf8FromWString", [](std::size_t count) {
        return [text = StdWString(count, TEXT('x'))] { return Utf8FromWString(text); };
    });
}

// A file that goes with its last user.
struct Scratch {
    StdWString path = StdWString(TempDirectory().GetString()) + TEXT("kestrolumen growth.txt");
    ~Scratch() { _wremove(path.c_str()); }
};

void AddFiles() {
    const auto lines = [](std::size_t count) {
        std::vector<std::uint8_t> bytes;
        for (std::size_t i = 0; i < count; ++i) {
            const std::string line = "Batch " + std::to_string(i) + "\r\n";
            bytes.insert(bytes.end(), line.begin(), line.end());
        }
        return bytes;
    };
    Add("files/File::write, lines", [=](std::size_t count) {
        return [bytes = lines(count), scratch = std::make_shared<Scratch>()] {
            File(scratch->path, TEXT("wb")).write(bytes);
            return 0;
        };
    });
    const auto written = [=](std::size_t count) {
        auto scratch = std::make_shared<Scratch>();
        File(scratch->path, TEXT("wb")).write(lines(count));
        return scratch;
    };
    Add("files/File::get_lines", [=](std::size_t count) {
        return [scratch = written(count)] { return File(scratch->path, TEXT("rb")).get_lines(); };
    });
    Add("files/File::crc64, lines", [=](std::size_t count) {
        return [scratch = written(count)] { return File(scratch->path, TEXT("rb")).crc64(); };
    });
}

void AddHost() {
    Add("the simulated Excel/sheet read from CSV", [](std::size_t count) {
        std::string csv;
        for (std::size_t i = 0; i < count / 10; ++i) csv += "0,1.5,2,3,4.25,text,6,TRUE,8,9\n";
        return [csv] { return std::make_unique<excelhost::Sheet>(csv); };
    });
    Add("the simulated Excel/sheet written as CSV", [](std::size_t count) {
        std::string csv;
        for (std::size_t i = 0; i < count / 10; ++i) csv += "0,1.5,2,3,4.25,text,6,TRUE,8,9\n";
        return [sheet = std::make_shared<excelhost::Sheet>(csv)] { return sheet->Csv(); };
    });
    Add("the simulated Excel/sheet of formulas calculated", [](std::size_t count) {
        auto csv = std::make_shared<std::string>("1\n");
        for (std::size_t i = 1; i < count; ++i) *csv += "=A" + std::to_string(i) + "+1\n";
        auto host = std::make_shared<excelhost::Host>();
        return [csv, host] {
            excelhost::Sheet sheet(*csv);
            return sheet.Calculate(*host, 1, TEXT("[Book1.xlsx]Sheet1"));
        };
    });
}

const bool registered = (AddMakers(), AddConversions(), AddFiles(), AddHost(), true);

}  // namespace
