#!/usr/bin/python3
"""The size of a report and the time until it is open in headless Chromium, for 1,000 and 100,000 calls.

    bench/report_open.py        from the native build; five openings each, the median
"""
import statistics
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/excelhost/report"))
from browser import make_report, open_browser  # noqa: E402

BUILD = ROOT / "build/native"
COLUMNS = 10
READY = "return performance.getEntriesByType('navigation')[0].domContentLoadedEventEnd"


def main():
    browser = open_browser()
    with tempfile.TemporaryDirectory() as folder:
        for calls in (1_000, 100_000):
            rows = [[f"=TypeB({row}.25,{column})" for column in range(COLUMNS)] for row in range(calls // COLUMNS)]
            _, _, report = make_report(BUILD / "addin/excelhost", folder, rows, BUILD / "tests/addins/types.xll")
            times = []
            for _ in range(5):
                browser.get(report.as_uri())
                times.append(browser.execute_script(READY))
            print(f"{calls:7,} calls: {report.stat().st_size / 1e6:.2f} MB, open after {statistics.median(times):.0f} ms")
    browser.quit()


if __name__ == "__main__":
    main()
