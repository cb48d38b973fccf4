// A small prediction network: inputs, one hidden layer with tanh, one output a category, softmax.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace excelhost {

struct Network {
    std::string_view name;
    std::span<const double> means;       // one an input; inputs are scaled by (input - mean) / deviation
    std::span<const double> deviations;  // one an input, none of them 0
    std::span<const double> hidden;      // for each hidden unit its weights and then its bias
    std::span<const double> output;      // for each category its weights and then its bias
    std::span<const std::string_view> categories;

    [[nodiscard]] std::size_t Inputs() const noexcept { return means.size(); }
    [[nodiscard]] std::size_t HiddenUnits() const noexcept { return hidden.size() / (Inputs() + 1); }
};

// The network of examples/iris: sepal length, sepal width, petal length and petal width in centimetres; the
// three species of Fisher's measurements (1936).
extern const Network kIrisNetwork;

// The probability of each category, in their order; the inputs are finite and as many as the network has. The
// result is the same to the last bit in every build.
[[nodiscard]] std::vector<double> Probabilities(const Network& network, std::span<const double> inputs);

}  // namespace excelhost
