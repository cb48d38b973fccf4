#!/usr/bin/env python3
"""Prints the ratios of a Google Benchmark result file.

Benchmarks are named CASE/WHO; the one whose WHO is "ours" is compared with every other WHO of its CASE.
"times as fast" above 1 means that ours is the faster. Medians over the repetitions are compared. Growth is told
by "growth of KIND/OPERATION/ELEMENTS".
"""
import json
import re
import sys
from collections import defaultdict
from statistics import median

OPTIONS = re.compile(r"/(iterations|repeats|min_time|threads):[0-9.]+")
SCALE = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def runs_from(path):
    """The measured repetitions as (name without options, nanoseconds, entry), in the order of the file."""
    with open(path, encoding="utf-8") as file:
        for run in json.load(file)["benchmarks"]:
            if run.get("run_type") == "aggregate" or run.get("error_occurred"):
                continue
            yield OPTIONS.sub("", run["run_name"]), run["cpu_time"] * SCALE[run["time_unit"]], run


def cases_from(path):
    """{case: {who: median nanoseconds}} in the order of the file."""
    times = defaultdict(lambda: defaultdict(list))
    for name, nanoseconds, _ in runs_from(path):
        case, _, who = name.rpartition("/")
        times[case][who].append(nanoseconds)
    return {case: {who: median(values) for who, values in runs.items()} for case, runs in times.items()}


def heap_calls_from(path):
    """{case: (heap calls of ours, the least possible, why more are made)} of the cases that count them."""
    counted = {}
    for name, _, run in runs_from(path):
        if "least_heap_calls" in run:
            counted[name.rpartition("/")[0]] = (round(run["heap_calls"]), round(run["least_heap_calls"]),
                                                run.get("label", ""))
    return counted


def shown(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def main(paths):
    for path in paths:
        heap_calls = heap_calls_from(path)
        for case, runs in cases_from(path).items():
            ours = runs.get("ours")
            if ours is None:
                print(f"  {case}: " + ", ".join(f"{who} {shown(time)}" for who, time in runs.items()))
                continue
            rivals = [f"{who} {shown(time)} (ours {time / ours:.2f} times as fast)"
                      for who, time in runs.items() if who != "ours"]
            made, least, _ = heap_calls.get(case, (0, None, ""))
            heap = "" if least is None else f"; heap calls {made}, least {least}"
            print(f"  {case}: ours {shown(ours)}" + "".join("; " + rival for rival in rivals) + heap)


if __name__ == "__main__":
    main(sys.argv[1:])
