#!/usr/bin/env python3
"""Trains the small network of this example and writes its weights.

    train.py iris.csv > irisnetwork.inc

Four inputs, six hidden units with tanh, three outputs with softmax. Two rows of three are learned from, every
third one is held out. The same input gives the same output to the byte, on any machine: the script uses the four
operations of arithmetic, which IEEE 754 fixes to the last bit, an exponential function of its own, which no
mathematical library replaces, and random numbers that Python promises to keep. Weights have six decimal places.
"""
import csv
import math
import random
import sys

HIDDEN = 6
EPOCHS = 150
DECAY = 0.003
HELD_OUT = 3  # every third row


def exponential(x):
    """e to the power of x, within two units in the last place for |x| <= 700."""
    halvings = math.floor(x * 1.4426950408889634 + 0.5)
    rest = (x - halvings * 0.693147180369123816490) - halvings * 1.90821492927058770002e-10
    total = 1.0
    for n in range(14, 0, -1):
        total = 1.0 + rest / n * total
    return math.ldexp(total, halvings)


def hyperbolic_tangent(x):
    if abs(x) > 20.0:
        return math.copysign(1.0, x)
    return 1.0 - 2.0 / (exponential(2.0 * x) + 1.0)


def softmax(scores):
    highest = max(scores)
    powers = [exponential(score - highest) for score in scores]
    total = 0.0
    for power in powers:
        total += power
    return [power / total for power in powers]


def weighted(weights, values):
    """The sum of weights[i] * values[i] and of the bias, the last weight."""
    total = weights[-1]
    for weight, value in zip(weights, values):
        total += weight * value
    return total


def read(name):
    with open(name, newline="", encoding="utf-8") as file:
        rows = list(csv.reader(file))[1:]
    categories = sorted({row[-1] for row in rows})
    return [([float(field) for field in row[:-1]], categories.index(row[-1])) for row in rows], categories


def scaling(samples):
    """Mean and standard deviation of each input, of six decimal places."""
    means, deviations = [], []
    for column in zip(*(inputs for inputs, _ in samples)):
        mean = round(sum_of(column) / len(column), 6)
        variance = sum_of([(value - mean) * (value - mean) for value in column]) / len(column)
        means.append(mean)
        deviations.append(round(math.sqrt(variance), 6))
    return means, deviations


def sum_of(values):
    total = 0.0
    for value in values:
        total += value
    return total


def gradients(samples, hidden, output):
    """Of the mean cross-entropy and the weights' decay, by the chain rule."""
    d_hidden = [[DECAY * weight for weight in row[:-1]] + [0.0] for row in hidden]
    d_output = [[DECAY * weight for weight in row[:-1]] + [0.0] for row in output]
    share = 1.0 / len(samples)
    for inputs, category in samples:
        units = [hyperbolic_tangent(weighted(row, inputs)) for row in hidden]
        errors = softmax([weighted(row, units) for row in output])
        errors[category] -= 1.0
        for row, error in zip(d_output, errors):
            for i, unit in enumerate(units):
                row[i] += share * error * unit
            row[-1] += share * error
        for j, row in enumerate(d_hidden):
            back = 0.0
            for weights, error in zip(output, errors):
                back += weights[j] * error
            back *= share * (1.0 - units[j] * units[j])
            for i, value in enumerate(inputs):
                row[i] += back * value
            row[-1] += back
    return d_hidden + d_output


def train(samples, inputs, outputs):
    """Resilient backpropagation (Riedmiller and Braun, 1993): each weight has a step of its own, which grows
    while the gradient keeps its sign and shrinks when that changes."""
    chance = random.Random(1936)
    draw = lambda count: [chance.random() - 0.5 for _ in range(count)]
    hidden = [draw(inputs + 1) for _ in range(HIDDEN)]
    output = [draw(HIDDEN + 1) for _ in range(outputs)]
    rows = hidden + output
    steps = [[0.1] * len(row) for row in rows]
    before = [[0.0] * len(row) for row in rows]
    for _ in range(EPOCHS):
        for row, step, old, new in zip(rows, steps, before, gradients(samples, hidden, output)):
            for i, slope in enumerate(new):
                agreement = slope * old[i]
                if agreement > 0.0:
                    step[i] = min(step[i] * 1.2, 5.0)
                elif agreement < 0.0:
                    step[i] = max(step[i] * 0.5, 1e-6)
                    slope = 0.0
                if slope != 0.0:
                    row[i] -= math.copysign(step[i], slope)
                old[i] = slope
    return hidden, output


def main():
    samples, categories = read(sys.argv[1])
    learned = [sample for row, sample in enumerate(samples, 1) if row % HELD_OUT != 0]
    means, deviations = scaling(learned)
    scaled = [([(v - m) / d for v, m, d in zip(inputs, means, deviations)], category) for inputs, category in learned]
    hidden, output = train(scaled, len(means), len(categories))

    def numbers(name, rows):
        print(f"constexpr double {name}[] = {{")
        for row in rows:
            print("    " + " ".join(f"{value:.6f}," for value in row))
        print("};")

    print("// Written by examples/iris/train.py; not edited by hand.")
    print("constexpr std::string_view kIrisCategories[] = {" + ", ".join(f'"{name}"' for name in categories) + "};")
    numbers("kIrisMeans", [means])
    numbers("kIrisDeviations", [deviations])
    print("// One line a hidden unit: a weight for each input, then the bias.")
    numbers("kIrisHidden", hidden)
    print("// One line a category: a weight for each hidden unit, then the bias.")
    numbers("kIrisOutput", output)


if __name__ == "__main__":
    main()
