// Attaching, opening and closing, and the store of results between the two.
#include "addintest.h"
#include "errors/vex.h"
#include "support/allocations.h"
#include "support/folder.h"

#include <comdef.h>

#include <array>
#include <atomic>
#include <barrier>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace {

StdWString Joined(const CStringW& a, const CStringW& b) {
    return StdWString(a.GetString()) + b.GetString();
}

TEST(Attach, NotesTheFactsOfAFileWithAVersion) {
    const HMODULE library = LoadLibraryW(TEXT("kestrolumen.xll"));
    ASSERT_NE(library, nullptr);
    AddInModule = {};
    AttachModule(library);
    EXPECT_EQ(ModuleHandle, library);
    EXPECT_EQ(AddInModule.productMajorVersion, 8);
    EXPECT_EQ(AddInModule.fileVersionText, CStringW(TEXT("8.2.1.4")));
    EXPECT_EQ(AddInModule.fileName, CStringW(TEXT("kestrolumen.xll")));
    EXPECT_EQ(AddInModule.baseName, CStringW(TEXT("kestrolumen")));
    EXPECT_EQ(AddInModule.fullPath, GetModulePath(library));
    EXPECT_EQ(AddInModule.fullPath, Joined(AddInModule.directory, AddInModule.fileName).c_str());
    EXPECT_EQ(AddInModule.temporaryDirectory, TempDirectory());
    FreeLibrary(library);
}

// A copy of the add-in whose product has another version than the file.
TEST(Attach, NotesTheMajorVersionOfTheProduct) {
    const support::Folder folder;
    std::ifstream in(support::ProgramFolder() / "kestrolumen.xll", std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    const std::string heading("\xBD\x04\xEF\xFE\0\0\1\0", 8);  // of a VS_FIXEDFILEINFO
    std::size_t place = bytes.find(heading);
    ASSERT_NE(place, bytes.npos);
    // The resource stands in a build without optimizing twice.
    for (; place != bytes.npos; place = bytes.find(heading, place + 1))
        bytes.at(place + 18) = 77;  // the high word of dwProductVersionMS
    folder.Write("copy.xll", bytes);
    const HMODULE library = LoadLibraryW((folder / TEXT("copy.xll")).c_str());
    ASSERT_NE(library, nullptr);
    AttachModule(library);
    EXPECT_EQ(AddInModule.productMajorVersion, 77);
    EXPECT_EQ(AddInModule.fileVersionText, CStringW(TEXT("8.2.1.4")));
    FreeLibrary(library);
}

TEST(Attach, NotesTheFactsOfAFileWithoutAVersionForThatReasonAlone) {
    AddInModule = {};
    for (const DWORD reason :
         {DWORD{DLL_PROCESS_DETACH}, DWORD{DLL_THREAD_ATTACH}, DWORD{DLL_THREAD_DETACH}}) {
        EXPECT_EQ(DllMain(GetModuleHandleW(nullptr), reason, nullptr), TRUE);
        EXPECT_TRUE(AddInModule.fullPath.IsEmpty()) << reason;
    }
    ASSERT_EQ(DllMain(GetModuleHandleW(nullptr), DLL_PROCESS_ATTACH, nullptr), TRUE);
    EXPECT_EQ(ModuleHandle, GetModuleHandleW(nullptr));
    EXPECT_EQ(AddInModule.productMajorVersion, 0xFFFF);
    EXPECT_TRUE(AddInModule.fileVersionText.IsEmpty());
    EXPECT_EQ(AddInModule.fullPath, GetModulePath(nullptr));
}

int PASCAL AnotherCallBack(int, int, LPXLOPER12*, LPXLOPER12) {
    return xlretAbort;
}

// XLCall32 comes first if it is there and knows an entry point, and Excel is looked for once.
TEST(Attach, FindsTheCallbackOfTheExecutableOrOfXLCall32) {
    const EXCEL12PROC executables = std::exchange(Excel12EntryPoint, nullptr);
    LocateExcel12Entry();
    excelhost::Host host;
    Excel12(xlEnableXLMsgs, nullptr, 0);
    EXPECT_EQ(host.TracedFunctions(), std::vector<int>{xlEnableXLMsgs});

    const HMODULE library = LoadLibraryW(TEXT("XLCall32.dll"));
    ASSERT_NE(library, nullptr);
    const auto set = reinterpret_cast<void(PASCAL*)(EXCEL12PROC)>(
        reinterpret_cast<void*>(GetProcAddress(library, "SetExcel12EntryPt")));
    for (const EXCEL12PROC given : {EXCEL12PROC{&AnotherCallBack}, EXCEL12PROC{nullptr}}) {
        set(given);
        LocateExcel12Entry();
        EXPECT_EQ(Excel12(xlEnableXLMsgs, nullptr, 0), xlretSuccess) << "found already";
        Excel12EntryPoint = nullptr;
        LocateExcel12Entry();
        EXPECT_EQ(Excel12(xlEnableXLMsgs, nullptr, 0), given != nullptr ? xlretAbort : xlretSuccess);
        Excel12EntryPoint = executables;
    }
    FreeLibrary(library);
}

TEST(Attach, SucceedsWithoutMemory) {
    const auto attach = [] {
        AddInModule = {};
        Excel12EntryPoint = nullptr;
        EXPECT_EQ(DllMain(GetModuleHandleW(nullptr), DLL_PROCESS_ATTACH, nullptr), TRUE);
    };
    std::size_t faults = 0;
    EXPECT_EQ(support::BlocksLeftBy([&] { faults = support::FailEachAllocation(attach, [] {}); }), 0);
    EXPECT_GT(faults, 0u);
    EXPECT_NE(Excel12EntryPoint, nullptr);
    EXPECT_FALSE(AddInModule.fileName.IsEmpty());
}

TEST(Lifecycle, EntriesGiveOneWhateverCameBefore) {
    EXPECT_EQ(xlAutoClose(), 1);  // no store
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(xlAutoOpen(), 1);
        const ThreadResultStore* const store = OpenedThreadResultStore();
        ASSERT_NE(store, nullptr);
        EXPECT_EQ(xlAutoOpen(), 1);
        EXPECT_EQ(OpenedThreadResultStore(), store) << "opening twice keeps the store";
        EXPECT_EQ(xlAutoAdd(), 1);
        EXPECT_EQ(xlAutoRemove(), 1);
        xlAutoFree(nullptr);
        EXPECT_EQ(xlAutoClose(), 1);
        EXPECT_EQ(OpenedThreadResultStore(), nullptr);
    }
}

TEST(Lifecycle, OpeningWithoutMemoryOrIndexMakesNoStore) {
    {
        const support::AllocationFault fault(1);
        EXPECT_EQ(xlAutoOpen(), 1);
    }
    EXPECT_EQ(OpenedThreadResultStore(), nullptr);
    std::vector<DWORD> indexes;
    for (DWORD index = TlsAlloc(); index != TLS_OUT_OF_INDEXES; index = TlsAlloc()) indexes.push_back(index);
    const std::int64_t before = support::LiveBlocks();
    EXPECT_EQ(xlAutoOpen(), 1);
    EXPECT_EQ(OpenedThreadResultStore(), nullptr);
    EXPECT_EQ(support::LiveBlocks(), before);
    for (const DWORD index : indexes) TlsFree(index);
}

TEST(Lifecycle, OpeningGivesZeroOnAVexExceptionAndOnNoOther) {
    {
        const support::AllocationFault fault(1, [] { throw VexParameterError("test", 1, TEXT("text")); });
        EXPECT_EQ(xlAutoOpen(), 0);
    }
    EXPECT_EQ(OpenedThreadResultStore(), nullptr);
    const support::AllocationFault fault(1, [] { throw 7; });
    EXPECT_EQ(WhatLeaves([] { xlAutoOpen(); })->kind, FailureKind::Unknown);
}

TEST(Border, TellsWhatFailedAndCutsItsText) {
    const auto wide = [](const std::string& text) { return StdWString(text.begin(), text.end()); };
    const struct {
        void (*call)();
        std::uint32_t kind;
        std::uint32_t number;
        StdWString text;
    } failures[] = {
        {[] {
             AtBorder(
                 [] { throw VexKernelObjectError("test", VexCode::MutexCreate, TEXT("5"), TEXT("name")); });
         },
         1, 2619, TEXT("VexKernelObjectError in test, 5, name")},
        {[] { AtBorder([] { throw _com_error(E_ACCESSDENIED); }); }, 2, 0x80070005, TEXT("_com_error")},
        {[] { AtBorder([] { throw std::bad_alloc(); }); }, 3, 0, wide(std::bad_alloc().what())},
        {[] { AtBorder([] { throw std::runtime_error(std::string(300, 's')); }); }, 4, 0,
         StdWString(255, 's')},
        {[] { AtBorder([] { throw 7; }); }, 0, 0, TEXT("unknown exception")},
    };
    for (const auto& [call, kind, number, text] : failures) {
        const auto failure = WhatLeaves(call);
        ASSERT_TRUE(failure);
        EXPECT_EQ(static_cast<std::uint32_t>(failure->kind), kind);
        EXPECT_EQ(failure->number, number);
        EXPECT_EQ(StdWString(failure->text.data()), text);
    }
    EXPECT_EQ(ExportFailureCode, 0xE04B4C55u) << "a number that others' handlers know";
}

class ResultStore : public testing::Test {
  protected:
    ResultStore() { OpenThreadResultStore(); }
    ~ResultStore() override { CloseThreadResultStore(); }

    // Only a test changes the store from outside.
    static ThreadResultStore& Store() { return *const_cast<ThreadResultStore*>(OpenedThreadResultStore()); }

    // The value is refused: the cell shows #VALUE!, and nobody holds the value.
    void ExpectNotKept() {
        const XLOPER12* const record = StoreThreadResult(value);
        EXPECT_EQ(record->xltype, xltypeErr);
        EXPECT_EQ(record->val.err, xlerrValue);
        EXPECT_EQ(record->val.failure.returnCode, 0);
        EXPECT_EQ(value.use_count(), 1);
        EXPECT_TRUE(OpenedThreadResultStore() == nullptr || Store().slots.empty());
        EXPECT_TRUE(OpenedThreadResultStore() == nullptr || Store().spinFlag == 0);
    }

    const XXloperPtr value = XXloperFromInt(1);
};

// The new value stands in the slot when the old one goes: a policy that looks sees it.
TEST_F(ResultStore, EachValueReplacesTheOneBefore) {
    const XLOPER12* seen = nullptr;
    XLOPER12 record{};
    EXPECT_EQ(StoreThreadResult({static_cast<const XXloper*>(&record),
                                 [&seen](const XXloper*) { seen = Store().slots[0]->result.get(); }}),
              &record);
    EXPECT_EQ(seen, nullptr);
    EXPECT_EQ(StoreThreadResult(value), value.get());
    EXPECT_EQ(seen, value.get());
    const std::size_t before = support::Allocations();
    for (int i = 0; i < 100; ++i) EXPECT_EQ(StoreThreadResult(value), value.get());
    EXPECT_EQ(support::Allocations(), before) << "calls after the first allocate nothing";
    EXPECT_EQ(value.use_count(), 2);
    EXPECT_EQ(Store().slots.size(), 1u);
    EXPECT_EQ(StoreThreadResult({})->xltype, xltypeErr);
    EXPECT_EQ(value.use_count(), 1) << "an empty handle replaces it, too";
}

TEST_F(ResultStore, ThreadsStoreAtOnce) {
    for (const bool singleProcessor : {false, true}) {
        CloseThreadResultStore();
        OpenThreadResultStore();
        Store().singleProcessor = singleProcessor;
        std::barrier start(16);
        std::array<const XLOPER12*, 16> last{};
        std::vector<std::thread> threads;
        for (int i = 0; i < 16; ++i) {
            threads.emplace_back([&, i] {
                start.arrive_and_wait();
                for (int round = 0; round < 200; ++round)
                    last.at(static_cast<std::size_t>(i)) = StoreThreadResult(XXloperFromInt(i));
            });
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(Store().slots.size(), 16u) << "each thread has a slot of its own";
        Store().spinFlag = 1;  // held: another thread waits
        std::atomic<bool> begun = false;
        std::thread waiting([&] {
            begun = true;
            static_cast<void>(StoreThreadResult(value));
        });
        // Asked for, not waited for: MinGW's std::atomic can miss a notification.
        while (!begun) std::this_thread::yield();
        for (int i = 0; i < 1000; ++i) std::this_thread::yield();
        EXPECT_EQ(Store().slots.size(), 16u);
        Store().spinFlag = 0;
        waiting.join();
        EXPECT_EQ(Store().slots.size(), 17u);
        for (int i = 0; i < 16; ++i) EXPECT_EQ(last.at(static_cast<std::size_t>(i))->val.w, i);
    }
}

TEST_F(ResultStore, ValuesOutliveTheirThreadsAndGoInOrderAtClosing) {
    const DWORD index = Store().tlsIndex;
    std::vector<int> released;
    XLOPER12 records[3] = {};
    for (int i = 0; i < 3; ++i) {
        records[i].val.w = i;
        std::thread([&, i] {
            static_cast<void>(
                StoreThreadResult({static_cast<const XXloper*>(&records[i]),
                                   [&](const XXloper* each) { released.push_back(each->val.w); }}));
        }).join();
    }
    EXPECT_TRUE(released.empty());
    CloseThreadResultStore();
    EXPECT_EQ(released, (std::vector<int>{0, 1, 2}));
    OpenThreadResultStore();
    EXPECT_TRUE(Store().slots.empty());
    EXPECT_EQ(Store().tlsIndex, index) << "it was given back";
    EXPECT_EQ(TlsGetValue(index), nullptr);
}

TEST_F(ResultStore, WhatCantBeKeptIsNotReferredTo) {
    const std::int64_t before = support::LiveBlocks();
    static std::uint32_t flag;
    for (std::size_t nth = 1; nth <= 2; ++nth) {  // the slot, the list's storage
        const support::AllocationFault fault(nth, [] { flag = Store().spinFlag; });
        ExpectNotKept();
        EXPECT_EQ(flag, nth - 1) << "the list, and it alone, grows under the flag";
        EXPECT_TRUE(fault.Struck());
        EXPECT_EQ(support::LiveBlocks(), before);
    }
    TlsFree(std::exchange(Store().tlsIndex, TLS_OUT_OF_INDEXES));  // so that TlsSetValue refuses
    ExpectNotKept();
    CloseThreadResultStore();
    ExpectNotKept();
}

}  // namespace
