// The add-in's border on Windows: what leaves an export reaches a host written in C, and the add-in goes on, with no
// memory, no index of thread-local storage and no marker to be had.
#include "hosted.h"
#include "importedheap.h"
#include "leaving.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace {

using excelhost::ErrorValue;
using excelhost::Value;

// All indexes of the process, for a scope.
class NoThreadLocalIndex {
  public:
    NoThreadLocalIndex() {
        for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc())
            indexes_.push_back(index);
    }
    ~NoThreadLocalIndex() {
        for (const DWORD index : indexes_) TlsFree(index);
    }
    NoThreadLocalIndex(const NoThreadLocalIndex&) = delete;
    NoThreadLocalIndex& operator=(const NoThreadLocalIndex&) = delete;

  private:
    std::vector<DWORD> indexes_;
};

class Border : public HostedAddIn {
  protected:
    Border() {
        current = this;
        host.KeepTrace(false);
        host.SetFunction(TEXT("Kestrolumen.XLS"), TEXT("NetOutputPredictionVBA"),
                         [](auto) { return excelhost::Text(TEXT("answer")); });
    }

    static std::optional<ExportFailure> FailureOf(std::function<void()> call) {
        body = std::move(call);
        return WhatLeaves([] { body(); });
    }
    static std::optional<ExportFailure> FailureOfHandshake() {
        return FailureOf([] { current->ShakeHands(); });
    }
    void CallRecords() const {
        XLOPER12 missing{};
        missing.xltype = xltypeMissing;
        static_cast<void>(Export<decltype(NetOutputPrediction)>(addIn, "NetOutputPrediction")(
            &missing, &missing, &missing, &missing, &missing));
    }
    Value Answer() { return host.Call(TEXT("NetOutputPrediction"), {}); }

    static inline Border* current = nullptr;
    static inline std::function<void()> body;
};

// Something else has the marker's name.
class TakenName {
  public:
    TakenName()
        : event_(CreateEventW(nullptr, FALSE, FALSE,
                              TEXT("Local\\Kestrolumen is loaded mutex name 129342734_v8"))) {}
    ~TakenName() { CloseHandle(event_); }
    TakenName(const TakenName&) = delete;
    TakenName& operator=(const TakenName&) = delete;

  private:
    HANDLE event_;
};

TEST_F(Border, TellsTheCallerWhatFailed) {
    Load(&CallBack);
    for (int round = 0; round < 3; ++round) {
        const TakenName taken;
        const auto failure = FailureOfHandshake();
        ASSERT_TRUE(failure);
        EXPECT_EQ(failure->kind, FailureKind::Vex);
        EXPECT_EQ(failure->number, 2619u);
        EXPECT_STREQ(failure->text.data(), TEXT("VexKernelObjectError in Mutex::Mutex, 6, ")
                                               TEXT("Kestrolumen is loaded mutex name 129342734"));
        EXPECT_EQ(Answer(), Value(excelhost::Text(TEXT("answer")))) << "the functions are registered by then";
    }
    EXPECT_FALSE(FailureOfHandshake());
}

TEST_F(Border, EachAllocationOfEachEntryFailsOnce) {
    Load(&CallBack);
    {
        // What is made once is there: the thread's slot, and the unwinder's table.
        const TakenName taken;
        EXPECT_TRUE(FailureOfHandshake());
        CallRecords();
    }
    ImportedHeap heap(addIn.get());
    BSTR text = SysAllocString(TEXT("text"));
    const std::function<void()> entries[] = {
        [&] { CallRecords(); },
        [&] { ShakeHands(); },
        [&] {
            Export<decltype(InitializeXlaInformationVB)>(addIn, "InitializeXlaInformationVB")(
                0, 0, 0, &text, 0, &text, 0, &text);
        },
        [&] {
            Close();
            Open();
        },
        [&] { TakeLeave(); },
    };
    std::vector<std::size_t> faults;
    for (const auto& entry : entries) {
        faults.push_back(0);
        for (std::size_t nth = 1;; ++nth) {
            heap.FailNth(nth);
            const auto failure = FailureOf(entry);
            const bool struck = heap.Struck();
            heap.FailNth(0);
            EXPECT_TRUE(!failure || (struck && failure->kind == FailureKind::OutOfMemory));
            EXPECT_TRUE(host.MacroAlerts());
            if (!struck) break;
            ++faults.back();
            // Whatever failed, the next handshake and the next call go through.
            ShakeHands();
            EXPECT_EQ(Answer(), Value(excelhost::Text(TEXT("answer"))));
            const std::size_t live = heap.LiveBlocks();
            ShakeHands();
            Answer();
            EXPECT_EQ(heap.LiveBlocks(), live);
        }
    }
    SysFreeString(text);
    EXPECT_GE(faults[0], 2u);
    EXPECT_GE(faults[1], 5u);
    EXPECT_GT(faults[2], faults[1]);
    EXPECT_EQ(faults[3], 1u) << "the store's; closing needs no memory";
    EXPECT_EQ(faults[4], 0u);
    Close();
    EXPECT_TRUE(host.Registrations().empty());
    EXPECT_EQ(heap.LiveBlocks(), 0u) << "of those allocated since";
}

TEST_F(Border, LivesWithoutAThreadLocalIndex) {
    static_cast<void>(Answer());  // the host has its own by now
    {
        const NoThreadLocalIndex none;
        const TakenName taken;
        Load(&CallBack);
        EXPECT_TRUE(FailureOfHandshake());
        CallRecords();
        EXPECT_EQ(Answer(), Value(ErrorValue{xlerrValue}));
    }
    ShakeHands();
    EXPECT_EQ(Answer(), Value(excelhost::Text(TEXT("answer"))));
}

// Busy bytes of all heaps of the process.
std::size_t BusyBytes() {
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(64, heaps);
    std::size_t bytes = 0;
    for (DWORD i = 0; i < count && i < 64; ++i) {
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heaps[i], &entry) != FALSE) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
        }
    }
    return bytes;
}

// The simulated host keeps a little of each call; this one keeps nothing.
int PASCAL ForgetfulHost(int, int, LPXLOPER12*, LPXLOPER12 result) {
    if (result != nullptr) *result = XLOPER12{.val = {.num = 1.5}, .xltype = xltypeNum};
    return xlretSuccess;
}

// KESTROLUMEN_RELOADS: how often; the process takes some thousands.
TEST_F(Border, LoadsAndUnloadsLeaveNothing) {
    const auto round = [&] {
        Load(&ForgetfulHost);
        {
            const TakenName taken;
            EXPECT_TRUE(FailureOfHandshake());
        }
        ShakeHands();
        CallRecords();
        Close();
        addIn.reset();
    };
    for (int i = 0; i < 20; ++i) round();
    DWORD handles = 0, handlesAfter = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    const DWORD index = TlsAlloc();
    TlsFree(index);
    const std::size_t bytes = BusyBytes();
    const char* const wanted = std::getenv("KESTROLUMEN_RELOADS");
    const std::size_t rounds = wanted != nullptr ? std::stoul(wanted) : 200;
    for (std::size_t i = 0; i < rounds; ++i) round();
    GetProcessHandleCount(GetCurrentProcess(), &handlesAfter);
    EXPECT_EQ(handlesAfter, handles);
    const DWORD indexAfter = TlsAlloc();
    TlsFree(indexAfter);
    EXPECT_EQ(indexAfter, index);
    const std::size_t left = BusyBytes() - std::min(BusyBytes(), bytes);
    EXPECT_LT(left, 100 * rounds);
    RecordProperty("bytes_left", std::to_string(left));
}

}  // namespace
