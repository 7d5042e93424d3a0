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
from pathlib import Path, PureWindowsPath

import pytest

sys.path.insert(0, str(Path(__file__).resolve().parent / "support"))
from roots import DEADLINE, TOP, E, I, Root, conforms, main  # noqa: E402

ON_WINDOWS = sys.argv[-1].endswith(".exe")
each = pytest.mark.parametrize
on_linux = pytest.mark.skipif(ON_WINDOWS, reason="Windows has no other roots than its own, and no tree of files for the bus")


@pytest.fixture
def root(tmp_path):
    return Root(tmp_path / "root")


NUMBERS = {"Chassis": "ChassisNumber", "Slots": "SlotNumber", "TriggerBridges": "BridgeNumber"}


def flatten(item, place=""):
    """Every answer by its place, and every failure."""
    answers, failures = {}, {f"{place} {about}" for about in item.get("failures", ())}
    for name, value in item.items():
        if isinstance(value, list):
            for number, below in enumerate(value):
                more = flatten(below, f"{place}/{name[0]}{below.get(NUMBERS.get(name), number)}")
                answers.update(more[0])
                failures.update(more[1])
        elif name not in ("absent", "machine", "units", "failureCount", "failures"):
            answers[f"{place} {name}"] = value
    return answers, failures


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


@each("what, edits, failures, lost", BROKEN)
def testBroken(root, what, edits, failures, lost):
    healthy, none = flatten(root.show())
    assert not none
    root.edit(*edits)
    document = root.show()
    answers, found = flatten(document)
    assert found == set(failures) and document["failureCount"] == len(failures)
    hidden = {place for place in healthy if healthy[place] != answers.get(place)
              and place not in failures and not (lost and re.match(lost, place))}
    assert not hidden
    shown, picture = root.run("show"), root.run("draw", "-o", "-")
    marks = set(re.findall(r"!\d+", shown.stdout))
    assert shown.returncode == picture.returncode == bool(failures) and "Chassis 3: Havrel" in shown.stdout
    assert bool(marks) == ('Run "varmex check"' in shown.stdout) == bool(failures)
    assert all(f"{mark} " in picture.stdout for mark in marks)
    assert root.run("show", "2").returncode == 0


def testDocuments(root):
    assert root.ask("route", "route", "5.0.0", "PXI_Trig3")[0].returncode == 0
    one = root.show("1/10")["Chassis"]
    assert len(one) == 1 and len(one[0]["Slots"]) == 1
    why = root.show("1/10", "--why")["Chassis"][0]["Slots"][0]["absent"]
    assert why["StarTriggerLine"]["constant"] == "varmex_errorStarController"
    with_reasons = json.loads(root.run("show", "--why", "--json").stdout,
                              object_hook=lambda item: {key: item[key] for key in item if key != "absent"})
    assert root.show() == with_reasons
    root.ask("route", "route", "5.0.0", "PXI_Trig9")
    root.edit((E, r"^PXI_STAR0 =[^\n]*", "PXI_STAR0 = x"))
    run, terminals = root.ask("terminals", "terminals", "5.0.0")
    assert run.returncode == 1 and [*terminals[-1]["failures"]] == ["PXI_Star"]
    root.edit((E, r"ORX", "O"))
    assert root.ask("findings", "check")[0].returncode == 1
    root.edit((E, r"^ChassisList =[^\n]*", "ChassisList = x"))
    broken, document = root.ask("installation", "show")
    assert document and broken.returncode == 1 and "ChassisList" in broken.stderr


# A width of slot 2/5, what it is changed to, and the link that show and list then have.
LINKS = [("PeripheralSlotLinkWidth1", "= x", "x4/!1"), ("PeripheralSlotLinkWidth1", "", "x4/?"),
         ("PeripheralModuleLinkWidthMax", "= x", "x4/!1"), ("PeripheralModuleLinkWidthMax", "", "x4/?"),
         ("PeripheralModuleLinkWidthNegotiated", "= x", "!1/8"), ("PeripheralModuleLinkWidthMax", "= 4", "x4/4"),
         ("SlotType", "= PXIeSystemSlot2Link", "x4/8 reduced")]


@each("item, value, link", LINKS)
def testLinks(root, item, value, link):
    root.edit((E, rf"(\[Chassis2Slot5\].*?{item}) *=[^\n]*", rf"\1 {value}"))
    for words in (["show", "2"], ["list", "--columns", "place,link"]):
        rows = re.findall(r"^  (?:2/)?5 .*", root.run(*words).stdout, re.M)
        assert len(rows) == 1 and f" {link}  " in rows[0] + "  "


# Words to find, and the places of the modules that fit.
FOUND = [
    (["dmm"], "1/9"), (["Tessmere", "rf"], "1/3 1/12 2/5"), (["5.0.0"], "1/2"), (["37:00.0"], "2/5"),
    (["0000:37:00.0"], "2/5"), (["37:"], "2/5"), (["PXI0::5-"], "1/2"), (["TL-20417"], "2/1 2/2 2/4 2/5 2/8"),
    (["1/13"], "1/12"), (["dmm orx-4081"], "1/9"), (['Multimeter  "DMM"'], "1/9"), (["pxi3slot4"], "3/4"), (["81.1"], "3/2 3/3 3/4 3/6"), (["dmm", "tessmere"], ""),
    (["TLX-80"], ""),
]


def places(modules):
    return " ".join(module["place"] for module in modules)


@each("words, wanted", FOUND)
def testFind(root, words, wanted):
    run, found = root.ask("modules", "find", *words)
    assert places(found["modules"]) == wanted and run.returncode == (not wanted)


def testModules(root):
    def rows_of(*arguments):
        run = root.run("list", "--csv", *arguments)
        return run, list(csv.reader(io.StringIO(run.stdout)))

    modules = [json.loads(line) for line in root.run("list", "--jsonl").stdout.splitlines()]
    for module in modules:
        conforms(module, "module")
    assert len(modules) == 22 and modules[9]["slots"] == [12, 13, 14]
    keys = "place,alias,width,reduced,slots,link,addresses"
    _, rows = rows_of("--columns", keys, "--pci", "hex")
    assert rows[0] == keys.split(",") and len(rows) == 23
    assert rows[10] == ["1/12", "GENERATOR", "4", "0", "12,13,14", "x4/4", "13:00.0 13:00.1"]
    some = json.loads(root.run("list", "--jsonl", "--columns", "place,link").stdout.splitlines()[5])
    assert some == {"place": "1/7", "link": "x1/4 reduced"}
    conforms(some, "module")
    assert root.run("list", "--columns", "place,x").returncode == 2
    # A slot that is not there, an alias that needs quotes, a width that is no number.
    root.edit((E, '18"', '18,19"'), (E, '"DMM"', 'D"M,M\x1b\xff'), (E, "LinkWidthNegotiated = 8", "LinkWidthNegotiated = x"))
    run, rows = rows_of("--columns", "place,alias,width")
    assert run.returncode == 1 and rows[3] == ["1/3", "ANALYZER", ""] and rows[7][1].startswith('D"M,M\x1b')
    assert rows[13] == ["1/19", "", ""] and "slot 1/19" in run.stderr
    assert "!1 " in root.run("list").stdout
    found = root.ask("modules", "find", "ANALYZER")[1]
    assert places(found["modules"]) == "1/3 1/19 2/5" and found["failureCount"] == 2
    assert "width" in found["modules"][0]["failures"]


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


@on_linux
@each("words, status, line", ON_MADE)
def testMade(tmp_path, words, status, line):
    run = Root(tmp_path / "made", *MADE).run(*words)
    assert run.returncode == status and re.search(line, run.stdout + run.stderr, re.M)


def triggers(root, *words):
    return root.ask("triggers", "triggers", *words)


@each("origin, target, arguments, ways, stars, said", TRIGGERS)
def testTriggers(root, origin, target, arguments, ways, stars, said):
    run, document = triggers(root, origin, target, *arguments)
    assert said in run.stderr and run.returncode == bool(said)
    if document:
        assert [",".join(str(bridge["bridge"]) for bridge in way["bridges"]) for way in document["ways"]] == ways
        near = [f"{star['family']} {'direct' if star['isDirect'] else 'indirect'}" for star in document["stars"]]
        assert stars in (None, near)


def testUnreadTriggers(root):
    lines = triggers(root, "1/8", "1/17")[1]["ways"][0]["lines"]
    assert lines[5:] == [[5], [6, 7], []]
    # A line map that can't be read, a slot that breaks the list of the bridges, a slot on no bus.
    root.edit((I, r"^(PXI_TRIG3) =[^\n]*", r"\1 = 8"), (E, '18"', '18,19"'))
    run, document = triggers(root, "1/2", "1/7")
    assert run.returncode == 1 and document["ways"][0]["lines"][3] == [] and len(document["unread"]) == 2
    assert "line 3" in run.stderr
    root.edit((E, '"1,2,3,4,5,6"', '"1,3,4,5,6"'), (E, '"SWITCH"', '"dmm"'))
    document = triggers(root, "1/2", "1/7")[1]
    assert "on no trigger bus" in document["reason"] and "bus" not in document["from"]
    for name, said in (("DMM", "2 modules; say which by its place: 1/9, 1/11"), ("nothing", "among those that can be read")):
        assert said in triggers(root, name, "1/2")[0].stderr and said in root.run("explain", name).stderr


class Watch(subprocess.Popen):
    """A running watch, line by line."""

    def __init__(self, root, *arguments):
        # Without a buffer, in which lines could wait unseen.
        super().__init__([*Root.varmex, "watch", *arguments], env=root.environment(), bufsize=0, stdout=subprocess.PIPE)

    def take(self, count):
        taken = []
        while len(taken) < count and select.select([self.stdout], [], [], DEADLINE)[0]:
            taken.append(self.stdout.readline().decode().rstrip("\r\n"))
        return taken

    def __exit__(self, *reason):
        self.kill()
        super().__exit__(*reason)


# Edits of a description whose list is broken, one after the other, and all that is told of each.
WATCHED = [
    ([], ['The description can\'t be read: ChassisList in section [System] is no list of numbers: "1,,2" in pxiesys.ini, '
          'line 5. (varmex_errorInformationNotAvailable -380757) Run "varmex check" to see what to mend.']),
    ([(E, "1,,2", "1,2")],
     ["The description can be read.", "new: chassis 1, Orlindt Instruments, Inc. ORX-1820",
      "new: chassis 2, Tessmere Labs TLX-80", "new: chassis 3, Havrel Modular HM-1008"]),
    ([(E, "$", "\n; nothing new")], []),
    ([(E, "DIGITIZER-A", "FRONT")], ["FRONT ORX-5105 Digitizer in slot 1/2: name DIGITIZER-A -> FRONT"]),
    ([(E, r"\[Chassis1Slot9\]", "[Chassis1Slot19]"), (E, '18"', '18,19"')],
     ["DMM ORX-4081 Multimeter: slot 1/9 -> 1/19", "slot 1/9: state readable -> (can't be read)"]),
    ([(E, "TLX-80", "TLX-81")], ["chassis 2, Tessmere Labs TLX-81: model TLX-80 -> TLX-81"]),
    ([(E, r"\[Chassis2Slot3\]", r"[Chassis2Slot3]\nVendor = W\nModel = D\nAddressInfo = PXI0::99-0.0::INSTR")],
     ["new: W D in slot 2/3"]),
]


# A place, an attribute, and all that is looked up for it, in order: file, line, section or key, item, text.
MANAGERS = r"HKEY_LOCAL_MACHINE\SOFTWARE\PXISA\Services"
BUS_NAMES = r"HKEY_LOCAL_MACHINE\SOFTWARE\Corvane\COR-VARMEX (32-bit view)"
EXPLAINED = [
    ("1/7", "SlotType", ["pxiesys.ini:177 Chassis1Slot7 SlotType PXIeHybridSlot"]),
    ("DMM", "varmex_u32_SlotType", ["pxiesys.ini:202 Chassis1Slot9 SlotType PXIePeripheralSlot"]),
    ("1/10", "SlotNumber", []), ("machine", "Version", []),
    *((place, "DeviceModel", ["pxiesys.ini:201 Chassis1Slot9", "pxiesys.ini:210 Chassis1Slot9 Model ORX-4081 Multimeter"])
      for place in ("0d:00.0", "DMM")),
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


def itemsOf(chassis):
    """What explain is asked for, and the item of show --json that it is."""
    number = chassis["ChassisNumber"]
    yield str(number), chassis
    for bridge in chassis["TriggerBridges"]:
        yield f"{number}/bridge/{bridge['BridgeNumber']}", bridge
    for slot in chassis["Slots"]:
        yield f"{number}/{slot['SlotNumber']}", slot
        for device in slot["Devices"]:
            yield ".".join(str(device[f"Device{part}"]) for part in ("Bus", "Number", "Function")), device


@each("made", [[], ["express:18", "classic:8:2"], ["classic:2:0"]])
def testExplainedAnswers(tmp_path, made):
    """Every attribute of an item has the value that show --json has, and where that has none, none."""
    root = Root(tmp_path / "root", *made)
    document = root.show()
    items = [("machine", document["machine"])]
    for chassis in document["Chassis"]:
        items += [*itemsOf(chassis)][:3 if ON_WINDOWS else None]
    for place, wanted in items:
        explained = root.ask("explanation", "explain", place)[1]["items"][0]["attributes"]
        answers = {one["name"]: one.get("value") for one in explained}
        assert answers == {name: wanted.get(name) for name in answers} and len(answers) > 4


@each("place, attribute, wanted", EXPLAINED)
def testExplained(root, place, attribute, wanted):
    document = root.ask("explanation", "explain", place, attribute)[1]
    told = [toldOf(one) for one in document["items"][0]["attributes"][0]["readings"]]
    assert told == [re.sub(r"registry\.reg(:\d+)?", "registry" if ON_WINDOWS else r"\g<0>", line) for line in wanted]


def testExplain(root):
    found = root.ask("explanation", "explain", "5.0.0", "DeviceModel")[1]["items"][0]["opening"]
    map_of = [toldOf(one) for one in found["readings"]]
    assert "pxiesys.ini:128 Chassis1Slot2 AddressInfo PXI0::5-0.0::INSTR;PXI0::5-0.1::INSTR" in map_of
    assert len(map_of) > 100 and found["section"] == "Chassis1Slot2"
    # A controller without addresses, a chassis without a serial number.
    root.edit((E, r"^AddressInfo = .PXI0::2-0[^\n]*", ""), (E, r"^SerialNumber[^\n]*", ""))
    for words, status, said in ((["1/99", "SlotType"], 1, "Chassis1Slot99"), (["1/1", "SystemSlotModel"], 0, '= "HC-8470 Controller"'),
                                (["1"], 1, "[Chassis1] has no SerialNumber"), (["1"], 1, "[Chassis1] SerialNumber: absent")):
        run = root.run("explain", *words)
        assert run.returncode == status and said in run.stdout


def testWatch(root):
    root.edit((E, r"^ChassisList =[^\n]*", 'ChassisList = "1,,2"'))
    with Watch(root) as watch, Watch(root, "--json") as lines, Watch(root, "--once") as once:
        assert "can't be read" in "".join(once.take(1))
        for edits, wanted in WATCHED:
            root.edit(*edits)
            told = [re.sub(r" in \S*[/\\]pxi", " in pxi", line) for line in watch.take(len(wanted))]
            assert [line[21:] for line in told] == wanted
            assert all(re.match(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d  ", line) for line in told)
            for line in lines.take(len(wanted)):
                conforms(json.loads(line), "event")
                assert json.loads(line)["time"].endswith("+05:30")
        if not ON_WINDOWS:  # where it is the system's own
            folder = root.file("")
            away = root.folder / "away"
            for source, target, said in ((folder, away, "can't be read"), (away, folder, "can be read.")):
                source.rename(target)
                assert said in "".join(watch.take(1))
        assert once.wait(DEADLINE) == 0 and watch.poll() is None


NARROWER = [(E, r"(\[Chassis1Slot2\].*?Negotiated) = 4", r"\1 = 1")]
ELSEWHERE = [(E, "PXI0::13-0.0", "PXI0::113-0.0")]
# Edits of an installation, options of diff, and all that it tells.
DIFFERENT = [
    ([], [], []), ([(E, "0A41F27C", "NEW")], ["--ignore", "serial-number"], []), (ELSEWHERE, [], []),
    ([(E, "0A41F27C", "NEW")], [], ["chassis 1, Orlindt Instruments, Inc. ORX-1820: serial number 0A41F27C -> NEW"]),
    ([(E, rf"\[Chassis1Slot{a}\]", f"[Chassis1Slot{b}]") for a, b in ((9, 99), (11, 9), (99, 11))],
     ["--ignore", "slot"],
     ["DMM ORX-4081 Multimeter: slot 1/9 -> 1/11", "SWITCH TL-310 Switch: slot 1/11 -> 1/9"]),
    (NARROWER, ["--ignore", "module"], []),
    (NARROWER, [], ["DIGITIZER-A ORX-5105 Digitizer in slot 1/2: link width x4 -> x1"]),
    (ELSEWHERE, ["--addresses"],
     ["DMM ORX-4081 Multimeter in slot 1/9: PCI addresses 13.0.0 13.0.1 13.1.0 -> 13.0.1 13.1.0 113.0.0"]),
    (ELSEWHERE, ["--addresses", "--pci", "hex"],
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
    ([(E, r"\[Chassis1Slot5\]", "[Chassis1Slot7a]"), (E, r"\[Chassis1Slot7\]", "[Chassis1Slot5]"), (E, "7a", "7")],
     ["--ignore", "slot"], ["MODULE-1-5 TL-310 Switch: slot 1/5 -> 1/7"]),
]


@on_linux
@each("made, edits, options, wanted", [*(([], *row) for row in DIFFERENT), *((MADE, *row) for row in MADE_DIFFERENT)])
def testDiff(tmp_path, made, edits, options, wanted):
    before, after, saved = Root(tmp_path / "before", *made), Root(tmp_path / "after", *made), tmp_path / "a.json"
    before.run("save", saved)
    after.edit(*edits)
    told = before.run("diff", saved, after.folder, *options)
    assert told.stdout.splitlines()[:-1] == wanted and told.returncode == bool(wanted)
    assert after.run("diff", saved, *options).stdout == told.stdout
    assert len(after.ask("differences", "diff", saved, *options)[1]["changes"]) == len(wanted)


# What can't be compared, with "saved" for the sample as it was and "root" for it as it is, and what is said.
UNCOMPARED = [
    ([(E, '18"', '18,19"')], ["root", "root"], "No differences in what can be read"),
    ([(E, r"^ChassisList =[^\n]*", "ChassisList = 1,,2")], ["saved", "root"], f"root/{E_PATH}, line"),
    ([], ["none", "saved"], "can't read"), ([], ["saved", "none"], "can't read"), ([], ["saved", "."], "no description"),
    ([], ["saved", "--ignore", "x"], "no such kind"),
]


@on_linux
@each("edits, arguments, said", UNCOMPARED)
def testUncompared(root, tmp_path, edits, arguments, said):
    root.run("save", tmp_path / "saved")
    root.edit(*edits)
    run = root.run("diff", *arguments, cwd=tmp_path)
    assert run.returncode == 2 and said in run.stdout + run.stderr


# Faults of a PCI tree, and what is found.
LIVE = {"missing": "module-not-present", "unlisted": "device-not-listed", "driverless": "no-driver",
        "narrow": "link-width-reduced", "slow": "link-speed-reduced"}
# Chassis, and the faults that none of their modules can have so that they would be found.
PLANS = {"express:18 classic:8 express:8": [], "express:4": [], "classic:8x3": ["narrow", "slow"],
         "express:18:2": ["unlisted", "narrow", "slow"]}


@on_linux
@each("plans, faults", [*((plans, faults) for plans in PLANS for faults in ([], *([fault] for fault in LIVE))),
                        ("express:18 classic:8 express:8", [*LIVE])])
def testLive(tmp_path, plans, faults):
    made = [*plans.split(), "--pci", *(f"--pci-fault={fault}" for fault in faults)]
    if not {*faults}.isdisjoint(PLANS[plans]):
        with pytest.raises(AssertionError, match="no module is left"):
            Root(tmp_path / "root", *made)
        return
    wanted = sorted(LIVE[fault] for fault in faults)
    root, file = Root(tmp_path / "root", *made), tmp_path / "saved.json"
    for folder in ("misc", "hwdata"):
        (root.folder / "usr/share" / folder).mkdir(parents=True)
    os.mkfifo(root.folder / "usr/share/misc/pci.ids")  # which nobody waits for
    (root.folder / "usr/share/hwdata/pci.ids").write_text("# x\nfa02  Orlindt\n\t4081  Meter\nC 00  Class\n")
    root.run("save", file)
    live, findings = root.ask("findings", "check", "--live")
    assert sorted(finding["id"] for finding in findings) == wanted and live.returncode == bool(wanted)
    assert ("Orlindt Meter [fa02:4081]" in live.stdout) == bool({"device-not-listed", "no-driver"} & set(wanted))
    saved = root.run("check", "--live", "--json", "--from", file)
    assert saved.stdout == live.stdout.replace("Orlindt Meter ", "")
    assert root.run("check").stdout == "No findings.\n"


# Changes of a PCI tree, of domain 0 unless they say another (None takes a function away, others are added), one of
# pxiesys.ini, and what is found.
# The modules 1/2, 1/3 and 2/3 are on the buses 3, 4 and 7 behind ports of their own (fe:02.0, fe:03.0, fc:03.0).
NARROW, LANES, PORT = {"current_link_width": "4"}, {"current_link_width": "8", "max_link_width": "8"}, {"class": "0x060400"}
SWITCH = {"fe:03.0": {"secondary_bus_number": "200"}, "c8:00.0": {**PORT, **LANES, "secondary_bus_number": "201"},
          "c9:01.0": {**PORT, **LANES, "secondary_bus_number": "4"}}
CHASSIS_OFF = dict.fromkeys(("03:00.0", "03:00.1", "04:00.0", "04:00.1"))
SLOT_3 = r"(\[Chassis1Slot3\].*?PeripheralSlotLinkWidth1) = 8"


def module3(**texts):
    return {"04:00.0": texts, "04:00.1": texts}


TREES = [
    ({"03:00.1": None, "0001:03:00.1": {}, "0001:fe:00.0": {}}, None,
     [r"pxiesys.ini module-not-present .* 3.0.0 \(03:00.0\) of MODULE-1-2 ORX-\d+ Multimeter in slot 1/2, but no 3.0.1"]),
    ({"07:1c.0": None, "07:1c.1": None}, None, ["pxisys.ini module-not-present PXI2Slot3 in slot 2/3 is not there"]),
    (CHASSIS_OFF, None, ["chassis-not-present none of the 2 modules of chassis 1"]),
    ({**CHASSIS_OFF, "02:00.0": None, "02:00.1": None}, None, ["module-not-present MODULE-1-1", "chassis-not-present"]),
    (dict.fromkeys((*CHASSIS_OFF, "05:1d.0", "06:04.0", "06:04.1", "07:1c.0", "07:1c.1", "08:1b.0", "08:1b.1")), None,
     ["none of the 2 modules of chassis 1", "none of the 3 modules of chassis 2"]),
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


@on_linux
def testTrees(tmp_path):
    assert "no PCI tree" in Root(tmp_path / "sample").run("check", "--live").stderr
    root, file = Root(tmp_path / "root", "express:8:3", "classic:4", "--pci"), tmp_path / "saved.json"
    document = json.loads(root.run("save").stdout)
    tree, text = {device["address"]: device for device in document["pci"]}, "".join(document["files"][E_PATH])
    for changes, edit, wanted in TREES:
        devices = dict(tree)
        for address, change in changes.items():
            key = address if address.count(":") > 1 else f"0000:{address}"
            devices[key] = change is not None and {**devices.get(key, {"address": key, "class": "0x118000"}), **change}
        document["pci"] = [device for device in devices.values() if device]
        document["files"][E_PATH] = [re.sub(*edit, text, flags=re.S) if edit else text]
        file.write_text(json.dumps(document))
        told = [" ".join(finding[key] for key in ("file", "id", "message", "answer"))
                for finding in root.ask("findings", "check", "--live", "--from", file)[1]]
        assert len(told) == len(wanted) and all(map(re.search, wanted, told)), (changes, edit)


@on_linux
def testFleet(tmp_path):
    """The example of docs/fleet.md over 1,000 racks of two weeks, two of them changed."""
    root = Root(tmp_path / "root", "express:18")
    text = json.dumps(json.loads(root.run("save").stdout))
    serial = re.search(r"SerialNumber = \W*(\w+)", text).group(1)
    for day in ("2026-11-14", "2026-11-21"):
        (tmp_path / day).mkdir()
        for rack in range(500):
            one = text.replace(serial, f"S{rack:04}")
            if (rack, day) == (42, "2026-11-21"):
                one = one.replace("LinkWidthNegotiated = 8", "LinkWidthNegotiated = 2", 1)
                one = re.sub(r"\[Chassis1Slot([23])\]", lambda slot: f"[Chassis1Slot{5 - int(slot[1])}]", one)
            (tmp_path / day / f"rack-{rack:04}.json").write_text(one)
    blocks = re.findall(r"^```sh\n(.*?)^```", (TOP / "docs/fleet.md").read_text(), re.M | re.S)
    path = f"{Path(Root.varmex[-1]).parent}:{os.environ['PATH']}"
    told = [subprocess.run(["bash", "-ec", block], cwd=tmp_path, env=dict(os.environ, PATH=path),
                           capture_output=True, text=True, timeout=10 * DEADLINE) for block in blocks]
    assert all(run.returncode == 0 and not run.stderr for run in told)
    narrow, moved = (run.stdout.splitlines()[2:] for run in told[-2:])
    assert len(narrow) == 1 and "rack-0042" in narrow[0]
    assert len(moved) == 2 and all("rack-0042" in line for line in moved)
    (tmp_path / "2026-11-21/rack-0007.json").write_text("{")
    os.mkfifo(tmp_path / "2026-11-21/pipe.json")  # which nobody waits for
    run = root.run("list", "--csv", "--columns", "alias", "--from", tmp_path / "2026-11-21")
    assert run.returncode == 1 and run.stdout.startswith("from,alias\n") and len(run.stdout.splitlines()) > 499
    assert run.stderr.count("rack-0007") == 1 and "std::" not in run.stderr


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


def testSave(root):
    root.edit((E, r"\Z", "\n; \xe4\r\n"))
    document = json.loads(root.run("save").stdout)
    conforms(document, name="saved.schema.json")
    assert base64.b64decode(document["files"][E_PATH]["base64"]) == root.file(E).read_bytes()
    assert "".join(document["files"][I_PATH]) == root.file(I).read_bytes().decode()
    assert len(document["registry"]) == 6 and document["platform"] == ("windows" if ON_WINDOWS else "linux")
    root.edit((I, r"\Z", "\x01" * 12000000))
    large = root.run("save")
    assert large.returncode == 1 and not large.stdout and "64 MB" in large.stderr


@pytest.fixture
def kept(tmp_path, monkeypatch):
    """The sample with chassis files, saved in a folder that has the temporary roots, too; of these none is left."""
    root, place = Root(tmp_path / "sample"), tmp_path / "place"
    (root.folder / "usr/share/pxi/chassis/orlindt").mkdir(parents=True)
    (root.folder / "usr/share/pxi/chassis/orlindt/ORX-1820.INI").write_text("[X]\n\n")
    root.edit(*((name, r"ORX-1820\.ini(.*)", "ORX-1820.INI\\1; \xe4\r\n") for name in (I, E)))
    place.mkdir()
    monkeypatch.setenv("TMPDIR", str(place))
    assert root.run("save", place / "rack.json").returncode == 0
    yield root, place / "rack.json"
    assert not [*place.glob("varmex-saved-*")]


# What every command answers the same of the folder and of the file.
SAME = [["show"], ["show", "--json", "--why"], ["show", "1/10"], ["check"], ["draw", "-o", "-"], ["terminals", "5.0.0"],
        ["route", "5.0.0", "PXI_Trig3"], ["show", "9"], ["find", "dmm"], ["list"], ["triggers", "1/2", "SUPPLY"],
        ["explain", "3"], ["explain", "DMM"]]


@on_linux
@each("arguments", SAME)
def testFrom(kept, root, arguments):
    sample, file = kept
    live, saved = sample.run(*arguments), root.run(*arguments, "--from", file)
    timeless = [re.sub(r'\d\d:\d\d:\d\d UTC|(?<=registry)\.reg(:\d+)?|(saved|description) +.*|,\s+"saved": {[^}]*}| +', "", text)
                for text in (live.stdout, saved.stdout.replace(f"{file}:", str(sample.folder)))]
    assert live.returncode == saved.returncode and timeless[0] == timeless[1]


@on_linux
def testSaved(kept, root):
    file, shared = kept[1], kept[1].parent
    document = json.loads(file.read_text())
    assert [one["content"] for one in document["chassisDescriptionFiles"]] == [["[X]\n", "\n"]]
    shown = root.show("--from", file)
    assert shown["machine"]["saved"] == {key: document[key] for key in ("taken", "host", "platform", "version")}
    for arguments in (["watch"], ["save"]):
        assert "takes folders" in root.run(*arguments, "--from", file).stderr
    for name in (shared / "nothing.json", "", "/dev/zero", "-"):
        assert root.run("check", "--from", name, stdin=subprocess.DEVNULL).returncode == 2
    for name in ("-", "/dev/stdin"):
        assert "DMM" in root.run("find", "dmm", "--from", name, input=file.read_text()).stdout
    for key, value, reason in HOSTILE:
        broken = {**document, key: value}
        if value is None:
            del broken[key]
        file.write_bytes(json.dumps(broken).encode() if key else value)
        said = root.run("show", "--from", file)
        assert said.returncode == 1 and reason in said.stderr, (key, str(value)[:60])


@on_linux
def testReplaced(kept, root):
    """A file that is there keeps its mode, and all of it where another one can't be written."""
    file, link = kept[1], kept[1].with_name("link.json")
    file.write_text("old")
    file.chmod(0o640)
    link.symlink_to(file)
    left, used = (file.with_name(f"rack.json.varmex-new-{number}") for number in (7, 8))
    left.touch()
    with used.open("w") as writer:
        fcntl.flock(writer, fcntl.LOCK_EX)
        failed = root.run("save", file, ahead=["bash", "-c", 'ulimit -f 1; trap "" XFSZ; exec "$@"', "-"])
        assert failed.returncode == 1 and "can't write" in failed.stderr and file.read_text() == "old"
        assert root.run("save", link).returncode == 0 and link.is_symlink()
        assert json.loads(file.read_text()) and file.stat().st_mode & 0o777 == 0o640
        assert [*file.parent.glob("*-new-*")] == [used]


@on_linux
@each("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGPIPE, signal.SIGRTMIN + 1, signal.SIGRTMAX, signal.SIGKILL])
def testSignals(kept, root, number):
    file = kept[1]
    process = subprocess.Popen([*Root.varmex, "show", "--from", file], env=root.environment(), stdout=subprocess.PIPE)
    while process.poll() is None and not [*file.parent.glob("varmex-saved-*/var/lib/PXISA")]:
        pass
    process.send_signal(number)
    process.wait(DEADLINE)
    if number == signal.SIGKILL:  # the next one takes away what it left
        root.run("show", "--from", file)


if __name__ == "__main__":
    main(__file__)
