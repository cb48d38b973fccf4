// The companion workbook's functions and the network behind them.
#include "excelhost/companion.h"

#include <gmock/gmock.h>

#include <limits>

namespace excelhost {
namespace {

class CompanionTest : public ::testing::Test {
  protected:
    CompanionTest() {
        static constexpr const Network* networks[] = {&kIrisNetwork};
        OpenCompanion(host, TEXT("Kestrolumen.XLA"), networks);
    }

    Value Call(const WCHAR* function, const std::vector<Value>& arguments) {
        Blocks blocks;
        std::vector<XLOPER12> records = {RecordFrom(Text(TEXT("=Kestrolumen.XLA!")) + function, blocks)};
        for (const Value& argument : arguments) records.push_back(RecordFrom(argument, blocks));
        std::vector<LPXLOPER12> operands;
        for (XLOPER12& record : records) operands.push_back(&record);
        XLOPER12 result{};
        EXPECT_EQ(host.CallBack(xlUDF, static_cast<int>(operands.size()), operands.data(), &result),
                  xlretSuccess);
        Value value = ValueFrom(result);
        LPXLOPER12 given = &result;
        host.CallBack(xlFree, 1, &given, nullptr);
        return value;
    }
    Value Prediction(const std::vector<Value>& arguments) {
        return Call(TEXT("NetOutputPredictionVBA"), arguments);
    }

    static Value Row(std::vector<Value> cells) { return Array{1, cells.size(), cells}; }

    const Value setosa = Row({5.1, 3.5, 1.4, 0.2});
    const Value virginica = Array{4, 1, {6, 3.0, 6.0, 2.5}};
    const Value iris = Text(TEXT("Iris"));
    const Value none = Missing{};
    const ErrorValue bad{xlerrValue};
    Host host;
};

TEST_F(CompanionTest, AnswersTheThreeQuestions) {
    EXPECT_EQ(Prediction({setosa, iris, none, none, none}), Value(Text(TEXT("setosa"))));
    EXPECT_EQ(Prediction({virginica, iris, none, none, none}), Value(Text(TEXT("virginica"))))
        << "a column, with a whole number";
    const auto probabilities = Probabilities(kIrisNetwork, std::vector<double>{5.1, 3.5, 1.4, 0.2});
    EXPECT_EQ(Call(TEXT("NetOutputProbabilityOfPredictionVBA"), {setosa, iris, none, none, none}),
              Value(probabilities[0]));
    for (std::size_t k = 0; k < 3; ++k) {
        const Value category = Wide(kIrisNetwork.categories[k]);
        EXPECT_EQ(Call(TEXT("NetOutputProbabilityOfCategoryVBA"), {setosa, iris, category, none, none, none}),
                  Value(probabilities[k]));
    }
    host.AddSheet(1, TEXT("[B]S"), [&](const Area&) { return setosa; });
    EXPECT_EQ(Prediction({Area{{0, 0, 0, 3}}, iris, none, none, none}), Value(Text(TEXT("setosa"))));
    EXPECT_EQ(Prediction({Reference{1, {Area{{0, 0, 0, 3}}}}, iris, none, none, none}),
              Value(Text(TEXT("setosa"))));
}

TEST_F(CompanionTest, FallsBackWhenAnInputIsNoNumber) {
    const Value fallback = Text(TEXT("unknown"));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Value inputs[] = {Empty{}, Text(TEXT("5.1")), true, ErrorValue{xlerrDiv0}, nan};
    for (const Value& input : inputs) {
        const Value row = Row({input, 3.5, 1.4, 0.2});
        EXPECT_EQ(Prediction({row, iris, fallback, none, none}), fallback) << Describe(input);
        EXPECT_EQ(Prediction({row, iris, none, none, none}), Value(ErrorValue{xlerrNA})) << Describe(input);
    }
}

TEST_F(CompanionTest, AnswersWrongShapesAndNamesWithErrors) {
    const auto category = [&](const Value& name) {
        return Call(TEXT("NetOutputProbabilityOfCategoryVBA"), {setosa, iris, name, none, none, none});
    };
    EXPECT_EQ(category(Text(TEXT("rosa"))), Value(ErrorValue{xlerrNA}));
    EXPECT_EQ(category(ErrorValue{xlerrRef}), Value(ErrorValue{xlerrRef}));
    const Value errorBound = Row({1.0, ErrorValue{xlerrDiv0}, 1.0, 1.0});
    const std::pair<std::vector<Value>, ErrorValue> cases[] = {
        {{}, bad},
        {{setosa, iris, none, none}, bad},
        {{setosa, Text(TEXT("rosa")), none, none, none}, bad},
        {{setosa, ErrorValue{xlerrName}, none, none, none}, ErrorValue{xlerrName}},
        {{none, iris, none, none, none}, bad},
        {{Row({1.0, 2.0, 3.0}), iris, none, none, none}, bad},
        {{setosa, iris, none, none, Row({1.0, 2.0})}, bad},
        {{setosa, iris, none, none, errorBound}, ErrorValue{xlerrDiv0}},
    };
    for (const auto& [arguments, error] : cases) {
        EXPECT_EQ(Prediction(arguments), Value(error)) << arguments.size() << " arguments";
    }
    EXPECT_TRUE(host.GetAccount().Balanced());
}

}  // namespace
}  // namespace excelhost
