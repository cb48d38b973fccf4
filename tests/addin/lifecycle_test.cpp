#include "addintest.h"
#include "errors/vex.h"
#include "support/allocations.h"

#include <cstring>
#include <utility>

namespace {

StdWString Joined(const CStringW& a, const CStringW& b) {
    return StdWString(a.GetString()) + b.GetString();
}

int PASCAL AnotherCallBack(int, int, LPXLOPER12*, LPXLOPER12) {
    return xlretAbort;
}

TEST(Attach, NotesTheFactsOfAFileWithAVersion) {
    const HMODULE library = LoadLibraryW(TEXT("kestrolumen.xll"));
    ASSERT_NE(library, nullptr);
    AddInModule = {};
    AttachModule(library);
    EXPECT_EQ(ModuleHandle, library);
    EXPECT_EQ(AddInModule.productMajorVersion, 8);
    EXPECT_EQ(AddInModule.fileVersionText, CStringW(TEXT("8.2.1.4")));
    EXPECT_EQ(AddInModule.fullPath, GetModulePath(library));
    EXPECT_EQ(AddInModule.fileName, CStringW(TEXT("kestrolumen.xll")));
    EXPECT_EQ(AddInModule.baseName, CStringW(TEXT("kestrolumen")));
    EXPECT_EQ(AddInModule.directory.Right(1), CStringW(TEXT("\\")));
    EXPECT_EQ(Joined(AddInModule.directory, AddInModule.fileName),
              StdWString(AddInModule.fullPath.GetString()));
    EXPECT_EQ(AddInModule.temporaryDirectory, TempDirectory());
    FreeLibrary(library);
}

TEST(Attach, NotesTheFactsOfAFileWithoutAVersion) {
    AddInModule = {};
    ASSERT_EQ(DllMain(GetModuleHandleW(nullptr), DLL_PROCESS_ATTACH, nullptr), TRUE);
    EXPECT_EQ(ModuleHandle, GetModuleHandleW(nullptr));
    EXPECT_EQ(AddInModule.productMajorVersion, 0xFFFF);
    EXPECT_TRUE(AddInModule.fileVersionText.IsEmpty());
    EXPECT_EQ(AddInModule.fullPath, GetModulePath(nullptr));
    EXPECT_EQ(Joined(AddInModule.directory, AddInModule.fileName),
              StdWString(AddInModule.fullPath.GetString()));
    EXPECT_FALSE(AddInModule.temporaryDirectory.IsEmpty());
}

TEST(Attach, FindsTheCallbackOfTheExecutableOnce) {
    Excel12EntryPoint = nullptr;
    LocateExcel12Entry();
    ASSERT_NE(Excel12EntryPoint, nullptr);
    excelhost::Host host;
    Excel12(xlEnableXLMsgs, nullptr, 0);
    EXPECT_EQ(host.TracedFunctions(), std::vector<int>{xlEnableXLMsgs});

    const EXCEL12PROC found = std::exchange(Excel12EntryPoint, &AnotherCallBack);
    LocateExcel12Entry();
    EXPECT_EQ(Excel12EntryPoint, &AnotherCallBack);
    Excel12EntryPoint = found;
}

TEST(Attach, OtherReasonsDoNothing) {
    const HMODULE before = ModuleHandle;
    int anything = 0;
    const auto module = reinterpret_cast<HINSTANCE>(&anything);
    for (const DWORD reason :
         {DWORD{DLL_PROCESS_DETACH}, DWORD{DLL_THREAD_ATTACH}, DWORD{DLL_THREAD_DETACH}, DWORD{4}}) {
        EXPECT_EQ(DllMain(module, reason, nullptr), TRUE);
        EXPECT_EQ(ModuleHandle, before);
    }
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
    attach();
    EXPECT_NE(Excel12EntryPoint, nullptr);
    EXPECT_FALSE(AddInModule.fileName.IsEmpty());
}

TEST(Lifecycle, EntriesGiveOneWhateverCameBefore) {
    EXPECT_EQ(xlAutoClose(), 1);  // no store
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(xlAutoOpen(), 1);
        const ThreadResultStore* const store = OpenedThreadResultStore();
        ASSERT_NE(store, nullptr);
        EXPECT_TRUE(store->slots.empty());
        EXPECT_EQ(xlAutoOpen(), 1);
        EXPECT_EQ(OpenedThreadResultStore(), store) << "opening twice keeps the store";
        EXPECT_EQ(xlAutoAdd(), 1);
        EXPECT_EQ(xlAutoRemove(), 1);
        EXPECT_EQ(xlAutoClose(), 1);
        EXPECT_EQ(OpenedThreadResultStore(), nullptr);
    }
}

TEST(Lifecycle, FreeIgnoresWhatItGets) {
    XLOPER12 record{};
    record.xltype = xltypeStr | xlbitDLLFree;
    XLOPER12 before = record;
    xlAutoFree(&record);
    xlAutoFree(nullptr);
    EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0);
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
    EXPECT_EQ(xlAutoClose(), 1);
}

TEST(Lifecycle, OpeningGivesZeroOnAVexExceptionAndOnNoOther) {
    {
        const support::AllocationFault fault(1, [] { throw VexParameterError("test", 1, TEXT("text")); });
        EXPECT_EQ(xlAutoOpen(), 0);
    }
    EXPECT_EQ(OpenedThreadResultStore(), nullptr);
    const support::AllocationFault fault(1, [] { throw 7; });
    EXPECT_THROW(xlAutoOpen(), int);
}

}  // namespace
