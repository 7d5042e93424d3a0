#!/usr/bin/python3
"""describeTest.py [RUNNER...] VARMEX : what the command tells of broken installations, as text, JSON and events."""

import base64
import csv
import io
import json
import os
import queue
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

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
        old = self.file(name).read_text(encoding="latin-1")
        new = re.sub(pattern, text, old, count=1, flags=re.M | re.S)
        assert new != old, (name, pattern)
        beside = self.file(name + ".new")
        beside.write_text(new, encoding="latin-1")
        beside.replace(self.file(name))

    def environment(self):
        return dict(os.environ, VARMEX_FSROOT=str(self.folder), TZ="IST-5:30")

    def run(self, *arguments):
        return subprocess.run([*VARMEX, *arguments], env=self.environment(), capture_output=True,
                              text=True, errors="replace", timeout=DEADLINE)

    def show(self, *arguments):
        return json.loads(self.run("show", "--json", *arguments).stdout)


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
    ("a list of modules' functions that is none",
     [(I, r"(\[Chassis1Slot5\]\n)(.*?PCIBusNumber) =[^\n]*", r"\1\2 = None")], [], r"/C1/S5/"),
]


def testBroken():
    with Root() as root:
        healthy, none = flatten(root.show())
        check(not none, "the sample has no failures")
    for what, edits, failures, lost in BROKEN:
        with Root() as root:
            for edit in edits:
                root.edit(*edit)
            document = root.show()
            conforms(document, "installation", what)
            answers, found = flatten(document)
            check(found == set(failures), f"{what}: failures {found}")
            check(document["failureCount"] == len(failures), f"{what}: count")
            gone = {place for place in healthy if healthy[place] != answers.get(place)}
            known = set(failures)
            gone = {p for p in gone if p not in known and not (lost and re.match(lost, p))}
            check(not gone, f"{what} hides {sorted(gone)[:5]}")
            status = int(bool(failures))
            text = root.run("show")
            marks = set(re.findall(r"!\d+", text.stdout))
            check(text.returncode == status, f"{what}: status of show")
            check(bool(marks) == bool(failures), f"{what}: marks {marks}")
            check(('Run "varmex check"' in text.stdout) == bool(failures), f"{what}: the last line")
            check("Chassis 3: Havrel" in text.stdout, f"{what}: the last chassis")
            check(root.run("show", "2").returncode == 0, f"{what}: show 2")
            picture = root.run("draw", "-o", "-")
            check(picture.returncode == status, f"{what}: status of draw")
            check(all(f"{mark} " in picture.stdout for mark in marks), f"{what}: marks in the picture")


def testDocuments():
    with Root() as root:
        for arguments in ([], ["1"], ["1/10"], ["--why"], ["3/2", "--why"]):
            conforms(root.show(*arguments), "installation", f"show {arguments}")
        one = root.show("1/10")["Chassis"]
        check(len(one) == 1 and len(one[0]["Slots"]) == 1, "show 1/10 tells of one slot")
        whole = root.show()
        check(whole == without("absent", root.show("--why")), "--why adds reasons and nothing else")
        why = root.show("1/10", "--why")["Chassis"][0]["Slots"][0]["absent"]
        check(why["StarTriggerLine"]["constant"] == "varmex_errorStarController", "the reason")
        conforms(json.loads(root.run("check", "--json").stdout), "findings", "check")
        conforms(json.loads(root.run("terminals", "5.0.0", "--json").stdout), "terminals", "terminals")
        conforms(json.loads(root.run("route", "5.0.0", "PXI_Trig3", "--json").stdout), "route", "route")
        root.edit(E, r"ORX", "O")
        conforms(json.loads(root.run("check", "--json").stdout), "findings", "check of a broken one")
        root.edit(E, r"^ChassisList =[^\n]*", "ChassisList = x")
        broken = root.run("show", "--json")
        check(broken.returncode == 1 and "ChassisList" in broken.stderr, "an unreadable description")
        conforms(json.loads(broken.stdout), "installation", "an unreadable description")
    for chassis in (["express:18x3", "classic:8"], ["classic:2:0"]):
        with Root(chassis) as root:
            conforms(root.show(), "installation", f"make {chassis}")


# Words to find, and the places of the modules that fit.
FOUND = [
    (["dmm"], "1/9"), (["Tessmere", "rf"], "1/3 1/12 2/5"), (["5.0.0"], "1/2"), (["37:00.0"], "2/5"),
    (["0000:37:00.0"], "2/5"), (["37:"], "2/5"), (["PXI0::5-"], "1/2"), (["TL-20417"], "2/1 2/2 2/4 2/5 2/8"),
    (["1/12"], "1/12"), (["pxi3slot4"], "3/4"), (["81.1"], "3/2 3/3 3/4 3/6"), (["dmm", "tessmere"], ""),
    (["TLX-80"], ""),
]


def places(modules):
    return " ".join(module["place"] for module in modules)


def testModules():
    with Root() as root:
        for words, wanted in FOUND:
            run = root.run("find", *words, "--json")
            found = json.loads(run.stdout)
            conforms(found, "modules", f"find {words}")
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
        found = json.loads(root.run("find", "ANALYZER", "--json").stdout)
        conforms(found, "modules", "find in a broken description")
        check(places(found["modules"]) == "1/3 1/19 2/5" and found["failureCount"] == 2 and
              "width" in found["modules"][0]["failures"], f"find in a broken description: {found}")


# From, to, further arguments; the bridges of each way, the star triggers, what is said.
TRIGGERS = [
    ("1/2", "1/17", [], ["1,3"], ["star indirect", "dstar indirect"], ""),
    ("SUPPLY", "5.0.0", ["--all"], ["4,2"], ["star indirect", "dstar indirect"], ""),
    ("1/10", "1/9", [], [""], ["star direct", "dstar direct"], ""), ("0d:00.0", "1/8", [], [""], None, ""),
    ("3/8", "3/2", [], [""], ["star direct"], ""), ("1/2", "2/2", [], [], [], "two chassis"),
    ("1/1", "2/1", [], [], [], "two chassis"), ("nothing", "1/2", [], None, None, "no module"),
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
    (["triggers", "2/2", "2/7"], 0, r"^Star trigger 1: 2/2 is the controller, 2/7 is line 4; this line joins"),
    (["triggers", "3/1", "3/8", "--all"], 0, r"^Both are on trigger bus 1"),
    (["list", "--columns", "place,serial"], 0, r"^  3/2 +0A40008D$"),
    (["explain", "2", "ChassisTriggerManagerLibrary"], 0, r"^  3  registry +.HKEY_.*PXISA.Services. absent$"),
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
        def ask(origin, target, *arguments):
            run = root.run("triggers", origin, target, "--json", *arguments)
            document = json.loads(run.stdout) if run.stdout else None
            if document:
                conforms(document, "triggers", f"triggers {origin} {target}")
            return run, document

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


class Watch:
    """A running watch, line by line."""

    def __init__(self, root, *arguments):
        self.process = subprocess.Popen([*VARMEX, "watch", *arguments], env=root.environment(),
                                        stdout=subprocess.PIPE, text=True)
        self.lines = queue.Queue()
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stdout:
            self.lines.put(line.rstrip("\n"))

    def take(self, count):
        taken = []
        try:
            while len(taken) < count:
                taken.append(self.lines.get(timeout=DEADLINE))
        except queue.Empty:
            pass
        return taken

    def end(self):
        self.process.kill()
        self.process.wait()


DIGITIZER = "DIGITIZER-A ORX-5105 Digitizer"
# Edits one after the other, and all that is told of each.
WATCHED = [
    ([(E, "0A41F27C", "NEW")],
     ["chassis 1, Orlindt Instruments, Inc. ORX-1820: serial number 0A41F27C -> NEW"]),
    ([(E, r"(\[Chassis1Slot2\].*?Negotiated) = 4", r"\1 = 1")],
     [f"{DIGITIZER} in slot 1/2: link width x4 -> x1"]),
    ([(E, "$", "\n; nothing new")], []),
    ([(E, "DIGITIZER-A", "FRONT")],
     ["FRONT ORX-5105 Digitizer in slot 1/2: name DIGITIZER-A -> FRONT"]),
    ([(E, r"\[Chassis1Slot9\]", "[Chassis1Slot19]"), (E, '18"', '18,19"')],
     ["DMM ORX-4081 Multimeter: slot 1/9 -> 1/19",
      "slot 1/9: state readable -> (can't be read)"]),
    ([(E, r"^ChassisList =[^\n]*", "ChassisList = 1,,2")],
     ["The description can't be read: ChassisList in section [System] is no list of numbers. "
      "(varmex_errorInformationNotAvailable -380757)"]),
    ([(E, r"^ChassisList =[^\n]*", "ChassisList = 1")],
     ["The description can be read.", "gone: chassis 2, Tessmere Labs TLX-80"]),
]


def exchange(root, edits):
    """Another file in the place of the description, at once."""
    beside = root.file(E + ".next")
    text = root.file(E).read_text(encoding="latin-1")
    for _, pattern, by in edits:
        text = re.sub(pattern, by, text, count=1, flags=re.M | re.S)
    beside.write_text(text, encoding="latin-1")
    beside.replace(root.file(E))


def begin(root, *watches):
    """Changes the description until all watches tell of it, and then back."""
    for number in range(DEADLINE):
        if all(watch.lines.qsize() for watch in watches):
            break
        exchange(root, [(E, r"0A41F27C|W\d+", f"W{number}")])
        time.sleep(0.5)
    exchange(root, [(E, r"W\d+", "0A41F27C")])
    for watch in watches:
        while not any("0A41F27C" in line[-12:] for line in watch.take(1) or ["0A41F27C"]):
            pass


# A place, an attribute, and all that is looked up for it, in order: file, line, section or key, item, text.
MANAGERS = r"HKEY_LOCAL_MACHINE\SOFTWARE\PXISA\Services"
BUS_NAMES = r"HKEY_LOCAL_MACHINE\SOFTWARE\Corvane\COR-VARMEX (32-bit view)"
EXPLAINED = [
    ("1/7", "SlotType", ["pxiesys.ini:177 Chassis1Slot7 SlotType PXIeHybridSlot"]),
    ("DMM", "varmex_u32_SlotType", ["pxiesys.ini:202 Chassis1Slot9 SlotType PXIePeripheralSlot"]),
    ("1/10", "SlotNumber", []),
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
      "pxiesys.ini:13 Chassis1 SerialNumber 0A41F27C", f"registry {BUS_NAMES}",
      f"registry {BUS_NAMES} PXITrigUseStableBusNameFormat 1"]),
    ("3", "ChassisTriggerManagerLibrary",
     [r"pxisys.ini:155 Chassis3 TriggerManager Havrel\Bus Manager", "pxiesys.ini absent TriggerManager",
      f"registry {MANAGERS}", rf"registry {MANAGERS}\Trigger Managers", rf"registry {MANAGERS}\Trigger Managers\Havrel",
      rf"registry {MANAGERS}\Trigger Managers\Havrel\Bus Manager",
      rf"registry {MANAGERS}\Trigger Managers\Havrel\Bus Manager Library libhavrel_bus_manager.so"]),
]


def toldOf(reading):
    place = Path(reading["file"]).name + (f":{reading['line']}" if "line" in reading else "")
    words = [place, "" if reading["isThere"] else "absent", *(reading.get(key, "") for key in ("section", "item", "text"))]
    return " ".join(word for word in words if word)


def holdsAnswers(root, place, wanted, what):
    """Every attribute of an item has the value that show --json has, and where that has none, none."""
    run = root.run("explain", place, "--json")
    document = json.loads(run.stdout)
    conforms(document, "explanation", what)
    answers = {one["name"]: one.get("value") for one in document["items"][0]["attributes"]}
    check(answers == {name: wanted.get(name) for name in answers} and len(answers) > 8, f"{what}: {answers}, not {wanted}")


def testExplain():
    for root in Root(), Root(["express:18", "classic:8:2"]):
        with root:
            for chassis in root.show()["Chassis"]:
                number = str(chassis["ChassisNumber"])
                items = [(number, chassis)]
                items += [(f"{number}/bridge/{bridge['BridgeNumber']}", bridge) for bridge in chassis["TriggerBridges"]]
                for slot in chassis["Slots"]:
                    items.append((f"{number}/{slot['SlotNumber']}", slot))
                    items += [(".".join(str(device[f"Device{part}"]) for part in ("Bus", "Number", "Function")), device)
                              for device in slot["Devices"]]
                for place, wanted in items:
                    holdsAnswers(root, place, wanted, f"explain {place}")
    with Root() as root:
        for place, attribute, wanted in EXPLAINED:
            document = json.loads(root.run("explain", place, attribute, "--json").stdout)
            told = [toldOf(one) for one in document["items"][0]["attributes"][0]["readings"]]
            check(told == wanted, f"explain {place} {attribute}: {told}")
        found = json.loads(root.run("explain", "5.0.0", "DeviceModel", "--json").stdout)["items"][0]["opening"]
        map_of = [toldOf(one) for one in found["readings"]]
        check("pxiesys.ini:128 Chassis1Slot2 AddressInfo PXI0::5-0.0::INSTR;PXI0::5-0.1::INSTR" in map_of, f"{map_of}")
        check(len(map_of) > 100 and found["section"] == "Chassis1Slot2", "the map of devices")
        missing = root.run("explain", "1/99", "SlotType")
        check(missing.returncode == 1 and "Chassis1Slot99" in missing.stdout, f"explain 1/99: {missing.stdout}")
        root.edit(E, r"^AddressInfo = .PXI0::2-0[^\n]*", "")
        check("= \"HC-8470 Controller\"" in root.run("explain", "1/1", "SystemSlotModel").stdout, "a controller without addresses")
        root.edit(E, r"^SerialNumber[^\n]*", "")
        refused = root.run("explain", "1").stdout
        check("[Chassis1] has no SerialNumber" in refused and "[Chassis1] SerialNumber: absent" in refused, f"explain 1: {refused}")


def testWatch():
    with Root() as root:
        watch, lines = Watch(root), Watch(root, "--json")
        begin(root, watch, lines)
        for edits, wanted in WATCHED:
            exchange(root, edits)
            told = watch.take(len(wanted))
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
        check(watch.process.poll() is None, "watch goes on")
        watch.end()
        lines.end()


RACK = "chassis 1, Orlindt Instruments, Inc. ORX-1820"
# Edits of an installation, options of diff, and all that it tells.
DIFFERENT = [
    ([], [], []),
    ([(E, "0A41F27C", "NEW")], [], [f"{RACK}: serial number 0A41F27C -> NEW"]),
    ([(E, "0A41F27C", "NEW")], ["--ignore", "serial-number"], []),
    ([(E, rf"\[Chassis1Slot{a}\]", f"[Chassis1Slot{b}]") for a, b in ((9, 99), (11, 9), (99, 11))],
     ["--ignore", "slot"],
     ["DMM ORX-4081 Multimeter: slot 1/9 -> 1/11", "SWITCH TL-310 Switch: slot 1/11 -> 1/9"]),
    ([(E, r"(\[Chassis1Slot2\].*?Negotiated) = 4", r"\1 = 1")], [], [f"{DIGITIZER} in slot 1/2: link width x4 -> x1"]),
    ([(E, r"(\[Chassis1Slot2\].*?Negotiated) = 4", r"\1 = 1")], ["--ignore", "module"], []),
    ([(E, "PXI0::13-0.0", "PXI0::113-0.0")], [], []),
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
]


def testDiff():
    with Root() as sample, tempfile.TemporaryDirectory() as place:
        saved = f"{place}/a.json"
        sample.run("save", saved)
        for edits, options, wanted in DIFFERENT:
            with Root() as root:
                for name, pattern, text in edits:
                    old = root.file(name).read_text(encoding="latin-1")
                    if re.search(pattern, old, flags=re.M | re.S):
                        root.edit(name, pattern, text)
                told = sample.run("diff", saved, root.folder, *options)
                lines = told.stdout.splitlines()
                check(lines[:-1] == wanted, f"diff {edits[:1]} {options}: {told.stdout}{told.stderr}")
                check(told.returncode == bool(wanted), f"diff {edits[:1]}: status")
                check(root.run("diff", saved, *options).stdout == told.stdout, f"diff {edits[:1]} with the machine")
                document = json.loads(root.run("diff", saved, *options, "--json").stdout)
                conforms(document, "differences", f"diff {edits[:1]}")
                check(len(document["changes"]) == len(wanted), f"diff --json {edits[:1]}")
        with Root() as root:
            root.edit(E, '18"', '18,19"')
            check("faults hide 1 answer of" in sample.run("diff", saved, root.folder).stderr, "diff of a broken one")
            root.edit(E, r"^ChassisList =[^\n]*", "ChassisList = 1,,2")
            check(f"{root.folder} can't be read" in sample.run("diff", saved, root.folder).stderr, "which can't be read")
        for arguments in ([f"{place}/none", saved], [saved, f"{place}/none"], [saved, place], [saved, "--ignore", "x"]):
            check(sample.run("diff", *arguments).returncode == 2, f"diff {arguments}")


# Faults of a PCI tree, and what is found, by identifier.
LIVE = [
    ([], []),
    (["missing"], ["module-not-present"]), (["unlisted"], ["device-not-listed"]),
    (["driverless"], ["no-driver"]), (["narrow"], ["link-width-reduced"]), (["slow"], ["link-speed-reduced"]),
    (["missing", "unlisted", "driverless", "narrow", "slow"],
     ["device-not-listed", "link-speed-reduced", "link-width-reduced", "module-not-present", "no-driver"]),
]


def testLive():
    for plans in (["express:18", "classic:8", "express:8"], ["express:4"], ["classic:8x3"]):
        for faults, wanted in LIVE:
            with Root() as root:
                shutil.rmtree(root.file(""))
                made = root.run("make", root.folder, *plans, "--pci", *(f"--pci-fault={f}" for f in faults))
                if made.returncode:
                    check(len(faults) > 2 and "no module is left" in made.stderr, f"make {plans} {faults}: {made.stderr}")
                    continue
                (root.folder / "usr/share/misc").mkdir(parents=True)
                (root.folder / "usr/share/misc/pci.ids").write_text("# x\nfa02  Orlindt\n\t4081  Meter\nC 00  Class\n")
                file = root.folder / "saved.json"
                root.run("save", file)
                live = root.run("check", "--live", "--json")
                if plans == ["classic:8x3"]:  # without links
                    wanted = [kind for kind in wanted if not kind.startswith("link-")]
                conforms(json.loads(live.stdout), "findings", f"check --live {faults}")
                found = sorted(finding["id"] for finding in json.loads(live.stdout))
                check(found == wanted, f"{plans} {faults}: {live.stdout}{live.stderr}")
                check(live.returncode == bool(wanted), f"{plans} {faults}: status")
                saved = root.run("check", "--live", "--json", "--from", file)
                without_names = re.sub(r"Orlindt Meter ", "", live.stdout)
                check(saved.stdout == without_names, f"{plans} {faults}: saved {saved.stdout}{saved.stderr}")
                check(root.run("check").stdout == "No findings.\n", f"{plans}: without --live")
                named = {"device-not-listed", "no-driver"} & set(wanted)
                check(("Orlindt Meter [fa02:4081]" in live.stdout) == bool(named), f"{plans} {faults}: names")
                if faults or plans == ["express:4"]:
                    continue
                for device in (root.folder / "sys/bus/pci/devices").iterdir():
                    if not device.name.startswith("0000:00"):
                        shutil.rmtree(device)
                gone = [finding["id"] for finding in json.loads(root.run("check", "--live", "--json").stdout)]
                check(set(gone) <= {"chassis-not-present", "module-not-present"}, f"{plans} off: {gone}")
                check(gone.count("chassis-not-present") == (3 if plans == ["classic:8x3"] else len(plans)), f"{plans} off: {gone}")
                shutil.rmtree(root.folder / "sys")
                check("no PCI tree" in root.run("check", "--live").stderr, "no PCI tree")


def testFleet():
    """The example of docs/fleet.md over 1,000 racks of two weeks, two of them changed."""
    with Root(["express:18"]) as root, tempfile.TemporaryDirectory() as place:
        saved = json.loads(root.run("save").stdout)
        text = json.dumps(saved)
        serial = re.search(r"SerialNumber = \W*(\w+)", text).group(1)
        for rack in range(500):
            one = text.replace(serial, f"S{rack:04}")
            for day in ("2026-11-14", "2026-11-21"):
                folder = Path(place, day)
                folder.mkdir(exist_ok=True)
                if (rack, day) == (42, "2026-11-21"):
                    one = one.replace("LinkWidthNegotiated = 8", "LinkWidthNegotiated = 2", 1)
                    one = re.sub(r"\[Chassis1Slot([23])\]", lambda slot: f"[Chassis1Slot{5 - int(slot[1])}]", one)
                (folder / f"rack-{rack:04}.json").write_text(one)
        blocks = re.findall(r"^```sh\n(.*?)^```", (TOP / "docs/fleet.md").read_text(), re.M | re.S)
        path = f"{Path(VARMEX[-1]).parent}:{os.environ['PATH']}"
        told = [subprocess.run(["bash", "-ec", block], cwd=place, env=dict(os.environ, PATH=path),
                               capture_output=True, text=True, timeout=10 * DEADLINE) for block in blocks]
        check(all(run.returncode == 0 and not run.stderr for run in told), f"docs/fleet.md: {told}")
        narrow, moved = (run.stdout.splitlines()[2:] for run in told[-2:])
        check(len(narrow) == 1 and "rack-0042" in narrow[0], f"below the full width: {narrow}")
        check(len(moved) == 2 and all("rack-0042" in line for line in moved), f"moved: {moved}")
        Path(place, "2026-11-21/rack-0007.json").write_text("{")
        run = root.run("list", "--csv", "--from", f"{place}/2026-11-21")
        check(run.returncode == 1 and len(run.stdout.splitlines()) > 499 and "rack-0007" in run.stderr,
              f"a saved file that can't be read: {run.stderr}")


I_PATH, E_PATH = "etc/pxi/pxisys.ini", "etc/pxi/pxiesys.ini"
REGISTRY = {"key": "SOFTWARE\\PXISA", "name": "Library"}
# What a saved file is changed to, by key, and what is said of it; None takes a key away.
HOSTILE = [
    ("files", {"../../tmp/out": "x"}, "no place for"), ("files", {"/etc/passwd": "x"}, "no place for"),
    ("files", {"etc/pxi/registry.reg": "x"}, "no place for"), ("files", [], "no object"),
    ("files", {E_PATH: 5}, "neither"), ("files", {E_PATH: ["a", 5]}, "neither"),
    ("files", {E_PATH: {"base64": "AAA"}}, "base64"), ("files", {E_PATH: {"base64": "AB=="}}, "base64"),
    ("files", {f"k{n}": "" for n in range(101)}, "too many members"),
    ("files", {E_PATH: {"base64": "A*=="}}, "base64"), ("files", None, "files: it is missing"),
    ("host", 5, "no text"), ("varmex saved installation", 2, "another version"),
    ("varmex saved installation", None, "it has no"),
    ("registry", {}, "no list"), ("registry", [[]], "no object"), ("registry", [{}] * 1001, "no list"),
    ("registry", [REGISTRY], "without text"), ("registry", [{**REGISTRY, "number": -1}], "32 bits"),
    ("registry", [{**REGISTRY, "number": 2**32}], "32 bits"),
    ("registry", [{**REGISTRY, "key": "a\n[b]", "text": ""}], "no name"),
    ("registry", [{**REGISTRY, "text": "x" * 2**21}], "too long"),
    ("chassisDescriptionFiles", [{"path": "x"}], "missing"), ("chassisDescriptionFiles", [5], "missing"),
    ("pci", {}, "no list"), ("pci", [{}], "without an address"), ("pci", [{"address": "5"}], "no PCI address"),
    ("pci", [{"address": "0:100:0.0"}], "no PCI address"), ("pci", [{"address": "0:1:0.0", "class": 5}], "plain text"),
    ("pci", [{"address": "0:1:0.0", "class": "x" * 257}], "plain text"),
    ("other", [[[[[[[[[]]]]]]]]], "too deeply"),
]
# Whole texts of files that are no saved installations.
NO_JSON = [b"", b"{", b"5", b"[" * 100000, b'{"host": "a", "host": "b"}', b'{"a": "\xff"}', b"\0"]
SIGNALS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGPIPE]


def testSaved():
    with Root() as root, Root(["express:2"]) as other, tempfile.TemporaryDirectory() as place:
        shared = Path(place)
        environment = dict(other.environment(), TMPDIR=place)

        def run(*arguments):
            done = subprocess.run([*VARMEX, *arguments], env=environment, capture_output=True, text=True,
                                  errors="replace", timeout=DEADLINE)
            left = [str(path) for path in shared.glob("varmex-saved-*")]
            check(not left, f"{arguments} leaves {left}")
            return done

        text = root.file(E).read_bytes()
        root.file(E).write_bytes(text.replace(b"FRONT", b"FR\xff\r") + b"; \xe4\r\n")
        (root.folder / "usr/share/pxi/chassis/orlindt").mkdir(parents=True)
        (root.folder / "usr/share/pxi/chassis/orlindt/ORX-1820.ini").write_text("[X]\n\n")
        file = shared / "rack.json"
        check(run("save", "--from", root.folder, file).returncode == 0, "save")
        document = json.loads(file.read_text())
        equal(errors_of(document, schema_of("saved.schema.json")), [], "a saved file against its schema")
        check(base64.b64decode(document["files"][E_PATH]["base64"]) == root.file(E).read_bytes(), E)
        check("".join(document["files"][I_PATH]) == root.file(I).read_bytes().decode(), I)
        check([f["content"] for f in document["chassisDescriptionFiles"]] == [["[X]\n", "\n"]], "chassis files")
        # Every command answers the same of the folder and of the file.
        for arguments in (["show"], ["show", "--json", "--why"], ["show", "1/10"], ["check"], ["draw", "-o", "-"],
                          ["terminals", "5.0.0"], ["route", "5.0.0", "PXI_Trig3"], ["show", "9"], ["find", "dmm"],
                          ["list"], ["triggers", "1/2", "SUPPLY"], ["explain", "3"], ["explain", "DMM"]):
            live, saved = root.run(*arguments), run(*arguments, "--from", file)
            shown = saved.stdout.replace(f"{file}:", str(root.folder))
            shown = re.sub(r"  saved +.*", "  description       current", shown)
            shown = re.sub(r',\s+"saved": {[^}]*}', "", shown)
            timeless = [re.sub(r"\d\d:\d\d:\d\d UTC", "", text) for text in (live.stdout, shown)]
            check(live.returncode == saved.returncode and len(set(timeless)) == 1, f"{arguments} --from")
        shown = json.loads(run("show", "--json", "--from", file).stdout)
        conforms(shown, "installation", "show --json --from")
        check(shown["machine"]["saved"] == {key: document[key] for key in ("taken", "host", "platform", "version")}, "when saved")
        kept = shared / "kept.json"
        kept.write_text("old")
        kept.chmod(0o640)
        (shared / "link.json").symlink_to(kept)
        failed_save = subprocess.run(["bash", "-c", 'ulimit -f 1; trap "" XFSZ; exec "$@"', "-", *VARMEX, "save", kept],
                                     env=environment, capture_output=True, text=True, timeout=DEADLINE)
        check(failed_save.returncode == 1 and "can't write" in failed_save.stderr and kept.read_text() == "old",
              f"save without room: {failed_save.stderr}")
        check(run("save", shared / "link.json").returncode == 0 and (shared / "link.json").is_symlink(), "save through a link")
        check(json.loads(kept.read_text()) and kept.stat().st_mode & 0o777 == 0o640, "the mode of what is replaced")
        check(not list(shared.glob("*.new-*")), "nothing beside what is replaced")
        for arguments in (["watch"], ["save"]):
            check("takes folders" in run(*arguments, "--from", file).stderr, f"{arguments} of a file")
        for name in (shared / "nothing.json", ""):
            check(run("check", "--from", name).returncode == 2, f"check --from {name}")
        bad = shared / "bad.json"
        for key, value, reason in HOSTILE:
            broken = {**document, key: value}
            bad.write_text(json.dumps(broken if value is not None else without(key, document)))
            said = run("show", "--from", bad)
            check(said.returncode == 1 and reason in said.stderr, f"{key} {str(value)[:60]}: {said.stderr}")
        for content in NO_JSON:
            bad.write_bytes(content)
            check("no saved installation" in run("show", "--from", bad).stderr, f"{content[:30]}")
        # Signals in the midst of the work, and what a kill left.
        for number in [*SIGNALS, signal.SIGKILL]:
            process = subprocess.Popen([*VARMEX, "show", "--from", file], env=environment,
                                       stdout=subprocess.PIPE, preexec_fn=unpiped(number))
            while process.poll() is None and not list(shared.glob("varmex-saved-*/var/lib/PXISA")):
                pass
            process.send_signal(number)
            process.wait(DEADLINE)
            if number != signal.SIGKILL:
                check(not list(shared.glob("varmex-saved-*")), f"a signal {number} leaves nothing")
        run("show", "--from", file)


def unpiped(number):
    """Python ignores SIGPIPE, which a child would go on ignoring."""
    return lambda: signal.signal(number, signal.SIG_DFL) if number != signal.SIGKILL else None


# Windows has no other roots than its own, and no tree of files for the bus.
ANYWHERE, ON_LINUX = (testDocuments, testBroken, testModules, testTriggers, testWatch), (testMade, testExplain, testFleet, testDiff, testLive, testSaved)
for test in ANYWHERE if ON_WINDOWS else ANYWHERE + ON_LINUX:
    test()
finish()
