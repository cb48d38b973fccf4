#include "excelhost/network.h"

#include <algorithm>
#include <cmath>

namespace excelhost {
namespace {

#include "irisnetwork.inc"

// e to the power of x, within two units in the last place. The runtime libraries of our builds differ in the
// last bits of theirs; this one uses the four operations and a change of the exponent, which IEEE 754 fixes.
double Exponential(double x) noexcept {
    constexpr double farthest = 700;
    constexpr double log2e = 1.4426950408889634;
    constexpr double ln2High = 0.693147180369123816490;
    constexpr double ln2Low = 1.90821492927058770002e-10;
    constexpr int terms = 14;
    x = std::clamp(x, -farthest, farthest);
    const double halvings = std::floor(x * log2e + 0.5);
    const double rest = (x - halvings * ln2High) - halvings * ln2Low;
    double sum = 1;
    for (int n = terms; n > 0; --n) sum = 1 + rest / n * sum;
    return std::ldexp(sum, static_cast<int>(halvings));
}

double HyperbolicTangent(double x) noexcept {
    constexpr double flat = 20;
    if (std::fabs(x) > flat) return std::copysign(1.0, x);
    return 1 - 2 / (Exponential(2 * x) + 1);
}

// For each row of weights the weighted sum of the values and the row's bias.
std::vector<double> Layer(std::span<const double> weights, std::span<const double> values) {
    std::vector<double> sums;
    for (; !weights.empty(); weights = weights.subspan(values.size() + 1)) {
        double sum = weights[values.size()];
        for (std::size_t i = 0; i < values.size(); ++i) sum += weights[i] * values[i];
        sums.push_back(sum);
    }
    return sums;
}

}  // namespace

const Network kIrisNetwork = {"iris", kIrisMeans, kIrisDeviations, kIrisHidden, kIrisOutput, kIrisCategories};

std::vector<double> Probabilities(const Network& network, std::span<const double> inputs) {
    std::vector<double> scaled;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        scaled.push_back((inputs[i] - network.means[i]) / network.deviations[i]);
    }
    std::vector<double> units = Layer(network.hidden, scaled);
    for (double& unit : units) unit = HyperbolicTangent(unit);
    std::vector<double> powers = Layer(network.output, units);
    const double highest = *std::max_element(powers.begin(), powers.end());
    double total = 0;
    for (double& power : powers) total += power = Exponential(power - highest);
    for (double& power : powers) power /= total;
    return powers;
}

}  // namespace excelhost
