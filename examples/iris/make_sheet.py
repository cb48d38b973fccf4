#!/usr/bin/env python3
"""Writes the sheet of this example: the measurements, and formulas that ask the add-in about each flower.

    make_sheet.py iris.csv > sheet.csv
"""
import csv
import sys

HELD_OUT = 3  # train.py doesn't learn from every third row


def main():
    with open(sys.argv[1], newline="", encoding="utf-8") as file:
        headings, *samples = csv.reader(file)
    categories = sorted({sample[-1] for sample in samples})
    last = len(samples) + 1
    bounds = f"$A${last + 1}:$D${last + 1},$A${last + 2}:$D${last + 2}"

    sheet = csv.writer(sys.stdout, lineterminator="\n")
    sheet.writerow(headings + ["part", "predicted", "probability"] + categories + ["right", "right if held out"])
    for row, sample in enumerate(samples, 2):
        held_out = (row - 1) % HELD_OUT == 0
        question = f'$A{row}:$D{row},"iris"'
        sheet.writerow(
            sample
            + ["held out" if held_out else "learned"]
            + [f"=NetOutputPrediction({question},,{bounds})"]
            + [f"=NetOutputProbabilityOfPrediction({question},,{bounds})"]
            + [f"=NetOutputProbabilityOfCategory({question},{column}$1,,{bounds})" for column in "IJK"]
            + [f"=IF(EXACT(G{row},E{row}),1,0)", f"=L{row}" if held_out else ""]
        )
    nothing = [""] * 8
    sheet.writerow([f"=MIN({column}2:{column}{last})" for column in "ABCD"] + ["least"] + nothing)
    sheet.writerow([f"=MAX({column}2:{column}{last})" for column in "ABCD"] + ["greatest"] + nothing)
    sheet.writerow([""] * 10 + ["accuracy"] + [f"=AVERAGE({column}2:{column}{last})" for column in "LM"])


if __name__ == "__main__":
    main()
