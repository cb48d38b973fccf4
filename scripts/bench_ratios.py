#!/usr/bin/env python3
"""Prints the ratios of a Google Benchmark result file.

Benchmarks are named CASE/WHO; the one whose WHO is "ours" is compared with every other WHO of its CASE.
"times as fast" above 1 means that ours is the faster. Medians over the repetitions are compared.
"""
import json
import sys
from collections import defaultdict
from statistics import median

SCALE = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def cases_from(path):
    """{case: {who: median nanoseconds}} in the order of the file."""
    times = defaultdict(lambda: defaultdict(list))
    with open(path, encoding="utf-8") as file:
        for run in json.load(file)["benchmarks"]:
            if run.get("run_type") == "aggregate" or run.get("error_occurred"):
                continue
            parts = [part for part in run["run_name"].split("/") if ":" not in part and part != "manual_time"]
            key = "real_time" if "manual_time" in run["run_name"] else "cpu_time"
            times["/".join(parts[:-1])][parts[-1]].append(run[key] * SCALE[run["time_unit"]])
    return {case: {who: median(values) for who, values in runs.items()} for case, runs in times.items()}


def shown(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def main(paths):
    for path in paths:
        for case, runs in cases_from(path).items():
            ours = runs.get("ours")
            if ours is None:
                print(f"  {case}: " + ", ".join(f"{who} {shown(time)}" for who, time in runs.items()))
                continue
            rivals = [f"{who} {shown(time)} (ours {time / ours:.2f} times as fast)"
                      for who, time in runs.items() if who != "ours"]
            print(f"  {case}: ours {shown(ours)}" + "".join("; " + rival for rival in rivals))


if __name__ == "__main__":
    main(sys.argv[1:])
