// Matrices and vectors to Visual Basic arrays and back.
//
// "memcpy" copies as many bytes into a block that it allocates, as a maker of an array must; "warm" copies
// them over and over between the same two blocks. "eigen" lays a contiguous row-major matrix out column by
// column, and back, which spares it the walk over separate rows.
//
// The counter "peak" is the most memory that was alive during a conversion over the size of its result; the
// program ends with a failure if one is above 1.1.

#include "support/heap.h"

#include "automation/automation.h"

#include <benchmark/benchmark.h>

#include <Eigen/Dense>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <numeric>
#include <string>

namespace {

using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using ColumnMajor = Eigen::MatrixXd;

bool tooMuchMemory = false;

// Runs `convert` once and sets the counter. `bytes` is the size of its result.
template <typename Convert>
void ReportPeak(benchmark::State& state, std::size_t bytes, Convert convert) {
    const double ratio = static_cast<double>(bench::HeapUseOf(convert).peak) / static_cast<double>(bytes);
    state.counters["peak"] = ratio;
    tooMuchMemory = tooMuchMemory || ratio > 1.1;
}

struct Shape {
    std::size_t rows;
    std::size_t columns;

    [[nodiscard]] std::size_t Bytes() const { return rows * columns * sizeof(double); }
    [[nodiscard]] std::string Name() const { return std::to_string(rows) + "x" + std::to_string(columns); }
};

Matrix MatrixOf(const Shape& shape) {
    Matrix matrix(shape.rows, std::vector<double>(shape.columns));
    double next = 0;
    for (auto& row : matrix) {
        for (double& value : row) value = next++;
    }
    return matrix;
}

RowMajor RowMajorOf(const Shape& shape) {
    RowMajor matrix(shape.rows, shape.columns);
    std::iota(matrix.data(), matrix.data() + matrix.size(), 0.0);
    return matrix;
}

struct Destroy {
    void operator()(SAFEARRAY* array) const { DestroyVbArray(&array); }
};
using Array = std::unique_ptr<SAFEARRAY, Destroy>;

struct Free {
    void operator()(void* block) const { std::free(block); }
};

void ToArrayOurs(benchmark::State& state, const Shape& shape) {
    const Matrix matrix = MatrixOf(shape);
    const auto convert = [&] { return Array(VbArrayFromMatrix(matrix, 1)); };
    ReportPeak(state, shape.Bytes(), convert);
    for (auto _ : state) benchmark::DoNotOptimize(convert()->pvData);
}

void ToArrayEigen(benchmark::State& state, const Shape& shape) {
    const RowMajor matrix = RowMajorOf(shape);
    for (auto _ : state) {
        const ColumnMajor columns = matrix;
        benchmark::DoNotOptimize(columns.data());
    }
}

void FromArrayOurs(benchmark::State& state, const Shape& shape) {
    const Array array(VbArrayFromMatrix(MatrixOf(shape), 1));
    const auto convert = [&] { return MatrixFromVbArray(array.get()); };
    // A row is a block of the heap by itself, in whole units of 16 bytes behind a head of 8.
    const std::size_t row = sizeof(Matrix::value_type) + (shape.columns * sizeof(double) + 8 + 15) / 16 * 16;
    ReportPeak(state, shape.rows * row, convert);
    for (auto _ : state) benchmark::DoNotOptimize(convert().data());
}

void FromArrayEigen(benchmark::State& state, const Shape& shape) {
    const ColumnMajor columns = RowMajorOf(shape);
    for (auto _ : state) {
        const RowMajor rows = columns;
        benchmark::DoNotOptimize(rows.data());
    }
}

void ToVectorOurs(benchmark::State& state, const Shape& shape) {
    const Array array(VbArrayFromVectorDouble(std::vector<double>(shape.rows * shape.columns, 1), 1));
    const auto convert = [&] { return VectorDoubleFromVbArray(array.get()); };
    ReportPeak(state, shape.Bytes(), convert);
    for (auto _ : state) benchmark::DoNotOptimize(convert().data());
}

void FromVectorOurs(benchmark::State& state, const Shape& shape) {
    const std::vector<double> values(shape.rows * shape.columns, 1);
    const auto convert = [&] { return Array(VbArrayFromVectorDouble(values, 1)); };
    ReportPeak(state, shape.Bytes(), convert);
    for (auto _ : state) benchmark::DoNotOptimize(convert()->pvData);
}

void Memcpy(benchmark::State& state, const Shape& shape) {
    const std::vector<char> source(shape.Bytes(), 1);
    for (auto _ : state) {
        const std::unique_ptr<void, Free> target(std::malloc(source.size()));
        std::memcpy(target.get(), source.data(), source.size());
        benchmark::DoNotOptimize(target.get());
    }
}

void MemcpyWarm(benchmark::State& state, const Shape& shape) {
    const std::vector<char> source(shape.Bytes(), 1);
    std::vector<char> target(shape.Bytes());
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), source.size());
        benchmark::ClobberMemory();
    }
}

// So many strings of some length, and what they hold as BSTRs.
void StringsOurs(benchmark::State& state) {
    const std::vector<CStringW> strings(10000, CStringW(TEXT("a string of some length")));
    const auto convert = [&] { return Array(VbArrayFromVectorCStringW(strings, false, 1)); };
    Array array;
    const bench::HeapUse use = bench::HeapUseOf([&] { array = convert(); });
    ReportPeak(state, static_cast<std::size_t>(use.kept), convert);
    for (auto _ : state) benchmark::DoNotOptimize(convert()->pvData);
}

void StringsByHand(benchmark::State& state) {
    const std::vector<CStringW> strings(10000, CStringW(TEXT("a string of some length")));
    SAFEARRAYBOUND bound{10000, 1};
    for (auto _ : state) {
        const Array array(SafeArrayCreate(VT_BSTR, 1, &bound));
        BSTR* next = static_cast<BSTR*>(array->pvData);
        for (const CStringW& text : strings) *next++ = SysAllocString(text);
        benchmark::DoNotOptimize(array->pvData);
    }
}

void Register() {
    using Run = void (*)(benchmark::State&, const Shape&);
    const auto add = [](const std::string& name, Run run, const Shape& shape) {
        benchmark::RegisterBenchmark(name.c_str(), [run, shape](benchmark::State& state) {
            run(state, shape);
        })->Unit(benchmark::kMicrosecond);
    };
    for (const Shape& shape : {Shape{1000, 1000}, {4000, 250}, {250, 4000}, {1, 1000000}, {30, 20}}) {
        const auto addAll = [&](const char* operation, Run ours, Run eigen) {
            const std::string stem = std::string(operation) + " " + shape.Name() + "/";
            add(stem + "ours", ours, shape);
            if (eigen != nullptr) add(stem + "eigen", eigen, shape);
            add(stem + "memcpy", Memcpy, shape);
            add(stem + "warm", MemcpyWarm, shape);
        };
        addAll("VbArrayFromMatrix", ToArrayOurs, ToArrayEigen);
        addAll("MatrixFromVbArray", FromArrayOurs, FromArrayEigen);
        if (shape.rows != 1) continue;
        addAll("VbArrayFromVectorDouble", FromVectorOurs, nullptr);
        addAll("VectorDoubleFromVbArray", ToVectorOurs, nullptr);
    }
    benchmark::RegisterBenchmark("VbArrayFromVectorCStringW 10000/ours", StringsOurs)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("VbArrayFromVectorCStringW 10000/byhand", StringsByHand)
        ->Unit(benchmark::kMicrosecond);
}

}  // namespace

int main(int argc, char** argv) {
    Register();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    if (tooMuchMemory) std::fprintf(stderr, "a conversion needed more memory than its result and a tenth\n");
    return tooMuchMemory ? 1 : 0;
}
