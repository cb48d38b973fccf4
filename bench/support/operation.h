// One operation, as callers have it: the time that it takes, and how often it asks the heap for memory.
#pragma once

#include "support/heap.h"

#include <benchmark/benchmark.h>

#include <windows.h>
#include <oleauto.h>

#include <string>

namespace bench {

// The least blocks of memory that an operation can ask for.
struct Least {
    int blocks = 0;           // of its result, on the heap of malloc
    int automation = 0;       // of its result, on automation's own heap
    const char* reason = "";  // why more are made, where they are
};

inline bool AutomationIsCounted() {
    static const bool counted = HeapUseOf([] { SysFreeString(SysAllocString(TEXT("text"))); }).calls != 0;
    return counted;
}

template <typename Operation>
[[nodiscard]] double HeapCallsOf(Operation operation) {
    operation();  // makes what is kept from then on
    return static_cast<double>(HeapUseOf(operation).calls);
}

// Measures what makes and releases its result.
template <typename Operation>
void Measure(benchmark::State& state, Operation operation) {
    for (auto _ : state) operation();
    state.counters["heap_calls"] = HeapCallsOf(operation);
}

template <typename Operation>
void Measure(benchmark::State& state, const Least& least, Operation operation) {
    Measure(state, operation);
    state.counters["least_heap_calls"] = least.blocks + (AutomationIsCounted() ? least.automation : 0);
    state.SetLabel(least.reason);
}

// A case: ours beside what one would write by hand.
template <typename Ours, typename Rival>
void Compare(const std::string& name, const Least& least, Ours ours, const char* rivalName, Rival rival) {
    benchmark::RegisterBenchmark((name + "/ours").c_str(),
                                 [=](benchmark::State& state) { Measure(state, least, ours); });
    benchmark::RegisterBenchmark((name + "/" + rivalName).c_str(),
                                 [=](benchmark::State& state) { Measure(state, rival); });
}

}  // namespace bench
