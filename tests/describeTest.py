#!/usr/bin/python3
"""describeTest.py [RUNNER...] VARMEX : what the command tells of broken installations, as text, JSON and events."""

import base64
import csv
import fcntl
import io
import json
import os
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
from pathlib import Path, PureWindowsPath

sys.path.insert(0, str(Path(__file__).resolve().parent / "support"))
from counting import TOP, check, conforms, equal, errors_of, finish, schema_of  # noqa: E402

VARMEX = [os.path.abspath(word) if os.path.exists(word) else word for word in sys.argv[1:]]
ON_WINDOWS = VARMEX[-1].endswith(".exe")
DEADLINE = 60


class Root:
    """An installation below a folder of its own."""

    def __init__(self, chassis=None):
        self.folder = Path(tempfile.mkdtemp())
        if chassis:
            subprocess.run([*VARMEX, "make", self.folder, *chassis], check=True)
        else:
            shutil.copytree(TOP / "samples", self.folder, dirs_exist_ok=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.folder)

    def file(self, name):
        return self.folder / "etc/pxi" / name

    def edit(self, name, pattern, text):
        self.exchange([(name, pattern, text)])

    def exchange(self, edits):
        """Another file in the place of each one that is edited, at once."""
        for name in {name for name, _, _ in edits}:
            old = text = self.file(name).read_text(encoding="latin-1")
            for _, pattern, by in (edit for edit in edits if edit[0] == name):
                text = re.sub(pattern, by, text, count=1, flags=re.M | re.S)
            assert text != old, edits
            self.file(name + ".new").write_text(text, encoding="latin-1")
            self.file(name + ".new").replace(self.file(name))

    def environment(self):
        return dict(os.environ, VARMEX_FSROOT=str(self.folder), TZ="IST-5:30")

    def run(self, *arguments, ahead=(), **more):
        return subprocess.run([*ahead, *VARMEX, *arguments], env=self.environment(), capture_output=True,
                              text=True, errors="replace", timeout=DEADLINE, **more)

    def ask(self, kind, *arguments):
        """How a command ends, and its document, which is of that kind; None where it prints none."""
        run = self.run(*arguments, "--json")
        document = json.loads(run.stdout) if run.stdout else None
        if run.stdout:
            conforms(document, kind, arguments)
        return run, document

    def show(self, *arguments):
        return self.ask("installation", "show", *arguments)[1]


def flatten(document):
    """Every answer by its place, and every failure."""
    answers, failures = {}, set()

    def visit(item, place):
        for name, value in item.items():
            if name == "failures":
                failures.update(f"{place} {about}" for about in value)
            elif isinstance(value, list):
                for number, below in enumerate(value):
                    key = {"Chassis": "ChassisNumber", "Slots": "SlotNumber",
                           "TriggerBridges": "BridgeNumber"}.get(name)
                    visit(below, f"{place}/{name[0]}{below[key] if key else number}")
            elif name not in ("absent", "machine", "units", "failureCount"):
                answers[f"{place} {name}"] = value

    visit(document, "")
    return answers, failures


def without(name, value):
    if isinstance(value, list):
        return [without(name, one) for one in value]
    if not isinstance(value, dict):
        return value
    return {key: without(name, one) for key, one in value.items() if key != name}


I, E = "pxisys.ini", "pxiesys.ini"
I_PATH, E_PATH = "etc/pxi/pxisys.ini", "etc/pxi/pxiesys.ini"
# What is broken: edits; the failures that this makes; what else is lost with it, as a pattern of
# places. All other answers are the same as in the sample.
BROKEN = [
    ("slots without a section", [(E, '18"', '18,19,21"')],
     ["/C1/S19 opening", "/C1/S21 opening"], None),
    ("a destination line 8", [(I, r"^(PXI_TRIG3) =[^\n]*", r"\1 = 8")],
     ["/C1/T1 BridgeLineMapping3", "/C1/T2 BridgeLineMapping3"], None),
    ("a width that is no number", [(E, r"^(PeripheralSlotLinkWidth1) =[^\n]*", r"\1 = x")],
     ["/C1/S2 PeripheralSlotLinkWidth1"], None),
    ("a chassis without a model", [(I, r"^Model", "No"), (E, r"^Model", "No")],
     ["/C1 opening"], r"/C1[/ ]"),
    ("a chassis whose files disagree", [(I, r"^(Model) =[^\n]*", r"\1 = X")],
     ["/C1 opening"], r"/C1[/ ]"),
    ("a bridge without a line map", [(I, r"^LineMappingSpec[^\n]*", "")],
     ["/C1/T1 opening"], r"/C1/T1 "),
    ("a line map that no file has", [(I, r"^LineMappingSpec = [^\n]*", "LineMappingSpec = 99")],
     [f"/C1/T1 BridgeLineMapping{line}" for line in range(8)], None),
    ("a bridge without a section", [(I, r"^(TriggerBridgeList = \"1,2,3,4)", r"\1,9")],
     ["/C1/T9 opening"], None),
    ("a bridge to no number, beside a missing slot",
     [(I, r"^DestinationTriggerBus =[^\n]*", "DestinationTriggerBus = z"), (E, '18"', '18,19"')],
     ["/C1/T1 BridgeDestinationTriggerBus", "/C1/S19 opening"], None),
    ("a list of bridges that is none", [(I, r"^(TriggerBridgeList) =[^\n]*", r"\1 = 1,,2")],
     ["/C1 TriggerBridges"], r"/C1/T"),
    ("an unknown slot type", [(E, r"^SlotType = \"?PXIePeripheralSlot\"?", "SlotType = Odd")],
     ["/C1/S2 SlotType"], r"/C1/S2 (Periph|System|Local)"),
    ("a module's width that is no number", [(E, r"(\[Chassis1Slot3\].*?WidthMax) =[^\n]*", r"\1 = x")],
     [f"/C1/S3/D{n} PeripheralModuleLinkWidthMax" for n in range(3)], None),
    ("a list of modules' functions that is none",
     [(I, r"(\[Chassis1Slot5\]\n)(.*?PCIBusNumber) =[^\n]*", r"\1\2 = None")], [], r"/C1/S5/"),
]


def testBroken():
    with Root() as root:
        healthy, none = flatten(root.show())
        check(not none, "the sample has no failures")
    for what, edits, failures, lost in BROKEN:
        with Root() as root:
            root.exchange(edits)
            document = root.show()
            answers, found = flatten(document)
            check(found == set(failures), f"{what}: failures {found}")
            check(document["failureCount"] == len(failures), f"{what}: count")
            gone = {place for place in healthy if healthy[place] != answers.get(place)
                    and place not in failures and not (lost and re.match(lost, place))}
            check(not gone, f"{what} hides {sorted(gone)[:5]}")
            status = int(bool(failures))
            text = root.run("show")
            marks = set(re.findall(r"!\d+", text.stdout))
            check(text.returncode == status and "Chassis 3: Havrel" in text.stdout, f"{what}: status and end of show")
            check(bool(marks) == ('Run "varmex check"' in text.stdout) == bool(failures), f"{what}: marks {marks}")
            check(root.run("show", "2").returncode == 0, f"{what}: show 2")
            picture = root.run("draw", "-o", "-")
            check(picture.returncode == status and all(f"{mark} " in picture.stdout for mark in marks), f"{what}: draw")


def testDocuments():
    with Root() as root:
        for kind, *words in (("installation", "show", "1"), ("installation", "show", "3/2", "--why"), ("findings", "check"),
                             ("terminals", "terminals", "5.0.0"), ("route", "route", "5.0.0", "PXI_Trig3")):
            check(root.ask(kind, *words)[0].returncode == 0, f"{words}")
        one = root.show("1/10")["Chassis"]
        check(len(one) == 1 and len(one[0]["Slots"]) == 1, "show 1/10 tells of one slot")
        whole = root.show()
        check(whole == without("absent", root.show("--why")), "--why adds reasons and nothing else")
        why = root.show("1/10", "--why")["Chassis"][0]["Slots"][0]["absent"]
        check(why["StarTriggerLine"]["constant"] == "varmex_errorStarController", "the reason")
        root.ask("route", "route", "5.0.0", "PXI_Trig9")
        root.edit(E, r"^PXI_STAR0 =[^\n]*", "PXI_STAR0 = x")
        run, terminals = root.ask("terminals", "terminals", "5.0.0")
        check(run.returncode == 1 and [*terminals[-1]["failures"]] == ["PXI_Star"], f"terminals with a fault: {terminals[-1]}")
        root.edit(E, r"ORX", "O")
        check(root.ask("findings", "check")[0].returncode == 1, "check of a broken one")
        root.edit(E, r"^ChassisList =[^\n]*", "ChassisList = x")
        broken, document = root.ask("installation", "show")
        check(document and broken.returncode == 1 and "ChassisList" in broken.stderr, "an unreadable description")
    for chassis in (["express:18x3", "classic:8"], ["classic:2:0"]):
        with Root(chassis) as root:
            check(root.show()["failureCount"] == 0, f"make {chassis}")


# A width of slot 2/5, what it is changed to, and the link that show and list then have.
LINKS = [("PeripheralSlotLinkWidth1", "= x", "x4/!1"), ("PeripheralSlotLinkWidth1", "", "x4/?"),
         ("PeripheralModuleLinkWidthMax", "= x", "x4/!1"), ("PeripheralModuleLinkWidthMax", "", "x4/?"),
         ("PeripheralModuleLinkWidthNegotiated", "= x", "!1/8"), ("PeripheralModuleLinkWidthMax", "= 4", "x4/4"),
         ("SlotType", "= PXIeSystemSlot2Link", "x4/8 reduced")]


def testLinks():
    for item, value, link in LINKS:
        with Root() as root:
            root.edit(E, rf"(\[Chassis2Slot5\].*?{item}) *=[^\n]*", rf"\1 {value}")
            for words in (["show", "2"], ["list", "--columns", "place,link"]):
                rows = re.findall(r"^  (?:2/)?5 .*", root.run(*words).stdout, re.M)
                check(len(rows) == 1 and f" {link}  " in rows[0] + "  ", f"{item} {value}: {rows}, not {link}")


# Words to find, and the places of the modules that fit.
FOUND = [
    (["dmm"], "1/9"), (["Tessmere", "rf"], "1/3 1/12 2/5"), (["5.0.0"], "1/2"), (["37:00.0"], "2/5"),
    (["0000:37:00.0"], "2/5"), (["37:"], "2/5"), (["PXI0::5-"], "1/2"), (["TL-20417"], "2/1 2/2 2/4 2/5 2/8"),
    (["1/13"], "1/12"), (["dmm orx-4081"], "1/9"), (['Multimeter  "DMM"'], "1/9"), (["pxi3slot4"], "3/4"), (["81.1"], "3/2 3/3 3/4 3/6"), (["dmm", "tessmere"], ""),
    (["TLX-80"], ""),
]


def places(modules):
    return " ".join(module["place"] for module in modules)


def testModules():
    with Root() as root:
        for words, wanted in FOUND:
            run, found = root.ask("modules", "find", *words)
            check(places(found["modules"]) == wanted and run.returncode == (not wanted),
                  f"find {words}: {places(found['modules'])}, {run.returncode}")
        modules = [json.loads(line) for line in root.run("list", "--jsonl").stdout.splitlines()]
        for module in modules:
            conforms(module, "module", f"list {module}")
        check(len(modules) == 22 and modules[9]["slots"] == [12, 13, 14], "list --jsonl")
        keys = "place,alias,width,reduced,slots,link,addresses"
        rows = list(csv.reader(io.StringIO(root.run("list", "--csv", "--columns", keys, "--pci", "hex").stdout)))
        check(rows[0] == keys.split(",") and len(rows) == 23 and rows[10] == [
            "1/12", "GENERATOR", "4", "0", "12,13,14", "x4/4", "13:00.0 13:00.1"], f"list --csv: {rows[10]}")
        some = json.loads(root.run("list", "--jsonl", "--columns", "place,link").stdout.splitlines()[5])
        check(some == {"place": "1/7", "link": "x1/4 reduced"}, f"list --columns: {some}")
        conforms(some, "module", "list --columns")
        check(root.run("list", "--columns", "place,x").returncode == 2, "a column that is not there")
        # A slot that is not there, an alias that needs quotes, a width that is no number.
        root.edit(E, '18"', '18,19"')
        root.edit(E, '"DMM"', 'D"M,M\x1b\xff')
        root.edit(E, "LinkWidthNegotiated = 8", "LinkWidthNegotiated = x")
        run = root.run("list", "--csv", "--columns", "place,alias,width")
        rows = list(csv.reader(io.StringIO(run.stdout)))
        check(run.returncode == 1 and rows[3] == ["1/3", "ANALYZER", ""] and rows[7][1].startswith('D"M,M\x1b')
              and rows[13] == ["1/19", "", ""] and "slot 1/19" in run.stderr, f"broken list --csv: {rows}")
        check("!1 " in root.run("list").stdout, "a mark in the list")
        found = root.ask("modules", "find", "ANALYZER")[1]
        check(places(found["modules"]) == "1/3 1/19 2/5" and found["failureCount"] == 2 and
              "width" in found["modules"][0]["failures"], f"find in a broken description: {found}")


# From, to, further arguments; the bridges of each way, the star triggers, what is said.
TRIGGERS = [
    ("1/2", "1/17", [], ["1,3"], ["star indirect", "dstar indirect"], ""),
    ("SUPPLY", "5.0.0", ["--all"], ["4,2"], ["star indirect", "dstar indirect"], ""),
    ("1/10", "1/9", [], [""], ["star direct", "dstar direct"], ""), ("0d:00.0", "1/8", [], [""], None, ""),
    ("3/8", "3/2", [], [""], ["star direct"], ""), ("1/2", "2/2", [], [], [], "two chassis"),
    ("1/9", "DMM", [], [""], [], ""), ("nothing", "1/2", [], None, None, 'no module "nothing"; "varmex list" names those that there are\n'),
    ("1/2", "1/99", [], None, None, "no slot 99"),
]


# On simulated chassis: what is asked, the status, and a line of the answer.
MADE = ["express:18", "classic:8", "express:8:2"]
ON_MADE = [
    (["find", "tessmere", "switch", "--pci", "hex"], 0, r"^  1/10 +09:00\.0 "),
    (["find", "PXI0::7-0.0::INSTR"], 0, r"^  1/8 .*MODULE-1-8"), (["find", "0A40008D"], 0, r"^  3/2 "),
    (["find", "module-4"], 1, r"no module fits"), (["find", "2/8"], 0, r"^  2/8 +25\.23\.0 "),
    (["triggers", "1/2", "1/17"], 0, r"^Way 1: bus 1 > bridge 1 > bus 2 > bridge 3 > bus 3$"),
    (["triggers", "MODULE-1-1", "MODULE-3-2"], 1, r"two chassis"),
    (["triggers", "2/2", "2/7"], 0, r"^Star trigger 1: 2/2 is the controller, 2/7 is line 4; this line joins the two\.$"),
    (["triggers", "3/1", "3/8", "--all"], 0, r"^Both are on trigger bus 1"),
    (["list", "--columns", "place,serial"], 0, r"^  3/2 +0A40008D$"),
    (["explain", "2", "ChassisTriggerManagerLibrary"], 0, r"^  3  registry.reg +.HKEY_.*PXISA.Services. absent$"),
    (["explain", "18.29.0", "DeviceNumber"], 0, r"\[Chassis2Slot2Function0\] PCIDeviceNumber = "),
    (["explain", "MODULE-3-2", "DeviceModel"], 0, r"\[Chassis3Slot2\] Model = "),
]


def testMade():
    with Root(MADE) as root:
        for words, status, line in ON_MADE:
            run = root.run(*words)
            check(run.returncode == status and re.search(line, run.stdout + run.stderr, re.M), f"{words}: {run.stdout}{run.stderr}")


def testTriggers():
    with Root() as root:
        def ask(*words):
            return root.ask("triggers", "triggers", *words)

        for origin, target, arguments, ways, stars, said in TRIGGERS:
            run, document = ask(origin, target, *arguments)
            check(said in run.stderr and run.returncode == bool(said), f"triggers {origin} {target}: {run}")
            if document:
                got = [",".join(str(b["bridge"]) for b in way["bridges"]) for way in document["ways"]]
                near = [f"{s['family']} {'direct' if s['isDirect'] else 'indirect'}" for s in document["stars"]]
                check(got == ways and stars in (None, near), f"triggers {origin} {target}: {got} {near}")
        lines = ask("1/8", "1/17")[1]["ways"][0]["lines"]
        check(lines[5:] == [[5], [6, 7], []], f"the lines of bridge 3: {lines}")
        # A line map that can't be read, a slot that breaks the list of the bridges, a slot on no bus.
        root.edit(I, r"^(PXI_TRIG3) =[^\n]*", r"\1 = 8")
        root.edit(E, '18"', '18,19"')
        run, document = ask("1/2", "1/7")
        check(run.returncode == 1 and document["ways"][0]["lines"][3] == [] and len(document["unread"]) == 2
              and "line 3" in run.stderr, f"triggers over a broken bridge: {run}")
        root.edit(E, '"1,2,3,4,5,6"', '"1,3,4,5,6"')
        run, document = ask("1/2", "1/7")
        check("on no trigger bus" in document["reason"] and "bus" not in document["from"], f"no bus: {run}")
        root.edit(E, '"SWITCH"', '"dmm"')
        for name, said in (("DMM", "2 modules; say which by its place: 1/9, 1/11"), ("nothing", "among those that can be read")):
            check(said in ask(name, "1/2")[0].stderr and said in root.run("explain", name).stderr, f"{name}: {said}")


class Watch:
    """A running watch, line by line."""

    def __init__(self, root, *arguments):
        # Without a buffer, in which lines could wait unseen.
        self.process = subprocess.Popen([*VARMEX, "watch", *arguments], env=root.environment(), bufsize=0,
                                        stdout=subprocess.PIPE)

    def take(self, count):
        taken = []
        while len(taken) < count and select.select([self.process.stdout], [], [], DEADLINE)[0]:
            taken.append(self.process.stdout.readline().decode().rstrip("\r\n"))
        return taken

    def end(self):
        self.process.kill()
        self.process.wait()


DIGITIZER = "DIGITIZER-A ORX-5105 Digitizer"
# Edits of a description whose list is broken, one after the other, and all that is told of each.
WATCHED = [
    ([], ['The description can\'t be read: ChassisList in section [System] is no list of numbers: "1,,2" in pxiesys.ini, '
          'line 5. (varmex_errorInformationNotAvailable -380757) Run "varmex check" to see what to mend.']),
    ([(E, "1,,2", "1,2")],
     ["The description can be read.", "new: chassis 1, Orlindt Instruments, Inc. ORX-1820",
      "new: chassis 2, Tessmere Labs TLX-80", "new: chassis 3, Havrel Modular HM-1008"]),
    ([(E, "0A41F27C", "NEW")], ["chassis 1, Orlindt Instruments, Inc. ORX-1820: serial number 0A41F27C -> NEW"]),
    ([(E, r"(\[Chassis1Slot2\].*?Negotiated) = 4", r"\1 = 1")], [f"{DIGITIZER} in slot 1/2: link width x4 -> x1"]),
    ([(E, "$", "\n; nothing new")], []),
    ([(E, "DIGITIZER-A", "FRONT")], ["FRONT ORX-5105 Digitizer in slot 1/2: name DIGITIZER-A -> FRONT"]),
    ([(E, r"\[Chassis1Slot9\]", "[Chassis1Slot19]"), (E, '18"', '18,19"')],
     ["DMM ORX-4081 Multimeter: slot 1/9 -> 1/19", "slot 1/9: state readable -> (can't be read)"]),
    ([(E, "TLX-80", "TLX-81")], ["chassis 2, Tessmere Labs TLX-81: model TLX-80 -> TLX-81"]),
    ([(E, r"\[Chassis2Slot3\]", r"[Chassis2Slot3]\nVendor = W\nModel = D\nAddressInfo = PXI0::99-0.0::INSTR")],
     ["new: W D in slot 2/3"]),
    ([(E, r"^ChassisList =[^\n]*", "ChassisList = 1")], ["gone: chassis 2, Tessmere Labs TLX-81"]),
]


# A place, an attribute, and all that is looked up for it, in order: file, line, section or key, item, text.
MANAGERS = r"HKEY_LOCAL_MACHINE\SOFTWARE\PXISA\Services"
BUS_NAMES = r"HKEY_LOCAL_MACHINE\SOFTWARE\Corvane\COR-VARMEX (32-bit view)"
EXPLAINED = [
    ("1/7", "SlotType", ["pxiesys.ini:177 Chassis1Slot7 SlotType PXIeHybridSlot"]),
    ("DMM", "varmex_u32_SlotType", ["pxiesys.ini:202 Chassis1Slot9 SlotType PXIePeripheralSlot"]),
    ("1/10", "SlotNumber", []), ("machine", "Version", []),
    ("0d:00.0", "DeviceModel", ["pxiesys.ini:201 Chassis1Slot9", "pxiesys.ini:210 Chassis1Slot9 Model ORX-4081 Multimeter"]),
    ("DMM", "DeviceModel", ["pxiesys.ini:201 Chassis1Slot9", "pxiesys.ini:210 Chassis1Slot9 Model ORX-4081 Multimeter"]),
    ("1/bridge/1", "BridgeSourceTriggerBus",
     ["pxisys.ini:25 Chassis1TriggerBridge1", "pxiesys.ini:66 Chassis1TriggerBridge1",
      "pxisys.ini:26 Chassis1TriggerBridge1 SourceTriggerBus 1"]),
    ("1/2", "TriggerBusNumber",
     ["pxiesys.ini:7 Chassis1", "pxiesys.ini:12 Chassis1 TriggerBusList 1,2,3",
      "pxiesys.ini:19 Chassis1TriggerBus1", "pxiesys.ini:20 Chassis1TriggerBus1 SlotList 1,2,3,4,5,6",
      "pxiesys.ini:22 Chassis1TriggerBus2", "pxiesys.ini:23 Chassis1TriggerBus2 SlotList 7,8,9,10,11,12",
      "pxiesys.ini:25 Chassis1TriggerBus3", "pxiesys.ini:26 Chassis1TriggerBus3 SlotList 13,14,15,16,17,18",
      "pxisys.ini:7 Chassis1", "pxiesys.ini:7 Chassis1",
      *(f"{file}.ini:{item}" for item in ("8 Chassis1 Vendor Orlindt Instruments, Inc.", "9 Chassis1 Model ORX-1820")
        for file in ("pxisys", "pxiesys")),
      "pxiesys.ini:13 Chassis1 SerialNumber 0A41F27C", f"registry.reg:36 {BUS_NAMES}",
      f"registry.reg:37 {BUS_NAMES} PXITrigUseStableBusNameFormat 1"]),
    ("3", "ChassisTriggerManagerLibrary",
     [r"pxisys.ini:155 Chassis3 TriggerManager Havrel\Bus Manager", "pxiesys.ini absent TriggerManager",
      *[f"registry.reg:{line} {MANAGERS}{key}" for line, key in (
          (17, ""), (19, r"\Trigger Managers"), (21, r"\Trigger Managers\Havrel"), (23, r"\Trigger Managers\Havrel\Bus Manager"),
          (24, r"\Trigger Managers\Havrel\Bus Manager Library libhavrel_bus_manager.so"))]]),
]


def toldOf(reading):
    place = PureWindowsPath(reading["file"]).name + (f":{reading['line']}" if "line" in reading else "")
    words = [place, "" if reading["isThere"] else "absent", *(reading.get(key, "") for key in ("section", "item", "text"))]
    return " ".join(word for word in words if word)


def holdsAnswers(root, place, wanted, what):
    """Every attribute of an item has the value that show --json has, and where that has none, none."""
    document = root.ask("explanation", "explain", place)[1]
    answers = {one["name"]: one.get("value") for one in document["items"][0]["attributes"]}
    check(answers == {name: wanted.get(name) for name in answers} and len(answers) > 4, f"{what}: {answers}, not {wanted}")


def testExplain():
    for root in Root(), Root(["express:18", "classic:8:2"]):
        with root:
            holdsAnswers(root, "machine", root.show()["machine"], "explain machine")
            for chassis in root.show()["Chassis"]:
                number = str(chassis["ChassisNumber"])
                items = [(number, chassis)]
                items += [(f"{number}/bridge/{bridge['BridgeNumber']}", bridge) for bridge in chassis["TriggerBridges"]]
                for slot in chassis["Slots"]:
                    items.append((f"{number}/{slot['SlotNumber']}", slot))
                    items += [(".".join(str(device[f"Device{part}"]) for part in ("Bus", "Number", "Function")), device)
                              for device in slot["Devices"]]
                for place, wanted in items[:3 if ON_WINDOWS else None]:
                    holdsAnswers(root, place, wanted, f"explain {place}")
    with Root() as root:
        for place, attribute, wanted in EXPLAINED:
            document = root.ask("explanation", "explain", place, attribute)[1]
            told = [toldOf(one) for one in document["items"][0]["attributes"][0]["readings"]]
            wanted = [re.sub(r"registry\.reg(:\d+)?", "registry" if ON_WINDOWS else r"\g<0>", line) for line in wanted]
            check(told == wanted, f"explain {place} {attribute}: {told}")
        found = root.ask("explanation", "explain", "5.0.0", "DeviceModel")[1]["items"][0]["opening"]
        map_of = [toldOf(one) for one in found["readings"]]
        check("pxiesys.ini:128 Chassis1Slot2 AddressInfo PXI0::5-0.0::INSTR;PXI0::5-0.1::INSTR" in map_of and len(map_of) > 100
              and found["section"] == "Chassis1Slot2", f"the map of devices: {map_of}")
        root.edit(E, r"^AddressInfo = .PXI0::2-0[^\n]*", "")  # a controller without addresses
        root.edit(E, r"^SerialNumber[^\n]*", "")
        for words, status, said in ((["1/99", "SlotType"], 1, "Chassis1Slot99"), (["1/1", "SystemSlotModel"], 0, '= "HC-8470 Controller"'),
                                    (["1"], 1, "[Chassis1] has no SerialNumber"), (["1"], 1, "[Chassis1] SerialNumber: absent")):
            run = root.run("explain", *words)
            check(run.returncode == status and said in run.stdout, f"explain {words}: {run.stdout}")


def testWatch():
    with Root() as root:
        root.edit(E, r"^ChassisList =[^\n]*", 'ChassisList = "1,,2"')
        watch, lines, once = Watch(root), Watch(root, "--json"), Watch(root, "--once")
        check("can't be read" in "".join(once.take(1)), "watch --once")
        for edits, wanted in WATCHED:
            root.exchange(edits)
            told = [re.sub(r" in \S*[/\\]pxi", " in pxi", line) for line in watch.take(len(wanted))]
            check([line[21:] for line in told] == wanted, f"watch: {told}, wanted {wanted}")
            check(all(re.match(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d  ", line) for line in told), "the time")
            for line in lines.take(len(wanted)):
                conforms(json.loads(line), "event", line)
                check(json.loads(line)["time"].endswith("+05:30"), "local time")
        if not ON_WINDOWS:  # where it is the system's own
            folder = root.file("")
            shutil.move(folder, str(folder) + ".away")
            check("can't be read" in "".join(watch.take(1)), "watch: the folder is gone")
            shutil.move(str(folder) + ".away", folder)
            check("can be read." in "".join(watch.take(1)), "watch: the folder is back")
        check(once.process.wait(DEADLINE) == 0 and watch.process.poll() is None, "watch goes on, but for --once")
        watch.end()
        lines.end()


RACK = "chassis 1, Orlindt Instruments, Inc. ORX-1820"
# Edits of an installation, options of diff, and all that it tells.
DIFFERENT = [
    ([], [], []), ([(E, "0A41F27C", "NEW")], [], [f"{RACK}: serial number 0A41F27C -> NEW"]),
    ([(E, "0A41F27C", "NEW")], ["--ignore", "serial-number"], []),
    ([(E, rf"\[Chassis1Slot{a}\]", f"[Chassis1Slot{b}]") for a, b in ((9, 99), (11, 9), (99, 11))],
     ["--ignore", "slot"],
     ["DMM ORX-4081 Multimeter: slot 1/9 -> 1/11", "SWITCH TL-310 Switch: slot 1/11 -> 1/9"]),
    ([(E, r"(\[Chassis1Slot2\].*?Negotiated) = 4", r"\1 = 1")], [], [f"{DIGITIZER} in slot 1/2: link width x4 -> x1"]),
    ([(E, r"(\[Chassis1Slot2\].*?Negotiated) = 4", r"\1 = 1")], ["--ignore", "module"], []), ([(E, "PXI0::13-0.0", "PXI0::113-0.0")], [], []),
    ([(E, "PXI0::13-0.0", "PXI0::113-0.0")], ["--addresses"],
     ["DMM ORX-4081 Multimeter in slot 1/9: PCI addresses 13.0.0 13.0.1 13.1.0 -> 13.0.1 13.1.0 113.0.0"]),
    ([(E, "PXI0::13-0.0", "PXI0::113-0.0")], ["--addresses", "--pci", "hex"],
     ["DMM ORX-4081 Multimeter in slot 1/9: PCI addresses 0d:00.0 0d:00.1 0d:01.0 -> 0d:00.1 0d:01.0 71:00.0"]),
    ([(E, r"\+PXI0::13-0.1::INSTR", "")], [], ["DMM ORX-4081 Multimeter in slot 1/9: functions 3 -> 2"]),
    ([(E, r"^ChassisList =[^\n]*", "ChassisList = 1")], [], ["gone: chassis 2, Tessmere Labs TLX-80"]),
    ([(E, r"^ChassisList = \"1,2\"", 'ChassisList = "1,7"'), *[(E, r"\[Chassis2", "[Chassis7")] * 40], [],
     ["chassis 2 -> 7: Tessmere Labs TLX-80"]),
    ([(E, r"(\[Chassis1Slot9\].*?Model) = \"[^\"]*", r'\1 = "ORX-9')], [],
     ["slot 1/9: module DMM ORX-4081 Multimeter -> DMM ORX-9"]),
    ([(E, r"(\[Chassis1Slot9\].*?)AddressInfo[^\n]*", r"\1")], ["--ignore", "slot"],
     ["gone: DMM ORX-4081 Multimeter from slot 1/9"]),
    ([(E, r"(\[Chassis1Slot1\].*?SlotType) = [^\n]*", r"\1 = Odd"), (E, "^AddressInfo = .PXI0::2-0[^\n]*", "")], [],
     ["slot 1/1: type PXIe system, 4 links -> (can't be read)"]),
    ([(E, r"(\[Chassis1Slot7\].*?SlotType) = [^\n]*", r"\1 = Odd")], [], ["slot 1/7: type PXIe hybrid -> (can't be read)"]),
]
MADE_DIFFERENT = [
    ([(E, r"(\[Chassis1Slot5\].*?Negotiated) = 4", r"\1 = 1")], [], ["MODULE-1-5 TL-310 Switch in slot 1/5: link width x4 -> x1"]),
    ([(E, r"\[Chassis1Slot5\]", "[Chassis1Slot7a]"), (E, r"\[Chassis1Slot7\]", "[Chassis1Slot5]"), (E, "7a", "7")],
     ["--ignore", "slot"], ["MODULE-1-5 TL-310 Switch: slot 1/5 -> 1/7"]),
]


def testDiff(chassis, different):
    with Root(chassis) as sample, tempfile.TemporaryDirectory() as place:
        saved = f"{place}/a.json"
        sample.run("save", saved)
        for edits, options, wanted in different:
            with Root(chassis) as root:
                root.exchange(edits)
                told = sample.run("diff", saved, root.folder, *options)
                check(told.stdout.splitlines()[:-1] == wanted and told.returncode == bool(wanted), f"diff {edits[:1]} {options}: {told}")
                check(root.run("diff", saved, *options).stdout == told.stdout, f"diff {edits[:1]} with the machine")
                document = root.ask("differences", "diff", saved, *options)[1]
                check(len(document["changes"]) == len(wanted), f"diff --json {edits[:1]}")
        with Root() as root:
            for edit, arguments, said in (
                    ((E, '18"', '18,19"'), [root.folder, root.folder], "No differences in what can be read"),
                    ((E, r"^ChassisList =[^\n]*", "ChassisList = 1,,2"), [saved, root.folder], f"{root.folder}/{E_PATH}, line"),
                    (None, [f"{place}/none", saved], "can't read"), (None, [saved, f"{place}/none"], "can't read"),
                    (None, [saved, place], "no description"), (None, [saved, "--ignore", "x"], "no such kind")):
                if edit:
                    root.edit(*edit)
                run = sample.run("diff", *arguments)
                check(run.returncode == 2 and said in run.stdout + run.stderr, f"diff {arguments}: {run}")


# Faults of a PCI tree, and what is found, by identifier.
LIVE = [
    ([], []), (["missing"], ["module-not-present"]), (["unlisted"], ["device-not-listed"]),
    (["driverless"], ["no-driver"]), (["narrow"], ["link-width-reduced"]), (["slow"], ["link-speed-reduced"]),
    (["missing", "unlisted", "driverless", "narrow", "slow"],
     ["device-not-listed", "link-speed-reduced", "link-width-reduced", "module-not-present", "no-driver"]),
]
# What no module of some chassis can have so that it would be found.
NOT_FOUND = {"classic:8x3": ["narrow", "slow"], "express:18:2": ["unlisted", "narrow", "slow"]}


def testLive():
    for plans in (["express:18", "classic:8", "express:8"], ["express:4"], ["classic:8x3"], ["express:18:2"]):
        for faults, wanted in LIVE:
            with Root() as root:
                shutil.rmtree(root.file(""))
                made = root.run("make", root.folder, *plans, "--pci", *(f"--pci-fault={f}" for f in faults))
                if made.returncode:
                    check((len(faults) > 1 or faults[0] in NOT_FOUND[plans[0]]) and "no module is left" in made.stderr,
                          f"make {plans} {faults}: {made.stderr}")
                    continue
                for folder in ("misc", "hwdata"):
                    (root.folder / "usr/share" / folder).mkdir(parents=True)
                os.mkfifo(root.folder / "usr/share/misc/pci.ids")  # which nobody waits for
                (root.folder / "usr/share/hwdata/pci.ids").write_text("# x\nfa02  Orlindt\n\t4081  Meter\nC 00  Class\n")
                file = root.folder / "saved.json"
                root.run("save", file)
                live, findings = root.ask("findings", "check", "--live")
                found = sorted(finding["id"] for finding in findings)
                check(found == wanted and live.returncode == bool(wanted), f"{plans} {faults}: {live}")
                saved = root.run("check", "--live", "--json", "--from", file)
                check(saved.stdout == live.stdout.replace("Orlindt Meter ", ""), f"{plans} {faults}: saved {saved}")
                check(root.run("check").stdout == "No findings.\n", f"{plans}: without --live")
                check(("Orlindt Meter [fa02:4081]" in live.stdout) == bool({"device-not-listed", "no-driver"} & set(wanted)),
                      f"{plans} {faults}: names")
                if faults or plans[0] in ("express:4", "express:18:2"):
                    continue
                # Devices of another domain are none of the description's.
                for device in list((root.folder / "sys/bus/pci/devices").iterdir()):
                    shutil.copytree(device, device.with_name("0001" + device.name[4:]), symlinks=True)
                check(root.run("check", "--live").stdout == "No findings.\n", f"{plans}: two domains")
                for device in (root.folder / "sys/bus/pci/devices").glob("0000:*"):
                    if not device.name.startswith("0000:00"):
                        shutil.rmtree(device)
                gone = [finding["id"] for finding in root.ask("findings", "check", "--live")[1]]
                check(set(gone) <= {"chassis-not-present", "module-not-present"}, f"{plans} off: {gone}")
                check(gone.count("chassis-not-present") == (3 if plans == ["classic:8x3"] else len(plans)), f"{plans} off: {gone}")
                shutil.rmtree(root.folder / "sys")
                check("no PCI tree" in root.run("check", "--live").stderr, "no PCI tree")


# Changes of a PCI tree (None takes a function away, others are added), one of pxiesys.ini, and what is found.
# The modules 1/2, 1/3 and 2/3 are on the buses 3, 4 and 7 behind ports of their own (fe:02.0, fe:03.0, fc:03.0).
NARROW, LANES, PORT = {"current_link_width": "4"}, {"current_link_width": "8", "max_link_width": "8"}, {"class": "0x060400"}
SWITCH = {"fe:03.0": {"secondary_bus_number": "200"}, "c8:00.0": {**PORT, **LANES, "secondary_bus_number": "201"},
          "c9:01.0": {**PORT, **LANES, "secondary_bus_number": "4"}}
CHASSIS_OFF = dict.fromkeys(("03:00.0", "03:00.1", "04:00.0", "04:00.1"))
SLOT_3 = r"(\[Chassis1Slot3\].*?PeripheralSlotLinkWidth1) = 8"


def module3(**texts):
    return {"04:00.0": texts, "04:00.1": texts}


TREES = [
    ({"03:00.1": None}, None, [r"pxiesys.ini module-not-present .* 3.0.0 \(03:00.0\) of MODULE-1-2 ORX-\d+ Multimeter in slot 1/2, but no 3.0.1"]),
    ({"07:1c.0": None, "07:1c.1": None}, None, ["pxisys.ini module-not-present PXI2Slot3 in slot 2/3 is not there"]),
    (CHASSIS_OFF, None, ["chassis-not-present none of the 2 modules of chassis 1"]),
    ({**CHASSIS_OFF, "02:00.0": None, "02:00.1": None}, None, ["module-not-present MODULE-1-1", "chassis-not-present"]),
    ({"05:1d.0": {"driver": ""}}, None, []), ({"02:00.0": {"current_link_width": "2"}}, None, []),
    # Links: those of the module alone, with what both ends and the slot can.
    (module3(current_link_width="0"), None, []), ({"ff:00.0": NARROW}, None, []), ({"fe:03.0": {"max_link_width": "4"}, **module3(**NARROW)}, None, []),
    (module3(**NARROW), (SLOT_3, r"\1 = 4"), []), ({}, (SLOT_3, r"\1 = 4"), []), (module3(max_link_speed="5.0 GT/s PCIe"), None, []),
    (module3(**NARROW), (SLOT_3, r"\1 = 0"), ["link-width-reduced .* with 4 lanes, and slot and module can use 8 lanes a link of 8 lanes"]),
    (module3(**NARROW), (r"(\[Chassis1Slot3\].*?)PeripheralModuleLinkWidthNegotiated = 8", r"\1"), ["link-width-reduced .* nothing about the link"]),
    ({**SWITCH, "c9:01.0": {**SWITCH["c9:01.0"], **NARROW}, **module3(current_link_width="4", max_link_width="4")}, None, []),
    ({**SWITCH, "c8:00.0": {**SWITCH["c8:00.0"], **NARROW}}, None, ["link-width-reduced .* at 200.0.0"]),
    ({"fe:03.0": {"secondary_bus_number": "200"}, "c8:00.0": {**SWITCH["c8:00.0"], **NARROW, "secondary_bus_number": "4"},
      **module3(current_link_width="")}, None, ["link-width-reduced .* at 200.0.0"]),
    ({**SWITCH, "c8:00.0": {**SWITCH["c8:00.0"], **NARROW}, **module3(**NARROW)}, None, ["link-width-reduced .* at 4.0.0"]),
    ({**SWITCH, "c8:00.0": {**SWITCH["c8:00.0"], **NARROW}, **module3(current_link_speed="5.0 GT/s PCIe")}, None, ["link-speed-reduced .* at 4.0.0"]),
    # Devices in no slot: one finding for all functions, behind bridges of several slots alone.
    ({"04:01.0": {}}, None, []), ({"02:01.0": {}}, None, ["device-not-listed 2.1.0"]), ({"fe:00.0": {}, "fe:00.1": {}}, None, ["device-not-listed 254.0.0"]),
    ({"fe:06.0": {**PORT, "secondary_bus_number": "210"}, "d2:00.0": {}}, None, ["device-not-listed 210.0.0"]),
    ({"fe:06.0": {}, "fe:07.0": {}}, None, ["device-not-listed 254.6.0", "device-not-listed 254.7.0"]),
]


def testTrees():
    with Root(["express:8:3", "classic:4", "--pci"]) as root:
        document = json.loads(root.run("save").stdout)
        tree, text, file = {device["address"]: device for device in document["pci"]}, "".join(document["files"][E_PATH]), root.folder / "saved.json"
        for changes, edit, wanted in TREES:
            devices = dict(tree)
            for address, change in changes.items():
                key = f"0000:{address}"
                devices[key] = change is not None and {**devices.get(key, {"address": key, "class": "0x118000"}), **change}
            document["pci"] = [device for device in devices.values() if device]
            document["files"][E_PATH] = [re.sub(*edit, text, flags=re.S) if edit else text]
            file.write_text(json.dumps(document))
            told = [" ".join(finding[key] for key in ("file", "id", "message", "answer"))
                    for finding in root.ask("findings", "check", "--live", "--from", file)[1]]
            check(len(told) == len(wanted) and all(map(re.search, wanted, told)), f"{changes} {edit}: {told}")


def testFleet():
    """The example of docs/fleet.md over 1,000 racks of two weeks, two of them changed."""
    with Root(["express:18"]) as root, tempfile.TemporaryDirectory() as place:
        text = json.dumps(json.loads(root.run("save").stdout))
        serial = re.search(r"SerialNumber = \W*(\w+)", text).group(1)
        for rack in range(500):
            one = text.replace(serial, f"S{rack:04}")
            for day in ("2026-11-14", "2026-11-21"):
                if (rack, day) == (42, "2026-11-21"):
                    one = one.replace("LinkWidthNegotiated = 8", "LinkWidthNegotiated = 2", 1)
                    one = re.sub(r"\[Chassis1Slot([23])\]", lambda slot: f"[Chassis1Slot{5 - int(slot[1])}]", one)
                Path(place, day).mkdir(exist_ok=True)
                Path(place, day, f"rack-{rack:04}.json").write_text(one)
        blocks = re.findall(r"^```sh\n(.*?)^```", (TOP / "docs/fleet.md").read_text(), re.M | re.S)
        path = f"{Path(VARMEX[-1]).parent}:{os.environ['PATH']}"
        told = [subprocess.run(["bash", "-ec", block], cwd=place, env=dict(os.environ, PATH=path),
                               capture_output=True, text=True, timeout=10 * DEADLINE) for block in blocks]
        check(all(run.returncode == 0 and not run.stderr for run in told), f"docs/fleet.md: {told}")
        narrow, moved = (run.stdout.splitlines()[2:] for run in told[-2:])
        check(len(narrow) == 1 and "rack-0042" in narrow[0], f"below the full width: {narrow}")
        check(len(moved) == 2 and all("rack-0042" in line for line in moved), f"moved: {moved}")
        Path(place, "2026-11-21/rack-0007.json").write_text("{")
        os.mkfifo(f"{place}/2026-11-21/pipe.json")  # which nobody waits for
        run = root.run("list", "--csv", "--columns", "alias", "--from", f"{place}/2026-11-21")
        check(run.returncode == 1 and run.stdout.startswith("from,alias\n") and len(run.stdout.splitlines()) > 499
              and run.stderr.count("rack-0007") == 1 and "std::" not in run.stderr,
              f"a saved file that can't be read: {run.stderr}")


REGISTRY = {"key": "SOFTWARE\\PXISA", "name": "Library"}
# What a saved file is changed to, by key, and what is said of it; None takes a key away.
HOSTILE = [
    *[("files", {path: "x"}, "no place for") for path in ("../../tmp/out", "/etc/passwd", "etc/pxi/registry.reg")],
    ("files", [], "no object"), ("files", None, "files: it is missing"), ("files", {E_PATH: 5}, "neither"),
    ("files", {E_PATH: ["a", 5]}, "neither"), ("files", {f"k{n}": "" for n in range(101)}, "too many members"),
    ("files", {E_PATH: [""] * 1000001}, "too many elements"), *[
        ("files", {E_PATH: {"base64": digits}}, "base64") for digits in ("AAA", "AB==", "A*==")],
    ("host", 5, "no text"), ("varmex saved installation", 2, "another version"), ("varmex saved installation", None, "it has no"),
    ("registry", {}, "no list"), ("registry", [[]], "no object"), ("registry", [{}] * 1001, "no list"),
    ("registry", [REGISTRY], "without text"), ("registry", [{**REGISTRY, "key": "a\n[b]", "text": ""}], "no name"),
    *[("registry", [{**REGISTRY, "number": number}], "32 bits") for number in (-1, 2**32)],
    ("registry", [{**REGISTRY, "text": "x" * 2**21}], "too long"), ("pci", {}, "no list"), ("pci", [{}], "without an address"),
    *[("chassisDescriptionFiles", [file], "missing") for file in ({"path": "x"}, 5)],
    *[("pci", [{"address": text}], "no PCI address") for text in ("5", "0:100:0.0")],
    *[("pci", [{"address": "0:1:0.0", "class": of}], "plain text") for of in (5, "x" * 257)],
    ("other", [[[[[[[[[]]]]]]]]], "too deeply"),
    # Whole texts of files that are no saved installations.
    *[(None, text, "no saved installation") for text in (
        b"", b"{", b"5", b"[" * 100000, b'{"host": "a", "host": "b"}', b'{"a": "\xff"}', b"\0")],
]


def testSave():
    with Root() as root:
        root.edit(E, r"\Z", "\n; \xe4\r\n")
        document = json.loads(root.run("save").stdout)
        equal(errors_of(document, schema_of("saved.schema.json")), [], "a saved file against its schema")
        check(base64.b64decode(document["files"][E_PATH]["base64"]) == root.file(E).read_bytes(), E)
        check("".join(document["files"][I_PATH]) == root.file(I).read_bytes().decode(), I)
        root.edit(I, r"\Z", "\x01" * 12000000)
        large = root.run("save")
        check(large.returncode == 1 and not large.stdout and "64 MB" in large.stderr, f"save of too much: {large.stderr}")
        check(len(document["registry"]) == 6 and document["platform"] == ("windows" if ON_WINDOWS else "linux"), f"{document['registry']}")


def testSaved():
    with Root() as root, Root(["express:2"]) as other, tempfile.TemporaryDirectory() as place:
        shared = Path(place)
        os.environ["TMPDIR"] = place

        def run(*arguments, **more):
            done = other.run(*arguments, **more)
            left = [str(path) for path in shared.glob("varmex-saved-*")]
            check(not left, f"{arguments} leaves {left}")
            return done

        (root.folder / "usr/share/pxi/chassis/orlindt").mkdir(parents=True)
        (root.folder / "usr/share/pxi/chassis/orlindt/ORX-1820.INI").write_text("[X]\n\n")
        for name in I, E:
            root.edit(name, r"ORX-1820\.ini(.*)", "ORX-1820.INI\\1; \xe4\r\n")
        file = shared / "rack.json"
        check(run("save", "--from", root.folder, file).returncode == 0, "save")
        document = json.loads(file.read_text())
        check([f["content"] for f in document["chassisDescriptionFiles"]] == [["[X]\n", "\n"]], "chassis files")
        # Every command answers the same of the folder and of the file.
        for arguments in (["show"], ["show", "--json", "--why"], ["show", "1/10"], ["check"], ["draw", "-o", "-"],
                          ["terminals", "5.0.0"], ["route", "5.0.0", "PXI_Trig3"], ["show", "9"], ["find", "dmm"],
                          ["list"], ["triggers", "1/2", "SUPPLY"], ["explain", "3"], ["explain", "DMM"]):
            live, saved = root.run(*arguments), run(*arguments, "--from", file)
            timeless = [re.sub(r'\d\d:\d\d:\d\d UTC|(?<=registry)\.reg(:\d+)?|(saved|description) +.*|,\s+"saved": {[^}]*}| +', "", text)
                        for text in (live.stdout, saved.stdout.replace(f"{file}:", str(root.folder)))]
            check(live.returncode == saved.returncode and len(set(timeless)) == 1, f"{arguments} --from")
        shown = other.show("--from", file)
        check(shown["machine"]["saved"] == {key: document[key] for key in ("taken", "host", "platform", "version")}, "when saved")
        kept = shared / "kept.json"
        kept.write_text("old")
        kept.chmod(0o640)
        left, used = (shared / f"kept.json.varmex-new-{number}" for number in (7, 8))
        left.touch()
        writer = used.open("w")
        fcntl.flock(writer, fcntl.LOCK_EX)
        (shared / "link.json").symlink_to(kept)
        failed_save = run("save", kept, ahead=["bash", "-c", 'ulimit -f 1; trap "" XFSZ; exec "$@"', "-"])
        check(failed_save.returncode == 1 and "can't write" in failed_save.stderr and kept.read_text() == "old",
              f"save without room: {failed_save.stderr}")
        check(run("save", shared / "link.json").returncode == 0 and (shared / "link.json").is_symlink(), "save through a link")
        check(json.loads(kept.read_text()) and kept.stat().st_mode & 0o777 == 0o640, "the mode of what is replaced")
        check(list(shared.glob("*-new-*")) == [used], "beside what is replaced only what another one writes")
        for arguments in (["watch"], ["save"]):
            check("takes folders" in run(*arguments, "--from", file).stderr, f"{arguments} of a file")
        for name in (shared / "nothing.json", "", "/dev/zero", "-"):
            check(run("check", "--from", name, stdin=subprocess.DEVNULL).returncode == 2, f"check --from {name}")
        for name in ("-", "/dev/stdin"):
            check("DMM" in run("find", "dmm", "--from", name, input=file.read_text()).stdout, f"--from {name}")
        bad = shared / "bad.json"
        for key, value, reason in HOSTILE:
            broken = {**document, key: value} if value is not None else without(key, document)
            bad.write_bytes(json.dumps(broken).encode() if key else value)
            said = run("show", "--from", bad)
            check(said.returncode == 1 and reason in said.stderr, f"{key} {str(value)[:60]}: {said.stderr}")
        # Signals in the midst of the work, and what a kill left.
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGPIPE, signal.SIGRTMIN + 1, signal.SIGRTMAX, signal.SIGKILL):
            process = subprocess.Popen([*VARMEX, "show", "--from", file], env=other.environment(), stdout=subprocess.PIPE)
            while process.poll() is None and not list(shared.glob("varmex-saved-*/var/lib/PXISA")):
                pass
            process.send_signal(number)
            process.wait(DEADLINE)
            check(number == signal.SIGKILL or not list(shared.glob("varmex-saved-*")), f"a signal {number} leaves nothing")
        run("show", "--from", file)


# Windows has no other roots than its own, and no tree of files for the bus.
ANYWHERE, ON_LINUX = (testDocuments, testBroken, testLinks, testModules, testTriggers, testExplain, testSave, testWatch), (
    testMade, testFleet, lambda: testDiff(None, DIFFERENT), lambda: testDiff(MADE, MADE_DIFFERENT), testLive, testTrees, testSaved)
for test in ANYWHERE if ON_WINDOWS else ANYWHERE + ON_LINUX:
    test()
finish()
