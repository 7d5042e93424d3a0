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
from selenium.webdriver import ActionChains, Chrome, ChromeOptions, Keys
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.wait import WebDriverWait

sys.path.insert(0, str(Path(__file__).resolve().parent / "support"))
from counting import TOP, check, equal, finish  # noqa: E402

VARMEX = os.path.abspath(sys.argv[1])
PICTURES = Path(sys.argv[2]) if len(sys.argv) > 2 else None
DEADLINE = 120
work = Path(tempfile.mkdtemp())


def run(root, *arguments):
    environment = dict(os.environ, VARMEX_FSROOT=str(root))
    return subprocess.run([VARMEX, *map(str, arguments)], env=environment, capture_output=True, timeout=DEADLINE)


def report(root, status=0):
    page = work / f"{root.name}.html"
    equal(run(root, "report", "-o", page).returncode, status, f"status of the page of {root.name}")
    return page


def made(name, *chassis):
    equal(run("/", "make", work / name, *chassis).returncode, 0, f"making {name}")
    return work / name


def changed(name, change):
    """The sample with the texts of its two files changed."""
    root = work / name
    shutil.copytree(TOP / "samples", root)
    for file in (root / "etc/pxi").glob("*.ini"):
        file.write_text(change(file.name, file.read_text(encoding="latin-1")), encoding="latin-1")
    return root


class Browser:
    def __init__(self):
        options = ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        switches = f"headless=new no-sandbox disable-gpu disable-dev-shm-usage window-size=1440,1000 user-data-dir={work}/profile"
        for switch in switches.split():
            options.add_argument(f"--{switch}")
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = Chrome(options=options, service=Service("/usr/bin/chromedriver"))
        self.driver.set_page_load_timeout(DEADLINE)
        self.script = self.driver.execute_script

    def open(self, page, place=""):
        self.driver.get("about:blank")
        self.driver.get(f"{page.as_uri()}{place}")

    def all(self, selector):
        return self.driver.find_elements("css selector", selector)

    def one(self, selector):
        return self.driver.find_element("css selector", selector)

    def text(self, selector):
        return self.one(selector).text

    def wait(self, condition):
        WebDriverWait(self.driver, DEADLINE).until(lambda _: condition())

    def group(self, chassis, key):
        return self.one(f"[data-chassis='{chassis}'] [data-key='{key}']")

    def command(self, name, **arguments):
        return self.driver.execute_cdp_cmd(name, arguments)

    def press(self, *keys):
        """One after the other; Shift holds for those behind it."""
        chain = ActionChains(self.driver)
        for key in keys:
            chain = chain.key_down(key) if key == Keys.SHIFT else chain.send_keys(key)
        chain.key_up(Keys.SHIFT).perform()

    def point(self, *elements):
        for element in elements:
            ActionChains(self.driver).move_to_element(element).perform()

    def click(self, *elements):
        for element in elements:
            ActionChains(self.driver).move_to_element(element).click().perform()

    def lit(self, kind):
        return sorted({int(e.get_attribute("data-key").split()[1]) for e in self.all(f"[data-key^='{kind} '].lit")})

    def is_quiet(self, what):
        equal([entry["message"] for entry in self.driver.get_log("browser")], [], f"failures and stopped scripts of {what}")

    def printed(self):
        pdf = work / "printed.pdf"
        answer = self.command("Page.printToPDF", preferCSSPageSize=True, printBackground=True)
        pdf.write_bytes(base64.b64decode(answer["data"]))
        text = subprocess.run(["pdftotext", "-layout", pdf, "-"], capture_output=True, check=True)
        return text.stdout.decode().split("\f")[:-1]

    def look(self, width=1440, height=1000, scheme="light", picture=None):
        scheme = [{"name": "prefers-color-scheme", "value": scheme}]
        self.command("Emulation.setEmulatedMedia", features=scheme)
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)
        if picture and PICTURES:
            self.driver.save_screenshot(str(PICTURES / f"{picture}.png"))


def wrong_rules(rules):
    contents = {"at-rule": tinycss2.parse_rule_list, "qualified-rule": tinycss2.parse_declaration_list}
    for rule in rules:
        if rule.type == "error":
            yield f"{rule.source_line}: {rule.message}"
        elif rule.type in contents and getattr(rule, "lower_at_keyword", "media") == "media":
            yield from wrong_rules(contents[rule.type](rule.content, True, True))


def test_files():
    script = TOP / "tools/varmex/page/page.js"
    # Debian's modules also where another node is ahead on the PATH.
    environment = dict(os.environ, NODE_PATH="/usr/share/nodejs")
    lint = subprocess.run(["eslint", "--format", "unix", script], capture_output=True, text=True, env=environment)
    equal((lint.returncode, lint.stdout + lint.stderr), (0, ""), "page.js")
    check(len(script.read_text().splitlines()) < 600, "length of the script")
    for sheet in (script.with_suffix(".css"), TOP / "tools/varmex/picture/picture.css"):
        equal(list(wrong_rules(tinycss2.parse_stylesheet(sheet.read_text(), True, True))), [], sheet.name)


FOCUSED = "const e = document.activeElement; return e.dataset.key ?? (e.className || e.textContent)"
# What is typed, how many fit, and where Enter leads.
SEARCHES = [("dmm", 1, "#1/9"), ("tessmere rf", 3, "#1/3"), ("37:00.0", 1, "#2/5"), ("5.0.0", 1, "#1/2"), ("0a41f27c", 12, "#1/1"),
            ("PXI0::5-", 1, "#1/2"), ("gener 950", 1, "#1/12")]


def test_search(browser, page):
    browser.open(page)
    search = browser.one("#search")
    for text, count, place in SEARCHES:
        search.clear()
        search.send_keys(text)
        equal(browser.text("#said"), f"{count} module{'s fit' if count > 1 else ' fits'}.", f"search {text}")
        search.send_keys(Keys.ENTER)
        equal(browser.script("return location.hash"), place, f"Enter after {text}")
    check("GENERATOR" in browser.text("#details"), "details of what was found")
    search.send_keys(" nothing of it")
    equal(browser.text("#hits"), "Nothing fits.", "search for nothing")
    # A chassis that can't be opened is found by its number; an address that leads nowhere does no harm.
    browser.open(report(changed("apart", lambda name, text: text.replace("ORX-1820", name, 1)), status=1), "#%")
    browser.one("#search").send_keys("1", Keys.ENTER)
    equal(browser.script("return location.hash"), "#1", "Enter after the number of a chassis")


# What is clicked, what the details begin with, the buses, bridges and slots that are lit, and what is told.
CLICKED = [(["bus 2"], "Chassis 1, trigger bus 2", [1, 2, 3], [1, 2, 3, 4], [*range(7, 13)], ["lines 0-7 each to 0-7"]),
           (["bridge 3"], "Chassis 1, bridge 3", [2, 3], [3], [], ["lines 0-5 each to the same, 6 to 6-7"]),
           (["star 1 5"], "Chassis 1, Star trigger 1", [], [], [5, 10], ["Controller: 1/10"]),
           (["star 1 10"], "Chassis 1, Star trigger 1", [], [], [*range(2, 19)], ["line 15 1/18"]),
           (["dstar 1 9"], "Chassis 1, DStar trigger 1", [], [], [9, 10], ["set 7 1/9"]),
           (["slot 17"], "Slot 1/17", [3], [], [10, *range(13, 19)], ["HM-7100 Power Supply"]),
           (["slot 2", "slot 17"], "Trigger lines between 1/2 and 1/17", [1, 2, 3], [1, 2, 3, 4], [*range(1, 7), 10, *range(13, 19)],
            ["From 1/2 (bus 1) to 1/17 (bus 3) by bridge 1, then 3: lines 0-7 each to 0-7.",
             "From 1/17 (bus 3) to 1/2 (bus 1) by bridge 4, then 2: lines 0-6 each to 0-7."]),
           (["slot 10", "slot 9"], "Trigger lines between 1/10 and 1/9", [2], [], [*range(2, 19)],
            ["Both are on trigger bus 2", "Star trigger 1: 1/10 is the controller, 1/9 is line 7; this line joins the two."]),
           (["slot 2", "slot 3", "slot 18"], "Slot 1/18", [3], [], [10, *range(13, 19)], ["PXIe peripheral"])]


def test_choosing(browser, page):
    browser.open(page)
    for keys, title, *lit, told in CLICKED:
        browser.click(*(browser.group(1, key) for key in keys))
        browser.point(*map(browser.one, ("[data-key='slot 1']", "svg.drawing .legend", "h1")))
        details = browser.text("#details").replace("\n", " ")
        equal([one for one in [f"× {title}", *told] if one not in details], [], f"details of {keys}: {details}")
        equal([browser.lit(kind) for kind in ("bus", "bridge", "slot")], lit, f"buses, bridges and slots lit by {keys}")
        for scheme in ("light", "dark") if keys == ["slot 2", "slot 17"] else ():
            browser.look(scheme=scheme, picture=f"chosen-{scheme}")
        browser.press(Keys.ESCAPE)
        equal((len(browser.all(".chosen")), browser.script("return location.hash")), (0, ""), "nothing chosen")
    # A link leads there again when the address bar is there already.
    browser.click(browser.group(1, "bus 2"))
    for _ in range(2):
        browser.click(browser.one("#details a[href='#1/9']"))
        equal((browser.script("return location.hash"), browser.script(FOCUSED)), ("#1/9", "slot 9"), "a link in the details")
        browser.script("document.activeElement.blur()")
    browser.click(browser.one("#details summary"))
    browser.point(browser.one("h1"))
    check(browser.all("#details details[open]"), "attributes that stay open")


# What is changed in the sample, the finding that this makes, what of the picture it stands at, and what is told of that.
FINDINGS = [
    ("pxiesys.ini", '"7,8,9,', '"6,7,8,9,', "slot-on-two-buses", "bus-2 slot-6", "is on TriggerBus1 already"),
    ("pxiesys.ini", "PXIeSystemTimingSlot", "PXIeTimer", "unknown-slot-type", "slot-10", '"PXIeTimer" is no type of slot: '),
    ("pxiesys.ini", "TimingSlot = 10", "TimingSlot = x", "bad-number", "star-1", "Controller: none that can be read. SystemTimingSlot in"),
    ("pxiesys.ini", "TimingSet3 = 5", "TimingSet3 = six", "bad-number", "dstar-1", '"six" is no decimal number'),
    ("pxisys.ini", '"6,7"', '"6,9"', "line-map-out-of-range", "bridge-3 bridge-4", "names line 9, and lines are 0 to 7: "),
    ("pxisys.ini", "nTriggerBus = 1", "nTriggerBus = x", "bad-number", "bridge-2", "DestinationTriggerBus in section [Chassis1TriggerBridge2] is"),
    ("pxisys.ini", "nTriggerBus = 2", "nTriggerBus = 9", "bridge-to-missing-bus", "bridge-1", "from bus 1 to bus 9")]
UNREAD = ["to 1/10 (bus 2) no line gets over", "Bridge 2 can't be read in full, which may hide ways: DestinationTriggerBus",
          "Star trigger of 1/10: SystemTimingSlot in section"]


def break_sample(name, text):
    for file, old, new, *_ in FINDINGS:
        text = text.replace(old, new, file == name)  # once, or never
    return text


def test_findings(browser, _):
    browser.open(report(changed("findings", break_sample), status=1))
    for text in ("pxiesys.ini, ", "/configuration.ini, ", "/registry.reg", "faults hide"):
        check(text in browser.text("header"), f"{text} in the head: {browser.text('header')}")
    check("Not compared with the machine: no PCI tree" in browser.text("#findings"), "no comparison")
    placed = browser.script("return [...document.querySelectorAll('section.rack .findings code')].map("
                            "(code) => [code.textContent.split(',')[0], code.parentNode.dataset.about])")
    for *_, name, about, told in FINDINGS:
        check([name, about] in placed, f"{name} at {about}: {placed}")
        browser.point(browser.one("h1"))
        keys = [each.replace("-", " ") for each in about.split()]
        for key in keys:
            frame = "return Math.max(...[...arguments[0].children].map((e) => parseFloat(getComputedStyle(e).strokeWidth)))"
            equal(browser.script(frame, browser.group(1, key)), 3.5, f"frame of {key}")
        browser.point(browser.all(f"[data-chassis='1'] [data-key^='{keys[-1]}'] :is(text, circle)")[0])
        check(told in browser.text("#details"), f"details of {keys[-1]}: {browser.text('#details')}")
    browser.click(*(browser.group(1, f"slot {slot}") for slot in (2, 10)))
    between = browser.text("#between")
    equal([text for text in UNREAD if text not in between], [], between)
    browser.open(report(changed("bus", lambda name, text: text.replace('"7,8,9,', '"7,,9,')), status=1))
    browser.click(*(browser.group(1, f"slot {slot}") for slot in (2, 17)))
    check("Slot 1/17 is on a trigger bus that can't be read." in browser.text("#between"), browser.text("#between"))
    browser.open(report(made("tree", "express:18", "--pci", "--pci-fault", "driverless")))
    check("Compared with the machine's PCI tree, " in browser.text("#findings"), "a comparison")
    check(browser.all("section.rack .findings code"), "findings about the machine")


# Keys, what has the focus then, and what is told.
KEYS = [("/" + Keys.TAB, "slot 1", "Slot 1/1"), (Keys.RIGHT * 6, "slot 7", ""), (Keys.DOWN, "bus 2", "trigger bus 2"),
        (Keys.LEFT, "bus 1", ""), (Keys.UP, "slot 4", ""), (Keys.END, "slot 18", ""), (Keys.DOWN * 3, "star 1 13", ""),
        (Keys.HOME, "star 1 2", ""), (Keys.DOWN * 9, "dstar 1 2", ""), (Keys.UP * 9 + Keys.HOME + Keys.RIGHT, "slot 2", ""),
        (Keys.ENTER + Keys.RIGHT + " ", "slot 3", "Both are on trigger bus 1"),
        # What is chosen leads into its details, and from there back and on.
        (Keys.TAB, "close", "Slot 1/3"), (Keys.SHIFT + Keys.TAB, "slot 3", ""), (Keys.TAB + Keys.ESCAPE, "slot 3", ""),
        (Keys.DOWN + Keys.ENTER + Keys.TAB * 2, "1/1", "trigger bus 1 chosen."), (Keys.ENTER, "slot 1", "Slot 1/1 chosen."),
        (Keys.ESCAPE + Keys.TAB, "slot 1", "Slot 2/1")]
# What a screen reader is given.
GIVEN = [("combobox", "Search"), ("region", "Chassis 3: Havrel Modular HM-1008"), ("button", "Trigger bus 2"),
         ("button", 'Slot 9, PXIe peripheral slot, trigger bus 2, Orlindt Instruments, Inc. ORX-4081 Multimeter "DMM"'),
         ("button", "Star 1: controller in slot 10"), ("complementary", "Details"), ("status", "")]


def test_keyboard(browser, page):
    browser.open(page)
    equal(len(browser.all("svg [tabindex='0']")), 3, "stops of Tab in the pictures")
    nodes = browser.command("Accessibility.getFullAXTree")["nodes"]
    given = [(node["role"]["value"], node.get("name", {}).get("value", "")) for node in nodes if not node["ignored"]]
    equal(([one for one in GIVEN if one not in given], given.count(("button", ""))), ([], 0), "what a screen reader lacks")
    for keys, focused, told in KEYS:
        browser.press(*keys)
        equal(browser.script(FOCUSED), focused, f"focus after the keys to {focused}")
        check(told in browser.text("#details") + browser.one("#said").text, f"{told} at {focused}")
    browser.open(page, "#3/2")
    equal(browser.script(FOCUSED), "slot 2", "a link to a slot")


def test_table(browser, page):
    # On a narrow screen the search stays in sight; the link leads to the table's top.
    top = "return document.querySelector(arguments[0]).getBoundingClientRect().top"
    browser.open(page, "#2/3")
    browser.look(400, 900, picture="narrow")
    equal(browser.script(top, ".tools"), 0, "the search on a narrow screen")
    browser.look()
    browser.open(page)
    browser.click(browser.one("a[href='#modules']"))
    browser.wait(lambda: browser.all("#modules tbody tr"))
    check(0 < browser.script(top, "#modules") < 100, "the table after a link to it")
    heads = {head.text.strip(" ▲▼"): head for head in browser.all("#modules thead button")}
    equal([cell.text for cell in browser.all("#modules tbody td:first-child")][8:10], ["1/11", "1/12"], "rows of the table")
    heads["Alias"].click()
    aliases = [cell.text for cell in browser.all("#modules td:nth-child(2)") if cell.text]
    equal(aliases, sorted(aliases), "sorted by alias")
    equal(browser.text("th[aria-sort=ascending]").strip(" ▲▼"), "Alias", "the column that sorts")
    browser.script("navigator.clipboard.writeText = async (text) => { window.copied = text; }")
    browser.one("#copy").click()
    browser.wait(lambda: browser.script("return window.copied"))
    lines = [line.split("\t") for line in browser.script("return window.copied").splitlines()]
    equal((len(lines), {len(line) for line in lines}), (23, {len(heads)}), "the table as text")


def test_print(browser, page):
    browser.open(page, "#1/7")  # what is chosen stays on the screen
    pages = browser.printed()
    equal([n for n, text in enumerate(pages) if re.search(r"Chassis \d: ", text)], [0, 1, 2], "pages with a chassis")
    check(not re.search("All attributes|Search", "".join(pages)), "tools on paper")
    check("trigger bus" in pages[0] and "trigger bus" in pages[1], "a legend on each page")
    check("DIGITIZER-A" in pages[3] and all("Resources" in text for text in pages[3:]), "the table on paper")
    # A picture by itself: no chassis is cut.
    run(made("many", "express:18x5", "classic:8x3"), "draw", "-o", work / "many.svg")
    browser.open(work / "many.svg")
    sheets = [re.findall(r"Chassis (\d):|\b(Star) 1", text) for text in browser.printed()]
    equal(["".join(map("".join, found)) for found in sheets],
          ["1Star", "2Star", "3Star", "4Star", "5Star", "67StarStar", "8Star"], "chassis on the sheets of a picture")


def test_saved(browser, page, root=TOP / "samples"):
    browser.open(page)
    for arguments in (["check"], ["list", "--json"]):
        equal(run(root, *arguments).stdout, run("/nowhere", *arguments, "--from", page).stdout, f"{arguments} of {page}")
    saved = json.loads(browser.script("return document.getElementById('saved-installation').textContent"))
    equal(len(saved["files"]), 3, "files in a page")
    equal(run(root, "diff", page).returncode, 0, f"difference to {page}")


HOSTILE = """</script><script>document.title='run'</script><!--<script>"'><img src=x onerror=document.title='run'></title></style></svg>&lt;]]>"""


def poison(_, text):
    names = r"^(\w*(?:Vendor|Model|SerialNumber|InstanceName)) *=.*"
    text = re.sub(names, lambda line: f"{line[1]} = {HOSTILE}", text, flags=re.M)
    return text + f"[Chassis1Slot2{HOSTILE[:9]}]\n{HOSTILE} = {HOSTILE}\n"


def test_hostile(browser, _):
    root = changed("hostile", poison)
    page = report(root)
    browser.open(page)
    title = browser.driver.title
    for keys in ("dmm", "script"):
        browser.one("#search").send_keys(keys, Keys.ENTER)
    browser.point(browser.group(1, "slot 7"))
    browser.click(browser.one("a[href='#modules']"))
    browser.wait(lambda: browser.all("#modules tbody tr"))
    ran = (browser.driver.title, "run" in title, len(browser.all("img")), len(browser.all("script:not([type])")))
    equal(ran, (title, False, 0, 1), "nothing ran")
    check(HOSTILE[:40] in browser.text("#modules"), "the text as it stands")
    overhang = "const view = arguments[0]; return view.scrollWidth - view.clientWidth"
    equal(browser.script(overhang, browser.one("#modules .view")), 0, "long names beyond the table's place")
    # The policy holds for what comes into the page in any other way, too.
    browser.is_quiet("a hostile description")
    browser.script("const element = document.createElement('script'); element.textContent = 'document.title = 1';"
                   "document.body.append(element); document.body.setAttribute('onclick', 'document.title = 1');"
                   "document.body.click();")
    equal(browser.driver.title, title, "the policy")
    browser.driver.get_log("browser")
    test_saved(browser, page, root)


def test_large(browser, _):
    browser.open(report(made("large", "express:18x255")))
    equal(len(browser.all("section.rack")), 255, "chassis")
    browser.one("#search").send_keys("255/18", Keys.ENTER)
    in_view = "const b = arguments[0].getBoundingClientRect(); return b.top >= 0 && b.bottom <= innerHeight"
    check(browser.script(in_view, browser.group(255, "slot 18")), "the last slot in view")


browser = Browser()
try:
    page = report(TOP / "samples")
    test_files()
    for test in (test_search, test_choosing, test_keyboard, test_table, test_print, test_saved, test_findings,
                 test_hostile, test_large):
        test(browser, page)
        browser.is_quiet(test.__name__)
finally:
    browser.driver.quit()
    if PICTURES:
        shutil.copytree(work, PICTURES, dirs_exist_ok=True, ignore=shutil.ignore_patterns("profile"))
    shutil.rmtree(work)
finish()
