#!/usr/bin/env python3
"""Prints the calculated sheet of this example as an aligned table.

    show.py [--all] calculated.csv
"""
import csv
import sys

FIRST = 5  # flowers of each species without --all
HEADINGS = ["row", "sepal", "", "petal", "", "species", "part", "predicted", "probability", "setosa", "versicolor",
            "virginica", ""]


def number(text, places):
    try:
        return f"{float(text):.{places}f}"
    except ValueError:
        return text


def main():
    everything = "--all" in sys.argv[1:]
    name = [argument for argument in sys.argv[1:] if argument != "--all"][0]
    with open(name, newline="", encoding="utf-8") as file:
        _, *rows = csv.reader(file)
    samples, accuracy = rows[:-3], rows[-1]

    shown, seen = [], {}
    for line, row in enumerate(samples, 2):
        seen[row[4]] = seen.get(row[4], 0) + 1
        if everything or seen[row[4]] <= FIRST or row[11] != "1":
            measures = [number(field, 1) for field in row[:4]]
            probabilities = [number(field, 4) for field in row[7:11]]
            shown.append([str(line)] + measures + row[4:7] + probabilities + ["" if row[11] == "1" else "wrong"])

    table = [HEADINGS] + shown
    widths = [max(len(row[i]) for row in table) for i in range(len(HEADINGS))]
    numeric = {0, 1, 2, 3, 4, 8, 9, 10, 11}
    print("Lengths and widths are in centimetres; a network with six hidden units, trained on two flowers of three.")
    if not everything:
        print(f"The first {FIRST} of each species and every wrong answer; --all shows all {len(samples)}.")
    print()
    for i, row in enumerate(table):
        cells = [cell.rjust(width) if j in numeric else cell.ljust(width)
                 for j, (cell, width) in enumerate(zip(row, widths))]
        print("  ".join(cells).rstrip())
        if i == 0:
            print("  ".join("-" * width for width in widths).rstrip())
    print()
    right = sum(row[11] == "1" for row in samples)
    held = [row for row in samples if row[12] != ""]
    held_right = sum(row[12] == "1" for row in held)
    print(f"Right: {right} of {len(samples)}; by the sheet {float(accuracy[11]):.2%}. Of the flowers that the network")
    print(f"hasn't seen in training: {held_right} of {len(held)}; by the sheet {float(accuracy[12]):.2%}.")


if __name__ == "__main__":
    main()
