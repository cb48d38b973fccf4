// The real add-in in a process that has no Excel to offer: nothing works, and nothing breaks.
#include "addinfile.h"
#include "support/home.h"

namespace {

TEST(AddInAlone, GivesValueErrorsAndLeavesQuietly) {
    const support::RuntimeFolder folder;
    const AddInFile addIn;
    addIn.Open();
    addIn.Export<decltype(InitializeXlaInformationW)>("InitializeXlaInformationW")(0, 0, 0, nullptr, 0,
                                                                                   nullptr, 0);
    for (int call = 0; call < 3; ++call) {
        const XLOPER12* const result = addIn.Predict();
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(result->xltype, xltypeErr);
        EXPECT_EQ(result->val.err, xlerrValue);
        EXPECT_EQ(result->val.returnCode, xlretFailed);
    }
    EXPECT_EQ(addIn.Export<decltype(xlAutoAdd)>("xlAutoAdd")(), 1);
    EXPECT_EQ(addIn.Export<decltype(xlAutoRemove)>("xlAutoRemove")(), 1);
    addIn.Export<decltype(xlAutoFree)>("xlAutoFree")(nullptr);
    addIn.Close();
    EXPECT_EQ(addIn.Predict()->val.err, xlerrValue) << "closed, too";
}

}  // namespace
