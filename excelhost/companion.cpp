#include "excelhost/companion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace excelhost {
namespace {

using Networks = std::vector<const Network*>;

// The arguments of one call, already read.
struct Question {
    Value inputs;
    Value network;
    Value category;
    Value fallback;
    Value low;
    Value high;
};

// An answer that is no prediction. Thrown and caught in this file alone.
struct NoPrediction {
    Value answer;
};
bool IsLeftOut(const Value& value) {
    return value.Is<Missing>() || value.Is<Empty>();
}

std::span<const Value> Cells(const Value& value) {
    if (const Array* array = value.If<Array>()) return array->cells;
    return {&value, 1};
}

std::optional<double> NumberIn(const Value& cell) {
    if (const double* number = cell.If<double>())
        return std::isfinite(*number) ? std::optional(*number) : std::nullopt;
    if (const int* whole = cell.If<int>()) return *whole;
    return std::nullopt;
}

Text NameIn(const Value& value) {
    if (value.Is<ErrorValue>()) throw NoPrediction{value};
    const std::span<const Value> cells = Cells(value);
    const Text* name = cells.size() == 1 ? cells.front().If<Text>() : nullptr;
    return name != nullptr ? *name : Text();
}

const Network& FindNetwork(const Networks& networks, const Value& given) {
    const Text name = NameIn(given);
    for (const Network* network : networks) {
        if (SameName(Wide(network->name), name)) return *network;
    }
    throw NoPrediction{ErrorValue{xlerrValue}};
}

std::size_t FindCategory(const Network& network, const Value& given) {
    const Text name = NameIn(given);
    for (std::size_t i = 0; i < network.categories.size(); ++i) {
        if (SameName(Wide(network.categories[i]), name)) return i;
    }
    throw NoPrediction{ErrorValue{xlerrNA}};
}

// A bound for each input; `none` where there is none.
std::vector<double> Bounds(const Value& given, std::size_t inputs, double none) {
    std::vector<double> bounds(inputs, none);
    if (IsLeftOut(given)) return bounds;
    const std::span<const Value> cells = Cells(given);
    if (cells.size() != inputs)
        throw NoPrediction{given.Is<ErrorValue>() ? given : Value(ErrorValue{xlerrValue})};
    for (std::size_t i = 0; i < inputs; ++i) {
        if (cells[i].Is<ErrorValue>()) throw NoPrediction{cells[i]};
        if (IsLeftOut(cells[i])) continue;
        const auto bound = NumberIn(cells[i]);
        if (!bound) throw NoPrediction{ErrorValue{xlerrValue}};
        bounds[i] = *bound;
    }
    return bounds;
}

std::vector<double> Inputs(const Question& question, const Network& network) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::span<const Value> cells = Cells(question.inputs);
    if (cells.size() != network.Inputs()) throw NoPrediction{ErrorValue{xlerrValue}};
    const std::vector<double> low = Bounds(question.low, cells.size(), -infinity);
    const std::vector<double> high = Bounds(question.high, cells.size(), infinity);
    std::vector<double> inputs;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (low[i] > high[i]) throw NoPrediction{ErrorValue{xlerrNum}};
        const auto input = NumberIn(cells[i]);
        if (!input)
            throw NoPrediction{IsLeftOut(question.fallback) ? Value(ErrorValue{xlerrNA}) : question.fallback};
        inputs.push_back(std::clamp(*input, low[i], high[i]));
    }
    return inputs;
}

struct Prediction {
    const Network& network;
    std::vector<double> probabilities;

    [[nodiscard]] std::size_t Likeliest() const {
        return static_cast<std::size_t>(std::max_element(probabilities.begin(), probabilities.end()) -
                                        probabilities.begin());
    }
};

Prediction Predict(const Networks& networks, const Question& question) {
    const Network& network = FindNetwork(networks, question.network);
    return {network, Probabilities(network, Inputs(question, network))};
}

Value NameOfPrediction(const Networks& networks, const Question& question) {
    const Prediction prediction = Predict(networks, question);
    return Wide(prediction.network.categories[prediction.Likeliest()]);
}

Value ProbabilityOfPrediction(const Networks& networks, const Question& question) {
    const Prediction prediction = Predict(networks, question);
    return prediction.probabilities[prediction.Likeliest()];
}

Value ProbabilityOfCategory(const Networks& networks, const Question& question) {
    const std::size_t category = FindCategory(FindNetwork(networks, question.network), question.category);
    return Predict(networks, question).probabilities[category];
}

Question QuestionFrom(const Host& host, std::span<const XLOPER12* const> arguments, bool hasCategory) {
    if (arguments.size() != (hasCategory ? 6U : 5U)) throw NoPrediction{ErrorValue{xlerrValue}};
    auto next = arguments.begin();
    const auto read = [&] { return host.Dereference(ValueFrom(**next++)); };
    Question question;
    question.inputs = read();
    question.network = read();
    if (hasCategory) question.category = read();
    question.fallback = read();
    question.low = read();
    question.high = read();
    return question;
}

}  // namespace

void OpenCompanion(Host& host, TextView workbook, std::span<const Network* const> networks) {
    const auto open = [&](TextView name, Value (*answer)(const Networks&, const Question&),
                          bool hasCategory) {
        host.SetFunction(workbook, name,
                         [&host, known = Networks(networks.begin(), networks.end()), answer,
                          hasCategory](std::span<const XLOPER12* const> arguments) -> Value {
                             try {
                                 return answer(known, QuestionFrom(host, arguments, hasCategory));
                             } catch (const NoPrediction& none) {
                                 return none.answer;
                             }
                         });
    };
    open(TEXT("NetOutputPredictionVBA"), NameOfPrediction, false);
    open(TEXT("NetOutputProbabilityOfPredictionVBA"), ProbabilityOfPrediction, false);
    open(TEXT("NetOutputProbabilityOfCategoryVBA"), ProbabilityOfCategory, true);
}

}  // namespace excelhost
