"""Reports of excelhost, made by the program and opened in headless Chromium."""
import subprocess
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.service import Service


def make_report(program, folder, rows, add_in, *options, name="sheet"):
    """Runs the sheet of these rows; gives (exit code, its messages, the report's path)."""
    quoted = lambda field: '"' + field.replace('"', '""') + '"'
    sheet = Path(folder) / f"{name}.csv"
    sheet.write_text("".join(",".join(map(quoted, row)) + "\n" for row in rows), encoding="utf-8")
    report = Path(folder) / "report.html"
    report.unlink(missing_ok=True)
    result = subprocess.run([program, "run", str(sheet), "--addin", add_in, "--report", str(report), *options],
                            capture_output=True, timeout=300, check=False)
    return result.returncode, result.stderr.decode("utf-8", "replace"), report


def open_browser(width=1440, height=1000):
    options = webdriver.ChromeOptions()
    for argument in ("--headless=new", "--no-sandbox", "--hide-scrollbars", "--force-device-scale-factor=1",
                     f"--window-size={width},{height}"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def set_dark(browser, dark):
    scheme = {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}
    browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [scheme]})
