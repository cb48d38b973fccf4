#!/usr/bin/env python3
"""Opens reports in headless Chromium and clicks through them: report_test.py PROGRAM FAULTY.xll TYPES.xll."""
import re
import sys
import tempfile
import unittest

from selenium.common.exceptions import StaleElementReferenceException, TimeoutException
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

from browser import make_report, open_browser, set_dark

PROGRAM, FAULTY, TYPES = sys.argv[1:4]
NASTY = '</script><script>window.broken = 1</script><!--<b>"\\\u2028&amp;'


class ReportTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.browser = open_browser()
        cls.addClassCleanup(cls.browser.quit)

    def open(self, rows, add_in, *options):
        code, messages, report = make_report(PROGRAM, self.folder.name, rows, add_in, *options)
        self.browser.get(report.as_uri())
        self.assertEqual(self.browser.get_log("browser"), [], "what the console says")
        self.assertEqual(self.script("return performance.getEntriesByType('resource').length"), 0, "other files")
        return code, messages, report

    def script(self, text, *arguments):
        return self.browser.execute_script(text, *arguments)

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.find(selector).text

    def calls(self):
        """Name and result of each call in sight, in their order."""
        return self.script("""return [...document.querySelectorAll('#list .call')].map(
            row => [row.querySelector('b').textContent, row.querySelector('.result').textContent])""")

    def names(self):
        return [name for name, _ in self.calls()]

    def cell(self, row, column):
        return self.find(f'#grid .cell[data-row="{row}"][data-column="{column}"]')

    def assert_shows(self, read, expected):
        """The browser may still be at the last key or click when the next question comes."""
        try:
            WebDriverWait(self.browser, 30, ignored_exceptions=[StaleElementReferenceException]).until(
                lambda _: read() == expected)
        except TimeoutException:
            self.assertEqual(read(), expected)

    def assert_names(self, *expected):
        self.assert_shows(self.names, list(expected))

    def assert_text(self, selector, expected):
        self.assert_shows(lambda: self.text(selector), expected)

    def press(self, *keys):
        self.browser.switch_to.active_element.send_keys(*keys)

    def test_each_value_in_trouble_has_its_mark_and_leads_to_its_call(self):
        code, messages, _ = self.open([["1", "2"], ["=Leaks()", "=FreesTwice()"], ['=WritesText("abc")', "=A1+B1"]],
                                      FAULTY)
        self.assertEqual(code, 3)
        # The account on the page is the one that the program tells.
        for key, word in (("lent", "lent"), ("leaked", "leaked"), ("freedTwice", "freed twice"), ("allocated", "allocated")):
            told = re.search(r"\b" + word + r" (\d+)", messages)[1]
            self.assertEqual(self.text(f'.tile[data-key="{key}"] b'), told, word)
        findings = [line[len("excelhost: "):] for line in messages.splitlines() if "' of " in line or " of faulty.xll" in line]
        shown = [item.text for item in self.browser.find_elements(By.CSS_SELECTOR, "#findings li span")]
        self.assertEqual(sorted(shown), sorted(findings))
        # One click on a finding, and its call is told.
        for finding, mark in (("WritesText", "altered while lent"), ("FreesTwice", "freed twice"), ("Leaks", "leaked")):
            item = next(i for i in self.browser.find_elements(By.CSS_SELECTOR, "#findings li") if f"'{finding}'" in i.text)
            item.find_element(By.TAG_NAME, "button").click()
            self.assert_shows(lambda: mark in self.text("#details h3"), True)
            self.assert_shows(lambda: mark in self.text('#list .call[aria-selected="true"]'), True)
        self.assertEqual([self.cell(1, 0).get_attribute("class"), self.cell(2, 1).get_attribute("class")],
                         ["cell number computed called marked", "cell number computed"])

    def test_a_cell_shows_its_calls_and_a_call_its_cell(self):
        self.open([["1", "2"], ["=Leaks()", "=FreesTwice()"], ["=A1+B1", '=IF(TRUE,"yes")']], FAULTY)
        self.assertEqual([self.cell(2, 0).text, self.cell(2, 1).text], ["3", "yes"])
        self.cell(1, 1).click()
        self.assert_text("#cell-formula", "=FreesTwice()")
        self.assert_names("FreesTwice", "xlGetName", "xlFree", "xlFree")
        self.press(Keys.ARROW_LEFT, Keys.ENTER)
        self.assert_names("Leaks", "xlGetName")
        self.find("#chips .chip").click()
        self.assert_shows(lambda: " of " in self.text("#shown"), False)
        self.find("#list").send_keys(Keys.END, Keys.HOME, "n", Keys.ENTER)
        self.assert_text("#cell-name", "A2")

    def test_calls_are_filtered_by_function_mark_text_and_time_and_folded(self):
        self.open([["=Leaks()", "=FreesTwice()"]], FAULTY)
        everything = self.text("#shown")
        self.find("#function").send_keys("FreesTwice")
        self.assert_names("FreesTwice", "xlGetName", "xlFree", "xlFree")
        self.press(Keys.ESCAPE)
        self.assert_text("#shown", everything)
        self.find("#marked").click()
        self.assert_shows(lambda: [n for n in self.names() if n.startswith("xlG") or n == "xlFree"], ["xlGetName", "xlFree"])
        self.press(Keys.ESCAPE, "/")
        self.press("nothing like it")
        self.assert_names()
        self.press(Keys.ESCAPE)
        self.assert_text("#shown", everything)
        self.find("#fold").click()
        self.assert_names("xlAutoOpen", "Leaks", "FreesTwice", "xlAutoClose")
        # From the beginning to where the first call has just begun.
        self.script("""const share = parseFloat(document.querySelector('#list .lane span').style.left) / 100 + 0.003;
            const box = document.querySelector('.overview'), at = box.getBoundingClientRect();
            const send = (type, share) => box.dispatchEvent(new PointerEvent(type,
                { pointerId: 1, clientX: at.left + at.width * share, clientY: at.top + 5 }));
            box.setPointerCapture = () => {};
            send('pointerdown', 0); send('pointermove', share); send('pointerup', share);""")
        self.assert_names("xlAutoOpen")
        self.assert_text("#chips", "zoomed ✕")

    def test_no_text_of_a_sheet_or_an_add_in_becomes_a_part_of_the_page(self):
        self.open([[NASTY], [f'=TypeQ("{NASTY.replace(chr(34), chr(34) * 2)}")']], TYPES)
        self.assertIsNone(self.script("return window.broken ?? null"))
        self.assertEqual(self.script("return document.querySelector('#grid .cell').textContent"), NASTY)
        self.cell(1, 0).click()
        self.assert_shows(lambda: "window.broken = 1" in self.text("#details"), True)

    def test_a_program_that_an_add_in_ended_leaves_a_page_that_says_where(self):
        code, messages, report = self.open([["=Leaks()"], ["=CrashesAtOnce()"]], FAULTY)
        self.assertEqual(code, 4)
        self.assertEqual(self.text("#verdict"), "The add-in ended the program")
        self.assertIn(self.text("#findings li span"), messages)
        self.assertEqual(self.calls()[-1], ["CrashesAtOnce", "never returned"])
        self.assertEqual(self.text('.call[aria-selected="true"] b'), "CrashesAtOnce")
        # Cut anywhere, as by a full disk: what is there is shown.
        whole = report.read_bytes()
        report.write_bytes(whole[:whole.rindex(b'1,"CrashesAtOnce"') + 6])
        self.browser.get(report.as_uri())
        self.assertEqual(self.browser.get_log("browser"), [])
        self.find("#list").send_keys(Keys.END)
        self.assert_shows(lambda: self.names()[-2:], ["Leaks", "xlGetName"])
        self.open([["=Hangs()"]], FAULTY, "--timeout", "1")
        self.assertIn("the time is up in 'Hangs' of faulty.xll", self.text("#findings li span"))

    def test_a_hundred_thousand_calls_stay_small_and_few_are_in_the_document(self):
        columns = 10
        rows = [[f"=TypeB({row}.25,{column})" for column in range(columns)] for row in range(10_000)]
        code, _, report = self.open(rows, TYPES)
        self.assertEqual(code, 0)
        self.assertLess(report.stat().st_size, 5_000_000)
        self.assertRegex(self.text("#shown"), r"^100,\d\d\d calls")
        self.find("#list").send_keys(Keys.END)
        self.assert_shows(lambda: self.names()[-1:], ["xlAutoClose"])
        self.assertLess(self.script("return document.querySelectorAll('*').length"), 3000)

    def test_a_page_that_cannot_be_written_is_an_error_before_anything_is_played(self):
        for place in ("/dev/full", self.folder.name + "/none/report.html"):
            code, messages, _ = make_report(PROGRAM, self.folder.name, [["=Leaks()"]], FAULTY, "--report", place)
            self.assertEqual((code, messages), (1, f"excelhost: the report {place} can't be written\n"))

    def test_both_schemes_are_readable(self):
        """The least contrast of any text in sight is that of WCAG's level AA."""
        self.open([["1", "pear"], ["=Leaks()", "=NA()"]], FAULTY)
        self.cell(1, 0).click()
        for dark in (False, True):
            set_dark(self.browser, dark)
            worst = self.script(CONTRAST)
            self.assertGreaterEqual(worst[0], 4.5, f"{'dark' if dark else 'light'}: {worst}")
        set_dark(self.browser, False)


CONTRAST = """
const channel = c => (c /= 255) <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4;
const light = rgb => 0.2126 * channel(rgb[0]) + 0.7152 * channel(rgb[1]) + 0.0722 * channel(rgb[2]);
const parse = text => text.match(/[\\d.]+/g).map(Number);
const ground = node => {
    for (; node; node = node.parentElement) {
        const colour = parse(getComputedStyle(node).backgroundColor);
        if (colour.length < 4 || colour[3] === 1) return colour;
    }
    return [255, 255, 255];
};
let worst = [99];
for (const node of document.querySelectorAll('body *')) {
    const own = [...node.childNodes].some(child => child.nodeType === 3 && child.textContent.trim() !== '');
    if (!own || node.matches('option, script') || node.offsetParent === null || node.closest('.context')) continue;
    const [a, b] = [light(parse(getComputedStyle(node).color)), light(ground(node))];
    const contrast = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
    if (contrast < worst[0]) worst = [contrast, node.className || node.tagName, node.textContent.slice(0, 30)];
}
return worst;
"""

if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
