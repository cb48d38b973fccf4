#!/usr/bin/python3
"""Takes the picture of a report for docs/testing-your-addin.md, from the native build: scripts/report_picture.py [OUTPUT.png]."""
import csv
import sys
import tempfile
from pathlib import Path

from selenium.webdriver.common.by import By

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/excelhost/report"))
from browser import make_report, open_browser  # noqa: E402

BUILD = ROOT / "build/native"
ADD_IN = BUILD / "tests/addins/prices.xll"


def main():
    output = sys.argv[1] if len(sys.argv) > 1 else str(ROOT / "docs/testing-your-addin.png")
    with open(ROOT / "examples/testing-your-addin/prices.csv", encoding="utf-8") as file:
        rows = list(csv.reader(file))
    with tempfile.TemporaryDirectory() as folder:
        _, _, report = make_report(BUILD / "addin/excelhost", folder, rows, ADD_IN, name="prices")
        # Where the add-in lies on this machine is no matter of the picture.
        text = report.read_text(encoding="utf-8").replace(str(ADD_IN), "/home/me/prices.xll")
        report.write_text(text, encoding="utf-8")
        browser = open_browser(1280, 960)
        browser.get(report.as_uri())
        leak = [item for item in browser.find_elements(By.CSS_SELECTOR, "#findings li") if "never came back" in item.text]
        leak[0].find_element(By.TAG_NAME, "button").click()
        browser.save_screenshot(output)
        browser.quit()


if __name__ == "__main__":
    main()
