#!/usr/bin/python3
"""reportTest.py VARMEX [FOLDER] : the page of an installation in a browser. Leaves pictures of it in the folder."""

import base64
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

import tinycss2
from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.wait import WebDriverWait

sys.path.insert(0, str(Path(__file__).resolve().parent / "support"))
from counting import TOP, check, equal, finish  # noqa: E402

VARMEX = os.path.abspath(sys.argv[1])
PICTURES = Path(sys.argv[2]) if len(sys.argv) > 2 else None
DEADLINE = 120
work = Path(tempfile.mkdtemp())


def run(root, *arguments):
    environment = dict(os.environ, VARMEX_FSROOT=str(root))
    return subprocess.run([VARMEX, *arguments], env=environment, capture_output=True, timeout=DEADLINE)


def report(root, name):
    page = work / f"{name}.html"
    written = run(root, "report", "-o", str(page))
    equal((written.returncode, written.stderr), (0, b""), f"writing the page {name}")
    return page


class Browser:
    def __init__(self):
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                         "--window-size=1440,1000", f"--user-data-dir={work}/profile"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))
        self.driver.set_page_load_timeout(DEADLINE)

    def open(self, page, place=""):
        self.driver.get("about:blank")
        self.driver.get(f"{page.as_uri()}{place}")

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def group(self, chassis, key):
        return self.one(f"[data-chassis='{chassis}'] [data-key='{key}']")

    def script(self, text, *arguments):
        return self.driver.execute_script(text, *arguments)

    def details(self):
        return self.one("#details").text

    def press(self, *keys):
        """One after the other; Shift holds for those behind it."""
        chain = ActionChains(self.driver)
        for key in keys:
            chain = chain.key_down(key) if key == Keys.SHIFT else chain.send_keys(key)
        (chain.key_up(Keys.SHIFT) if Keys.SHIFT in keys else chain).perform()

    def point(self, element):
        ActionChains(self.driver).move_to_element(element).perform()

    def click(self, element):
        ActionChains(self.driver).move_to_element(element).click().perform()

    def place(self):
        return self.script("return location.hash")

    def lit(self, kind):
        return sorted({e.get_attribute("data-key") for e in self.all(f"[data-key^='{kind} '].lit")},
                      key=lambda key: [int(n) for n in key.split()[1:]])

    def isQuiet(self, what):
        """Neither a failure of the script nor anything that the policy had to stop."""
        equal([entry["message"] for entry in self.driver.get_log("browser")], [], f"console of {what}")

    def print(self, name):
        answer = self.driver.execute_cdp_cmd("Page.printToPDF", {"preferCSSPageSize": True,
                                                                 "printBackground": True})
        pdf = work / f"{name}.pdf"
        pdf.write_bytes(base64.b64decode(answer["data"]))
        text = subprocess.run(["pdftotext", "-layout", pdf, "-"], capture_output=True, check=True)
        return text.stdout.decode().split("\f")[:-1]

    def picture(self, name, width=1440, height=1000, scheme="light"):
        if not PICTURES:
            return
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": scheme}]})
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
        self.driver.save_screenshot(str(PICTURES / f"{name}.png"))
        self.driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})


def testFiles():
    room = TOP / "tools/varmex/page"
    # Debian's modules also where another node is ahead on the PATH.
    lint = subprocess.run(["eslint", "--format", "unix", room / "page.js"], capture_output=True, text=True,
                          env=dict(os.environ, NODE_PATH="/usr/share/nodejs"))
    equal((lint.returncode, lint.stdout + lint.stderr), (0, ""), "page.js")
    check(len((room / "page.js").read_text().splitlines()) < 600, "length of the script")
    for sheet in (room / "page.css", TOP / "tools/varmex/picture/picture.css"):
        rules = tinycss2.parse_stylesheet(sheet.read_text(), skip_comments=True, skip_whitespace=True)
        while rules:
            rule = rules.pop()
            check(rule.type != "error", f"{sheet.name}:{rule.source_line}: {rule.type}")
            if rule.type == "at-rule" and rule.lower_at_keyword == "media":
                rules += tinycss2.parse_rule_list(rule.content, skip_comments=True, skip_whitespace=True)
            elif rule.type == "qualified-rule":
                for one in tinycss2.parse_declaration_list(rule.content, skip_comments=True,
                                                           skip_whitespace=True):
                    check(one.type == "declaration", f"{sheet.name}:{one.source_line}: {one.type}")


# What is typed, how many fit, and where Enter leads.
SEARCHES = [("dmm", 1, "#1/9"), ("tessmere rf", 3, "#1/3"), ("37:00.0", 1, "#2/5"), ("5.0.0", 1, "#1/2"),
            ("0a41f27c", 12, "#1/1"), ("PXI0::5-", 1, "#1/2"), ("gener 950", 1, "#1/12")]

# What is pointed at, what the details begin with, and the slots that are lit.
POINTED = [
    ("bus 2", "Chassis 1, trigger bus 2", [7, 8, 9, 10, 11, 12]),
    ("bridge 3", "Chassis 1, bridge 3", []),
    ("star 1 5", "Chassis 1, Star trigger 1", [5, 10]),
    ("star 1 10", "Chassis 1, Star trigger 1", [*range(2, 19)]),
    ("dstar 1 9", "Chassis 1, DStar trigger 1", [9, 10]),
    ("slot 17", "Slot 1/17", [10, 13, 14, 15, 16, 17, 18]),
]


def testSample(browser, page):
    browser.open(page)
    search = browser.one("#search")
    for text, count, place in SEARCHES:
        search.clear()
        search.send_keys(text)
        equal(browser.one("#said").text, f"{count} module{'s fit' if count > 1 else ' fits'}.", f"search {text}")
        search.send_keys(Keys.ENTER)
        equal(browser.place(), place, f"Enter after {text}")
    check("GENERATOR" in browser.details(), "details of what was found")
    search.clear()
    search.send_keys("nothing of it")
    equal(browser.one("#hits").text, "Nothing fits.", "search for nothing")
    browser.press(Keys.ESCAPE)

    for key, title, slots in POINTED:
        browser.point(browser.group(1, key))
        check(browser.details().split("\n", 1)[1].startswith(title), f"details of {key}: {browser.details()}")
        equal(browser.lit("slot"), [f"slot {slot}" for slot in slots], f"slots lit by {key}")
    browser.point(browser.group(1, "bridge 3"))
    equal(browser.lit("bus"), ["bus 2", "bus 3"], "buses lit by bridge 3")
    check("lines 0-5 each to the same, 6 to 6-7" in browser.details(), "lines of bridge 3")

    # Two slots: the lines between them, both ways; a third begins anew.
    for slot in (2, 17):
        browser.click(browser.group(1, f"slot {slot}"))
    browser.point(browser.one("h1"))
    between = browser.one("#between").text
    for sentence in ("From 1/2 (bus 1) to 1/17 (bus 3) by bridge 1, then 3: lines 0-7 each to 0-7.",
                     "From 1/17 (bus 3) to 1/2 (bus 1) by bridge 4, then 2: lines 0-6 each to 0-7."):
        check(sentence in between, f"{sentence}: {between}")
    equal(browser.lit("bridge"), [f"bridge {number}" for number in (1, 2, 3, 4)], "bridges on the ways")
    browser.picture("chosen")
    browser.picture("chosen-dark", scheme="dark")
    browser.click(browser.group(1, "slot 10"))
    browser.click(browser.group(1, "slot 9"))
    browser.point(browser.one("h1"))
    between = browser.one("#between").text
    check("Both are on trigger bus 2" in between and "Star trigger 1: 1/10 is the controller, 1/9 is line 7; this line joins the two." in between,
          f"lines to the controller: {between}")
    browser.click(browser.group(2, "slot 3"))
    equal((len(browser.all(".chosen")), browser.place()), (1, "#2/3"), "a third slot")
    browser.press(Keys.ESCAPE)
    equal((len(browser.all(".chosen")), browser.place()), (0, ""), "nothing chosen")
    browser.isQuiet("the sample")


# What is changed in the sample, the finding that this makes, and what of the picture it stands at.
FINDINGS = [("pxiesys.ini", '"7,8,9,', '"6,7,8,9,', "slot-on-two-buses", "bus-2 slot-6"),
            ("pxiesys.ini", '18"', '18,19"', "missing-section", "slot-19"),
            ("pxiesys.ini", "PXIeSystemTimingSlot", "PXIeSystemTimeSlot", "unknown-slot-type", "slot-10"),
            ("pxisys.ini", "DestinationTriggerBus = 2", "DestinationTriggerBus = 9", "bridge-to-missing-bus",
             "bridge-1")]


def testFindings(browser):
    root = work / "findings"
    shutil.copytree(TOP / "samples", root)
    for name, old, new, *_ in FINDINGS:
        file = root / "etc/pxi" / name
        text = file.read_text(encoding="latin-1")
        check(old in text, f"{name} has {old}")
        file.write_text(text.replace(old, new, 1), encoding="latin-1")
    page = work / "findings.html"
    equal(run(root, "report", "-o", str(page)).returncode, 1, "status of a page of findings")
    browser.open(page, "#1/6")
    check("slot-on-two-buses" in browser.details(), f"the finding at its slot: {browser.details()}")
    placed = {(item.text.split(",")[0], item.find_element(By.XPATH, "..").get_attribute("data-about"))
              for item in browser.all("section.rack .findings code")}
    for *_, name, about in FINDINGS:
        check((name, about) in placed, f"{name} at {about}: {placed}")
    browser.isQuiet("findings")


def testKeyboard(browser, page):
    browser.open(page)
    stops = browser.script("return document.querySelectorAll('svg [tabindex=\"0\"]').length")
    equal(stops, 3, "stops of Tab in the pictures")
    browser.press("/")
    browser.press(Keys.TAB)
    chassis = "return document.activeElement.closest('section').dataset.chassis"
    focused = "const e = document.activeElement; return e.dataset.key ?? (e.className || e.textContent)"
    # Keys, and what has the focus then.
    for keys, wanted in [("", "slot 1"), (Keys.RIGHT * 6, "slot 7"), (Keys.DOWN, "bus 2"),
                         (Keys.LEFT, "bus 1"), (Keys.UP, "slot 4"), (Keys.END, "slot 18"),
                         (Keys.DOWN * 3, "star 1 13"), (Keys.HOME, "star 1 2"), (Keys.DOWN * 9, "dstar 1 2"),
                         (Keys.UP * 9 + Keys.HOME + Keys.RIGHT, "slot 2")]:
        browser.press(*keys)
        equal(browser.script(focused), wanted, f"focus after the keys to {wanted}")
    check(browser.details().split("\n", 1)[1].startswith("Slot 1/2"), "details of what has the focus")
    browser.press(Keys.ENTER, Keys.RIGHT, " ")
    check("Both are on trigger bus 1" in browser.one("#said").text, "what a reader is told of two slots")
    pressed = [e.get_attribute("aria-label") for e in browser.all("[aria-pressed=true]")]
    check(len(pressed) == 2 and pressed[0].startswith("Slot 2, PXIe peripheral slot"), f"pressed: {pressed}")
    # What is chosen leads into its details and back; a bus, which only pointing showed, too.
    for keys, wanted in [(Keys.TAB, "close"), (Keys.SHIFT + Keys.TAB, "slot 3"), (Keys.TAB + Keys.ESCAPE, "slot 3"),
                         (Keys.DOWN + Keys.ENTER + Keys.TAB * 2, "1/1"), (Keys.ENTER, "slot 1"),
                         (Keys.ESCAPE + Keys.TAB, "slot 1")]:
        browser.press(*keys)
        equal(browser.script(focused), wanted, f"focus on {wanted} by the details")
    equal(browser.script(chassis), "2", "the next picture")
    browser.open(page, "#3/2")
    equal(browser.script(focused), "slot 2", "a link to a slot")
    browser.isQuiet("the keyboard")


def testTable(browser, page):
    browser.open(page, "#modules")
    WebDriverWait(browser.driver, DEADLINE).until(lambda _: browser.all("#modules tbody tr"))
    heads = {head.text.strip(" ▲▼"): head for head in browser.all("#modules thead button")}

    def column(n):
        return [cell.text for cell in browser.all(f"#modules tbody td:nth-child({n})")]

    places = column(1)
    equal((len(places), places[8:10]), (22, ["1/11", "1/12"]), "rows of the table")
    heads["Alias"].click()
    aliases = [alias for alias in column(2) if alias]
    equal(aliases, sorted(aliases), "sorted by alias")
    equal(browser.one("th[aria-sort=ascending]").text.strip(" ▲▼"), "Alias", "the column that sorts")
    browser.script("navigator.clipboard.writeText = async (text) => { window.copied = text; }")
    browser.one("#copy").click()
    WebDriverWait(browser.driver, DEADLINE).until(lambda _: browser.script("return window.copied"))
    lines = [line.split("\t") for line in browser.script("return window.copied").splitlines()]
    equal((len(lines), {len(line) for line in lines}), (23, {len(heads)}), "the table as text")
    browser.isQuiet("the table")


def testPrint(browser, page):
    browser.open(page, "#1/7")  # what is chosen stays on the screen
    pages = browser.print("sample")
    racks = [n for n, text in enumerate(pages) if re.search(r"Chassis \d: ", text)]
    equal(racks, [0, 1, 2], "pages with a chassis")
    check("All attributes" not in "".join(pages), "details on paper")
    check(all("trigger bus" in pages[n] for n in (0, 1)), "a legend on each page")
    check("Modules" in pages[3] and "DIGITIZER-A" in pages[3] and "Search" not in "".join(pages), "the table on paper")


def testSaved(browser, root, page, what):
    for arguments in (["show", "--json"], ["check"]):
        own, saved = (run(root, *arguments), run("/nowhere", *arguments, "--from", str(page)))
        if arguments[0] == "show":
            own, saved = (json.loads(one.stdout)["Chassis"] for one in (own, saved))
        else:
            own, saved = own.stdout, saved.stdout
        check(own == saved, f"{arguments[0]} from {what}")
    text = browser.script("return document.getElementById('saved-installation').textContent")
    files = json.loads(text)["files"]
    equal(sorted(files), ["etc/pxi/pxiesys.ini", "etc/pxi/pxisys.ini", "var/lib/PXISA/configuration.ini"],
          f"files in {what}")


HOSTILE = ("</script><script>document.title='run'</script><!--<script>\"'><img src=x onerror=document.title='run'>"
           "</title></style></svg>&lt;]]>")


def testHostile(browser):
    root = work / "hostile"
    shutil.copytree(TOP / "samples", root)
    files = root / "etc/pxi"
    for file in files.glob("*.ini"):
        text = file.read_text(encoding="latin-1")
        for name in ("Vendor", "Model", "SerialNumber", "InstanceName"):
            text = re.sub(rf"^(\w*{name}) *=.*", lambda line: f"{line[1]} = {HOSTILE}", text, flags=re.M)
        file.write_text(text + f"[Chassis1Slot2{HOSTILE[:9]}]\n{HOSTILE} = {HOSTILE}\n", encoding="latin-1")
    page = work / "hostile.html"
    check(run(root, "report", "-o", str(page)).returncode in (0, 1), "a page of a hostile description")
    browser.open(page)
    title = browser.driver.title
    for keys in ("dmm", "script"):
        browser.one("#search").send_keys(keys, Keys.ENTER)
    browser.open(page, "#1/2")
    browser.point(browser.group(1, "slot 7"))
    browser.open(page, "#modules")
    WebDriverWait(browser.driver, DEADLINE).until(lambda _: browser.all("#modules tbody tr"))
    equal((browser.driver.title, len(browser.all("img")), "run" in title), (title, 0, False), "nothing ran")
    equal(len(browser.all("script:not([type])")), 1, "scripts")
    check(HOSTILE[:40] in browser.one("#modules").text, "the text as it stands")
    # The policy holds for what comes into the page in any other way, too.
    browser.isQuiet("a hostile description")
    browser.script("const element = document.createElement('script'); element.textContent = 'document.title = 1';"
                   "document.body.append(element); document.body.setAttribute('onclick', 'document.title = 1');"
                   "document.body.click();")
    equal(browser.driver.title, title, "the policy")
    browser.driver.get_log("browser")
    testSaved(browser, root, page, "a hostile page")


def testLarge(browser):
    root = work / "large"
    subprocess.run([VARMEX, "make", root, "express:18x255"], check=True)
    page = report(root, "large")
    browser.open(page)
    if PICTURES:
        print("opened in ms:", browser.script("const [t] = performance.getEntriesByType('navigation');"
                                              "return [t.domInteractive, t.loadEventEnd]"), page.stat().st_size)
    equal(len(browser.all("section.rack")), 255, "chassis")
    browser.one("#search").send_keys("255/18", Keys.ENTER)
    equal(browser.place(), "#255/18", "the last slot")
    inView = "const b = arguments[0].getBoundingClientRect(); return b.top >= 0 && b.bottom <= innerHeight"
    check(browser.script(inView, browser.group(255, "slot 18")), "the last slot is in view")
    browser.isQuiet("a large installation")


def takePictures(browser, page):
    browser.open(page, "#1/7")
    for name, width, scheme in (("light", 1440, "light"), ("dark", 1440, "dark"), ("narrow", 400, "light")):
        browser.picture(name, width, 1000, scheme)
    browser.open(page, "#modules")
    browser.picture("modules")


browser = Browser()
try:
    page = report(TOP / "samples", "sample")
    testFiles()
    testSample(browser, page)
    testFindings(browser)
    testKeyboard(browser, page)
    testTable(browser, page)
    testPrint(browser, page)
    browser.open(page)
    testSaved(browser, TOP / "samples", page, "the page")
    if PICTURES:
        takePictures(browser, page)
    testHostile(browser)
    testLarge(browser)
finally:
    browser.driver.quit()
    if PICTURES:
        for file in [*work.glob("*.pdf"), *work.glob("*.html")]:
            shutil.copy(file, PICTURES)
    shutil.rmtree(work)
finish()
