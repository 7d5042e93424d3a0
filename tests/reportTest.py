#!/usr/bin/python3
"""reportTest.py VARMEX [FOLDER] : the page of an installation in a browser. Leaves pictures of it in the folder."""

import base64
import json
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest
import tinycss2
from selenium.webdriver import ActionChains, Chrome, ChromeOptions, Keys
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.wait import WebDriverWait

sys.path.insert(0, str(Path(__file__).resolve().parent / "support"))
from roots import DEADLINE, TOP, E, I, Root, main  # noqa: E402

Root.varmex = Root.varmex[:1]


def report(root, status=0):
    page = root.folder.with_suffix(".html")
    run = root.run("report", "-o", page)
    assert run.returncode == status, run
    return page


class Browser(Chrome):
    script = Chrome.execute_script

    def __init__(self, profile, pictures):
        self.pictures = pictures
        options = ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        switches = "headless=new no-sandbox disable-gpu disable-dev-shm-usage window-size=1440,1000"
        for switch in (*switches.split(), f"user-data-dir={profile}"):
            options.add_argument(f"--{switch}")
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        super().__init__(options=options, service=Service("/usr/bin/chromedriver"))
        self.set_page_load_timeout(DEADLINE)

    def open(self, page, place=""):
        self.get("about:blank")
        self.get(f"{page.as_uri()}{place}")

    def all(self, selector):
        return self.find_elements("css selector", selector)

    def one(self, selector):
        return self.find_element("css selector", selector)

    def text(self, selector):
        return self.one(selector).text

    def address(self):
        return self.script("return location.hash")

    def has(self, selector):
        WebDriverWait(self, DEADLINE).until(lambda _: self.all(selector))

    def group(self, chassis, key):
        return self.one(f"[data-chassis='{chassis}'] [data-key='{key}']")

    def command(self, name, **arguments):
        return self.execute_cdp_cmd(name, arguments)

    def press(self, *keys):
        """One after the other; Shift holds for those behind it."""
        chain = ActionChains(self)
        for key in keys:
            chain = chain.key_down(key) if key == Keys.SHIFT else chain.send_keys(key)
        chain.key_up(Keys.SHIFT).perform()

    def point(self, *elements):
        for element in elements:
            ActionChains(self).move_to_element(element).perform()

    def click(self, *elements):
        for element in elements:
            ActionChains(self).click(element).perform()

    def lit(self, kind):
        return sorted({int(group.get_attribute("data-key").split()[1]) for group in self.all(f"[data-key^='{kind} '].lit")})

    def printed(self):
        pdf = self.pictures / "printed.pdf"
        answer = self.command("Page.printToPDF", preferCSSPageSize=True, printBackground=True)
        pdf.write_bytes(base64.b64decode(answer["data"]))
        text = subprocess.run(["pdftotext", "-layout", pdf, "-"], capture_output=True, check=True)
        return text.stdout.decode().split("\f")[:-1]

    def look(self, picture, width=1440, height=1000, scheme="light"):
        self.command("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.save_screenshot(f"{self.pictures}/{picture}.png")


@pytest.fixture(scope="module")
def chromium(tmp_path_factory):
    pictures = Path(sys.argv[2]) if sys.argv[2:] else tmp_path_factory.mktemp("pictures")
    with Browser(tmp_path_factory.mktemp("profile"), pictures) as browser:
        yield browser


@pytest.fixture
def browser(chromium):
    """Without failures and stopped scripts at the end."""
    yield chromium
    assert not chromium.get_log("browser")


@pytest.fixture(scope="module")
def page(tmp_path_factory):
    return report(Root(tmp_path_factory.mktemp("all") / "sample"))


@pytest.fixture
def root(tmp_path):
    return Root(tmp_path / "changed")


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
    assert (lint.returncode, lint.stdout + lint.stderr) == (0, "")
    assert len(script.read_text().splitlines()) < 600
    for sheet in (script.with_suffix(".css"), TOP / "tools/varmex/picture/picture.css"):
        assert not [*wrong_rules(tinycss2.parse_stylesheet(sheet.read_text(), True, True))]


FOCUSED = "const e = document.activeElement; return e.dataset.key ?? (e.className || e.textContent)"
# What is typed, how many fit, and where Enter leads.
SEARCHES = [("dmm", 1, "#1/9"), ("tessmere rf", 3, "#1/3"), ("37:00.0", 1, "#2/5"), ("5.0.0", 1, "#1/2"), ("0a41f27c", 12, "#1/1"),
            ("PXI0::5-", 1, "#1/2"), ("gener 950", 1, "#1/12")]


def test_search(browser, page, root):
    browser.open(page)
    search = browser.one("#search")
    for text, count, place in SEARCHES:
        search.clear()
        search.send_keys(text)
        assert browser.text("#said") == f"{count} module{'s fit' if count > 1 else ' fits'}."
        search.send_keys(Keys.ENTER)
        assert browser.address() == place, text
    assert "GENERATOR" in browser.text("#details")
    search.send_keys(" nothing of it")
    assert browser.text("#hits") == "Nothing fits."
    # A chassis that can't be opened is found by its number; an address that leads nowhere does no harm.
    root.edit((I, "ORX-1820", "other"))
    browser.open(report(root, status=1), "#%")
    browser.one("#search").send_keys("1", Keys.ENTER)
    assert browser.address() == "#1"


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
        assert [one for one in (f"× {title}", *told) if one not in details] == []
        assert [browser.lit(kind) for kind in ("bus", "bridge", "slot")] == lit, keys
        for scheme in ("dark", "light") if keys == ["slot 2", "slot 17"] else ():
            browser.look(f"chosen-{scheme}", scheme=scheme)
        browser.press(Keys.ESCAPE)
        assert (browser.all(".chosen"), browser.address()) == ([], "")
    # A link leads there again when the address bar is there already.
    browser.click(browser.group(1, "bus 2"))
    for _ in range(2):
        browser.click(browser.one("#details a[href='#1/9']"))
        assert (browser.address(), browser.script(FOCUSED)) == ("#1/9", "slot 9")
        browser.script("document.activeElement.blur()")
    browser.click(browser.one("#details summary"))
    browser.point(browser.one("h1"))
    assert browser.all("#details details[open]")


# What is changed in the sample, the finding that this makes, what of the picture it stands at, and what is told of that.
FINDINGS = [
    (E, '"7,8,9,', '"6,7,8,9,', "slot-on-two-buses", "bus-2 slot-6", "is on TriggerBus1 already"),
    (E, "PXIeSystemTimingSlot", "PXIeTimer", "unknown-slot-type", "slot-10", '"PXIeTimer" is no type of slot: '),
    (E, "TimingSlot = 10", "TimingSlot = x", "bad-number", "star-1", "Controller: none that can be read. SystemTimingSlot in"),
    (E, "TimingSet3 = 5", "TimingSet3 = six", "bad-number", "dstar-1", '"six" is no decimal number'),
    (I, '"6,7"', '"6,9"', "line-map-out-of-range", "bridge-3 bridge-4", "names line 9, and lines are 0 to 7: "),
    (I, "nTriggerBus = 1", "nTriggerBus = x", "bad-number", "bridge-2", "DestinationTriggerBus in section [Chassis1TriggerBridge2] is"),
    (I, "nTriggerBus = 2", "nTriggerBus = 9", "bridge-to-missing-bus", "bridge-1", "from bus 1 to bus 9")]
UNREAD = ["to 1/10 (bus 2) no line gets over", "Bridge 2 can't be read in full, which may hide ways: DestinationTriggerBus",
          "Star trigger of 1/10: SystemTimingSlot in section"]


def test_findings(browser, root, tmp_path):
    root.edit(*((file, re.escape(old), new) for file, old, new, *_ in FINDINGS))
    browser.open(report(root, status=1))
    for text in ("pxiesys.ini, ", "/configuration.ini, ", "/registry.reg", "faults hide"):
        assert text in browser.text("header")
    assert "Not compared with the machine: no PCI tree" in browser.text("#findings")
    placed = browser.script("return [...document.querySelectorAll('section.rack .findings code')].map("
                            "(code) => [code.textContent.split(',')[0], code.parentNode.dataset.about])")
    frame = "return Math.max(...[...arguments[0].children].map((e) => parseFloat(getComputedStyle(e).strokeWidth)))"
    for *_, name, about, told in FINDINGS:
        assert [name, about] in placed
        browser.point(browser.one("h1"))
        keys = [each.replace("-", " ") for each in about.split()]
        assert [browser.script(frame, browser.group(1, key)) for key in keys] == [3.5] * len(keys)
        browser.point(browser.all(f"[data-chassis='1'] [data-key^='{keys[-1]}'] :is(text, circle)")[0])
        assert told in browser.text("#details")
    browser.click(*(browser.group(1, f"slot {slot}") for slot in (2, 10)))
    between = browser.text("#between")
    assert [text for text in UNREAD if text not in between] == []
    root.edit((E, '"6,7,8,9,', '"7,,9,'))
    browser.open(report(root, status=1))
    browser.click(*(browser.group(1, f"slot {slot}") for slot in (2, 17)))
    assert "Slot 1/17 is on a trigger bus that can't be read." in browser.text("#between")
    browser.open(report(Root(tmp_path / "tree", "express:18", "--pci", "--pci-fault", "driverless")))
    assert "Compared with the machine's PCI tree, " in browser.text("#findings")
    assert browser.all("section.rack .findings code")


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
    assert len(browser.all("svg [tabindex='0']")) == 3  # stops of Tab in the pictures
    nodes = browser.command("Accessibility.getFullAXTree")["nodes"]
    given = [(node["role"]["value"], node.get("name", {}).get("value", "")) for node in nodes if not node["ignored"]]
    assert ([one for one in GIVEN if one not in given], given.count(("button", ""))) == ([], 0)
    for keys, focused, told in KEYS:
        browser.press(*keys)
        assert browser.script(FOCUSED) == focused
        assert told in browser.text("#details") + browser.text("#said"), focused
    browser.open(page, "#3/2")
    assert browser.script(FOCUSED) == "slot 2"


def test_table(browser, page):
    # On a narrow screen the search stays in sight; the link leads to the table's top.
    top = "return document.querySelector(arguments[0]).getBoundingClientRect().top"
    browser.open(page, "#2/3")
    browser.look("narrow", 400, 900)
    assert browser.script(top, ".tools") == 0
    browser.look("wide")
    browser.open(page)
    browser.click(browser.one("a[href='#modules']"))
    browser.has("#modules tbody tr")
    assert 0 < browser.script(top, "#modules") < 100
    heads = {head.text.strip(" ▲▼"): head for head in browser.all("#modules thead button")}
    assert [cell.text for cell in browser.all("#modules tbody td:first-child")][8:10] == ["1/11", "1/12"]
    heads["Alias"].click()
    aliases = [cell.text for cell in browser.all("#modules td:nth-child(2)")]
    assert aliases == sorted(aliases, key=lambda alias: (not alias, alias))
    assert browser.text("th[aria-sort=ascending]").strip(" ▲▼") == "Alias"
    browser.script("navigator.clipboard.writeText = async (text) => { document.body.dataset.copied = text; }")
    browser.one("#copy").click()
    browser.has("[data-copied]")
    lines = [line.split("\t") for line in browser.script("return document.body.dataset.copied").splitlines()]
    assert (len(lines), {len(line) for line in lines}) == (23, {len(heads)})


def test_print(browser, page, tmp_path):
    browser.open(page, "#1/7")  # what is chosen stays on the screen
    pages = browser.printed()
    assert [n for n, text in enumerate(pages) if re.search(r"Chassis \d: ", text)] == [0, 1, 2]
    assert not re.search("All attributes|Search", "".join(pages))
    assert "trigger bus" in pages[0] and "trigger bus" in pages[1]  # the legend
    assert "DIGITIZER-A" in pages[3] and all("Resources" in text for text in pages[3:])
    # A picture by itself: no chassis is cut.
    Root(tmp_path / "many", "express:18x5", "classic:8x3").run("draw", "-o", tmp_path / "many.svg")
    browser.open(tmp_path / "many.svg")
    sheets = ["".join(map("".join, re.findall(r"Chassis (\d):|\b(Star) 1", text))) for text in browser.printed()]
    assert sheets == ["1Star", "2Star", "3Star", "4Star", "5Star", "67StarStar", "8Star"]


HOSTILE = """</script><script>document.title='run'</script><!--<script>"'><img src=x onerror=document.title='run'></title></style></svg>&lt;]]>"""


def test_hostile(browser, root):
    names = r"^(\w*(?:Vendor|Model|SerialNumber|InstanceName)) *=.*"
    for file in (root.file(I), root.file(E)):
        text = re.sub(names, lambda line: f"{line[1]} = {HOSTILE}", file.read_text(encoding="latin-1"), flags=re.M)
        file.write_text(text + f"[Chassis1Slot2{HOSTILE[:9]}]\n{HOSTILE} = {HOSTILE}\n", encoding="latin-1")
    page = report(root)
    browser.open(page)
    title = browser.title
    for keys in ("dmm", "script"):
        browser.one("#search").send_keys(keys, Keys.ENTER)
    browser.point(browser.group(1, "slot 7"))
    browser.click(browser.one("a[href='#modules']"))
    browser.has("#modules tbody tr")
    ran = (browser.title, "run" in title, len(browser.all("img")), len(browser.all("script:not([type])")))
    assert ran == (title, False, 0, 1)
    assert HOSTILE[:40] in browser.text("#modules")
    overhang = "const view = arguments[0]; return view.scrollWidth - view.clientWidth"
    assert browser.script(overhang, browser.one("#modules .view")) == 0
    assert not browser.get_log("browser")
    # The policy holds for what comes into the page in any other way, too.
    browser.script("const element = document.createElement('script'); element.textContent = 'document.title = 1';"
                   "document.body.append(element); document.body.setAttribute('onclick', 'document.title = 1');"
                   "document.body.click();")
    assert browser.title == title and browser.get_log("browser")
    # The page has the whole installation in it.
    for arguments in (["check"], ["list", "--json"]):
        assert root.run(*arguments).stdout == root.run(*arguments, "--from", page).stdout
    saved = json.loads(browser.script("return document.getElementById('saved-installation').textContent"))
    assert len(saved["files"]) == 3 and root.run("diff", page).returncode == 0


def test_large(browser, tmp_path):
    browser.open(report(Root(tmp_path / "large", "express:18x255")))
    assert len(browser.all("section.rack")) == 255
    browser.one("#search").send_keys("255/18", Keys.ENTER)
    in_view = "const b = arguments[0].getBoundingClientRect(); return b.top >= 0 && b.bottom <= innerHeight"
    assert browser.script(in_view, browser.group(255, "slot 18"))


if __name__ == "__main__":
    main(__file__)
