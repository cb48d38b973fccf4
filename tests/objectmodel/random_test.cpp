// Random operations on a host that fails at random: whatever happens, no reference is lost or given back
// twice.
#include "operations.h"

#include <random>

namespace world {
namespace {

TEST(References, SurviveTenThousandOperationsWithFailures) {
    constexpr int operationCount = 10000;
    constexpr int operationsInAWorld = 50;
    const std::vector<AnyOperation> operations = AllOperations();
    std::mt19937 random(20240611);
    const auto oneIn = [&](unsigned chances) { return random() % chances == 0; };
    const HRESULT results[] = {E_FAIL, E_OUTOFMEMORY, RPC_E_CALL_REJECTED, DISP_E_TYPEMISMATCH,
                               DISP_E_EXCEPTION};

    int failures = 0;
    for (int done = 0; done < operationCount; done += operationsInAWorld) {
        World world;
        world.server.recording = false;
        world.server.hasFormula2 = !oneIn(3);
        world.server.hasSpill = !oneIn(3);
        if (oneIn(2)) Formula2Available = HasSpillAvailable = -1;
        world.server.Interpose([&](const auto&) -> std::optional<Refusal> {
            if (!oneIn(8)) return std::nullopt;
            Refusal refusal = Refusal::Exception(TEXT("Not now."));
            refusal.result = results[random() % std::size(results)];
            refusal.deferred = oneIn(2);
            return refusal;
        });
        // Answers of another kind than expected, now and then.
        const DISPID asked[] = {118, 150, 170, 348, 238, 1582, 110};
        world.server.Answer("", asked[random() % std::size(asked)],
                            oneIn(2) ? Variant(TEXT("x")) : Variant::Adopt(nullptr), 3);
        for (int i = 0; i < operationsInAWorld; ++i) {
            const auto& operation = operations[random() % operations.size()];
            const std::string outcome = Outcome([&] {
                operation(world);
                return "";
            });
            if (!outcome.empty()) ++failures;
            ASSERT_EQ(world.Live(), "Application  1; ") << "after operation " << done + i << ": " << outcome;
        }
        ASSERT_TRUE(world.server.Faults().empty()) << world.server.Faults().front();
        world.application.reset();
        ASSERT_EQ(world.Live(), "");
    }
    EXPECT_GT(failures, operationCount / 20);
    EXPECT_LT(failures, operationCount / 2);
    SetErrorInfo(0, nullptr);
}

}  // namespace
}  // namespace world
