"""Documents and modules: what the command tells of the same installation."""

import json
import subprocess

import pytest
import varmex
from conftest import edit
from roots import conforms


def asked(*arguments):
    return json.loads(subprocess.run(["varmex", *arguments], text=True, capture_output=True).stdout)


def without_sentences(value):
    """What is for people is the command's alone."""
    if isinstance(value, list):
        return [without_sentences(each) for each in value]
    if not isinstance(value, dict):
        return value
    return {key: without_sentences(each) for key, each in value.items() if key != "sentence"}


def shown(*options):
    return without_sentences(asked("show", "--json", *options))


@pytest.mark.parametrize("why", [False, True])
@pytest.mark.parametrize("plan", ["sample", "express:18:9x2 classic:8", "classic:5:0", "express:2"])
def test_a_document_is_that_of_the_command(root, tmp_path, monkeypatch, plan, why):
    if plan != "sample":
        made = tmp_path / "made"
        subprocess.run(["varmex", "make", made, *plan.split()], check=True)
        monkeypatch.setenv("VARMEX_FSROOT", str(made))
    with varmex.Session() as session:
        document = session.to_dict(why=why)
        assert document == shown(*["--why"] * why)
        conforms(document, "installation")
        chassis = session.chassis[1].to_dict()
        for kind, part in (("chassis", chassis), ("slot", chassis["Slots"][0]),
                           ("slot", session.slots[0].to_dict()),
                           *(("device", device.to_dict()) for device in session.devices),
                           *(("bridge", bridge.to_dict()) for bridge in session.trigger_bridges)):
            conforms(part, kind)
        assert [module.to_dict() for module in session.modules()] == asked(
            "find", "--json", "PXI")["modules"]


# Files, what is replaced, by what, whether the command tells the same.
FAULTS = [
    (["pxisys.ini", "pxiesys.ini"], rb"ORX-1820", b"ORX-\xfc\xc3\xff", True),
    (["pxiesys.ini"], rb"(SlotType *= *)[^\r\n]*", rb"\1Nonsense", True),
    (["pxiesys.ini"], rb"(PeripheralSlotLinkWidth1 *= *)[^\r\n]*", rb"\1many", True),
    (["pxiesys.ini"], rb"(LinkWidthMax *= *)[^\r\n]*", rb"\1many", True),
    (["pxisys.ini"], rb"(PXI_TRIG6 *= *)[^\r\n]*", rb"\g<1>8", True),
    (["pxisys.ini"], rb"(LineMappingSpec *= *)[^\r\n]*", rb"\g<1>99", True),
    (["pxisys.ini"], rb"\[Chassis1TriggerBridge2\]", b"[Elsewhere]", False),
    (["pxiesys.ini"], rb'(Chassis1\][^\[]*SlotList *= *"?)', rb"\g<1>256,", False),
]


@pytest.mark.parametrize("names, pattern, text, is_same", FAULTS)
def test_a_fault_hides_nothing_else(root, names, pattern, text, is_same):
    edit(root, pattern, text, *names)
    with varmex.Session() as session:
        document = session.to_dict()
        conforms(document, "installation")
        told = shown()
        assert (document == told) or not is_same
        assert [slot["SlotNumber"] for chassis in document["Chassis"] for slot in chassis["Slots"]
                ] == [slot["SlotNumber"] for chassis in told["Chassis"] for slot in chassis["Slots"]]
        assert b"ORX" in text or document["failureCount"] > 0
        assert any(module.alias == "DMM" for module in varmex.find("dmm"))
        if b"256" in text:
            for ask in (session.modules, lambda: varmex.find("no such thing")):
                with pytest.raises(varmex.UnknownItemError, match="slotNum: 256"):
                    ask()


# A serial number, parts of words, addresses in all forms, places; of several words all must fit.
WORDS = ["DMM", "mult orl", "digitizer", "0a41f27C rf", "PXI0::5-0.1", "5.0.0", "0d:", "0000:0D:01.0",
         "5.0.", "1/1", "PXI3Slot7", "DMM digitizer", "nothing like it"]


@pytest.mark.parametrize("words", WORDS)
def test_modules_are_found_as_by_the_command(root, words):
    found = varmex.find(*words.split())
    document = {"schemaVersion": 1, "modules": [module.to_dict() for module in found],
                "failureCount": 0}
    assert document == asked("find", "--json", *words.split())
    conforms(document, "modules")


def test_modules_hold_what_the_slots_tell(root):
    with varmex.Session() as session:
        modules = {module.place: module for module in session.modules()}
        assert list(modules) == [module.place for chassis in session.chassis
                                 for module in chassis.modules()]
        wide = modules["1/12"]
        assert wide.slots == (12, 13, 14) and wide.title == "Tessmere Labs TL-950 RF Generator"
        assert wide.resource_names == ("PXI0::19-0.0::INSTR", "PXI0::19-0.1::INSTR")
        assert [str(address) for address in wide.addresses] == ["19.0.0", "19.0.1"]
        assert wide.addresses[1].hexadecimal == "13:00.1"
        assert wide.functions == tuple(session.chassis[1].slots[12].devices)
        reduced = modules["2/5"]
        assert (reduced.link_width, reduced.possible_link_width, reduced.is_link_reduced) == (
            4, 8, True)
        assert modules["3/2"].alias is None and modules["3/2"].title == "PXI3Slot2"
        assert modules["1/1"].functions[0].bus == 2
        for name in ("dmm", "PXI1SLOT9", "1/9", "pxi0::13-0.0::instr", "13.1.0"):
            assert session.find_module(name) == modules["1/9"], name
        assert session.find_module("1/2").slots == (2,)
        edit(root, b'"DMM"', b'"1/2"', "pxiesys.ini")
        with varmex.Session() as renamed:
            assert renamed.find_module("1/2") == modules["1/9"]
        assert session.find_module("DM") is None and session.find_module("") is None
    with pytest.raises(ValueError):
        varmex.find("")
