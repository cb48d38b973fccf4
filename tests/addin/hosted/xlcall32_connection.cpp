// A module XLCall32 in the process. The executable exports MdCallBack12 too, so that a mistaken preference
// shows.
#include "addinfile.h"
#include "connection.h"

#include "excelhost/host.h"

#include <atomic>

namespace {

std::atomic<int> entries = 0;

int PASCAL CallBack(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) {
    ++entries;
    return excelhost::Host::Current()->CallBack(function, count, operands, result);
}

void SetEntryPoint(EXCEL12PROC entryPoint) {
    static const HMODULE library = LoadLibraryW(TEXT("XLCall32.dll"));
    ASSERT_NE(library, nullptr);
    const FARPROC set = GetProcAddress(library, "SetExcel12EntryPt");
    ASSERT_NE(set, nullptr);
    reinterpret_cast<void(PASCAL*)(EXCEL12PROC)>(reinterpret_cast<void*>(set))(entryPoint);
}

// A module that knows no entry point leaves the executable's export.
TEST(EntryPointModule, WithoutAnEntryPointLeavesTheExecutables) {
    SetEntryPoint(nullptr);
    entries = 0;
    excelhost::Host host;
    const AddInFile addIn;
    addIn.Open();
    EXPECT_EQ(addIn.Predict()->xltype, xltypeErr);
    addIn.Close();
    EXPECT_FALSE(host.Trace().empty());
    EXPECT_EQ(entries, 0);
}

}  // namespace

void OfferExcel() {
    SetEntryPoint(&CallBack);
    entries = 0;
}

int EntriesByThisWay() {
    return entries;
}
