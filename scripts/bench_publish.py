#!/usr/bin/python3
"""Puts the benchmarks' results into docs/performance.md: tables between its marks, charts beside it.

Reads bench-results/HOME/*.json, which scripts/bench.sh wrote. What a home has no results for stays as it is.
"""
import json
import re
from collections import defaultdict
from pathlib import Path
from statistics import median

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402

from bench_ratios import cases_from, heap_calls_from, runs_from, shown  # noqa: E402

HOMES = {"win32": "Windows, 32 bits, under Wine", "win64": "Windows, 64 bits, under Wine", "linux": "Linux, 64 bits"}
# The programs of every home; the others measure against rivals that Linux alone has.
OPERATIONS = ("bridge", "values", "conversions", "objectmodel")
# Ours beside the standard library's form.
STANDARD = "standard"
PAGE = Path("docs/performance.md")
CHARTS = Path("docs/performance")
GROWTH = "growth of "
plt.rcParams.update({"svg.hashsalt": "kestrolumen", "svg.fonttype": "none", "font.family": "sans-serif", "font.size": 9})


def results_of(home, names):
    paths = [Path("bench-results") / home / f"{name}.json" for name in names]
    return [path for path in paths if path.exists()]


def machine_line(home):
    facts = json.loads((Path("bench-results") / home / "machine.json").read_text(encoding="utf-8"))
    return (f"{HOMES[home]}: {facts['date']}, {facts['processor']}, {facts['processors']} processors, "
            f"{facts['compiler']}. Load of the machine: {facts['load']:.1f}.\n")


def rows_of(home, programs=OPERATIONS):
    """(case, ours, rival, rival's time, heap calls or None) for each rival of each case."""
    for path in results_of(home, programs):
        heap_calls = heap_calls_from(path)
        for case, runs in cases_from(path).items():
            for who, time in runs.items():
                if who != "ours" and "ours" in runs:
                    yield case, runs["ours"], who, time, heap_calls.get(case)


def table(home):
    lines = [machine_line(home), "| operation | ours | beside | its time | ours takes | heap calls | least |",
             "|---|--:|---|--:|--:|--:|--:|"]
    notes = {}
    for case, ours, who, time, heap in rows_of(home):
        made, least, reason = heap or ("", "", "")
        if reason:
            notes[case] = reason
        lines.append(f"| {case} | {shown(ours)} | {who} | {shown(time)} | {ours / time:.2f}× | {made} | {least} |")
    lines += [""] + [f"- {case}: {reason}." for case, reason in notes.items()]
    return "\n".join(lines)


def standard_table(home):
    lines = [machine_line(home), "| operation | ours | else | its time | ours is faster by |", "|---|--:|---|--:|--:|"]
    lines += [f"| {case} | {shown(ours)} | {who} | {shown(time)} | {time / ours:.2f}× |"
              for case, ours, who, time, _ in rows_of(home, [STANDARD])]
    return "\n".join(lines)


def growth_of(home):
    """{kind: {operation: [(elements, nanoseconds an element)]}}"""
    times = defaultdict(lambda: defaultdict(lambda: defaultdict(list)))
    for path in results_of(home, ["growth"]):
        for name, nanoseconds, _ in runs_from(path):
            kind, operation, elements = name.removeprefix(GROWTH).split("/")
            times[kind][operation][int(elements)].append(nanoseconds)
    return {kind: {operation: [(count, median(values)) for count, values in sorted(counts.items())]
                   for operation, counts in operations.items()} for kind, operations in times.items()}


def save(figure, name):
    CHARTS.mkdir(exist_ok=True)
    figure.savefig(CHARTS / name, metadata={"Date": None}, bbox_inches="tight")
    plt.close(figure)


def chart_growth():
    homes = {home: growth_of(home) for home in HOMES}
    homes = {home: kinds for home, kinds in homes.items() if kinds}
    for kind in next(iter(homes.values()), {}):
        figure, panels = plt.subplots(1, len(homes), figsize=(5.2 * len(homes), 3.8), squeeze=False, sharey=True)
        for panel, (home, kinds) in zip(panels[0], homes.items()):
            for operation, points in kinds.get(kind, {}).items():
                panel.plot([count for count, _ in points], [time / 1e6 for _, time in points], "o-", ms=3, label=operation)
            panel.set(xscale="log", yscale="log", title=f"{kind}: {HOMES[home]}", xlabel="elements", ylabel="milliseconds")
            panel.grid(True, which="major", alpha=0.3)
            panel.legend(fontsize=7)
        save(figure, f"growth-{kind.replace(' ', '-').lower()}.svg")


def chart_ratios(home):
    rows = [(f"{case} / {who}", ours / time) for case, ours, who, time, _ in rows_of(home)
            if not (case.startswith("worksheet call with") or "own share" in who)]
    figure, panel = plt.subplots(figsize=(8, 0.2 * len(rows) + 1))
    names, ratios = zip(*reversed(rows))
    panel.barh(names, ratios, color=["tab:blue" if ratio <= 1.1 else "tab:orange" for ratio in ratios])
    panel.axvline(1, color="black", lw=0.8)
    panel.set(title=HOMES[home], xlabel="time of ours in times of its rival's (less is better)")
    save(figure, f"ratios-{home}.svg")


def growth_table(home):
    lines = ["| operation | 10³ | 10⁴ | 10⁵ | 10⁶ | an element, at 10⁶ |", "|---|--:|--:|--:|--:|--:|"]
    for operations in growth_of(home).values():
        for operation, points in operations.items():
            cells = " | ".join(shown(time) for _, time in points)
            lines.append(f"| {operation} | {cells} | {shown(points[-1][1] / points[-1][0])} |")
    return "\n".join(lines)


def put(page, mark, text):
    """The page with `text` between the marks of that name."""
    pattern = re.compile(rf"(<!-- {re.escape(mark)} -->\n).*?(<!-- end -->)", re.DOTALL)
    if not pattern.search(page):
        raise SystemExit(f"bench_publish.py: {PAGE} has no mark '{mark}'")
    return pattern.sub(lambda found: found.group(1) + text + "\n" + found.group(2), page)


def main():
    page = PAGE.read_text(encoding="utf-8")
    for home in HOMES:
        if results_of(home, OPERATIONS):
            page = put(page, f"operations {home}", table(home))
            chart_ratios(home)
        if home == "win32" and results_of(home, [STANDARD]):
            page = put(page, f"standard {home}", standard_table(home))
        if results_of(home, ["growth"]):
            page = put(page, f"growth {home}", growth_table(home))
    chart_growth()
    PAGE.write_text(page, encoding="utf-8")


if __name__ == "__main__":
    main()
