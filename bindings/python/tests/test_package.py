"""What the package adds to the C interface: loading, numbers, types, texts, failures."""

import copy
import json
import os
import pydoc
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest
import varmex
from conftest import PROJECT, edit, run_python
from varmex import constants
from varmex._line_8 import source_lines_in

HEADERS = PROJECT / "includes"


def test_constants_are_those_of_the_compiler(tmp_path):
    names = [name for name in vars(constants) if name.startswith(("varmex_", "telmar_", "ostrel"))]
    assert len(names) > 100
    lines = "\n".join(f'  printf("{name} %lld\\n", (long long){name});' for name in names)
    program = tmp_path / "numbers.c"
    program.write_text("#include <stdio.h>\n#include <varmex/telmar_ra_varmex.h>\n"
                       f"#include <varmex/varmex.h>\nint main(void) {{\n{lines}\n}}\n")
    subprocess.run(["cc", f"-I{HEADERS}", "-o", tmp_path / "numbers", program], check=True)
    printed = subprocess.run([tmp_path / "numbers"], capture_output=True, text=True, check=True)
    numbers = dict(line.split() for line in printed.stdout.splitlines())
    assert {name: int(number) for name, number in numbers.items()} == {
        name: getattr(constants, name) for name in names}


@pytest.mark.parametrize("text", ["enum { one, two };", "enum { a = 1 << 3 };"])
def test_an_enumerator_that_is_not_understood_is_no_secret(text):
    script = PROJECT / "bindings/python/make_constants.py"
    program = (f"import runpy, sys\nread = runpy.run_path({str(script)!r})['read_constants']\n"
               "try:\n  read(sys.argv[1])\nexcept ValueError as error:\n  print('refused', error)\n")
    assert run_python(program, text).startswith("refused")


@pytest.mark.parametrize("library, said", [
    ("/nowhere/libvarmex.so.19", r"/nowhere/libvarmex.so.19 \(VARMEX_LIBRARY\).* libvarmex19"),
    ("libc.so.6", "it lacks varmex_openPXISession")])
def test_library_is_looked_for(library, said):
    program = "try:\n  import varmex\nexcept ImportError as error:\n  print(error)\n"
    assert re.search(said, run_python(program, VARMEX_LIBRARY=library))


# Place, property, value; None where the item has no such thing.
VALUES = [
    ("session.chassis[1]", "serial_number", "0A41F27C"),
    ("session.chassis[3]", "serial_number", None),
    ("session.chassis[2].slots[1]", "type", varmex.SlotType.PXIE_SYSTEM),
    ("session.chassis[2].slots[2]", "star_trigger_line", 0),
    ("session.chassis[2].slots[1]", "star_trigger_line", None),
    ("session.chassis[2].slots[2]", "system_vendor", None),
    ("session.chassis[2]", "is_trigger_manager_native", True),
    ("session", "is_current", True),
    ("session.device(51, 0)", "is_express", True),
    ("session.device(51, 0)", "link_width_negotiated", 4),
]


@pytest.mark.parametrize("place, name, value", VALUES)
def test_properties_answer_or_are_none(root, place, name, value):
    with varmex.Session() as session:
        item = eval(place)
        assert getattr(item, name) == value and type(getattr(item, name)) is type(value)
        if value is None:
            with pytest.raises(varmex.AbsentError) as raised:
                item.require(name)
            assert raised.value.constant and str(raised.value.code) in str(raised.value)
        else:
            assert item.require(name) == value
        with pytest.raises(AttributeError):
            setattr(item, name, value)


FAILURES = [
    ("session.chassis[99]", varmex.UnknownItemError, "chassisNum"),
    ("session.chassis[-1]", varmex.UnknownItemError, "-1"),
    ("session.chassis['1']", TypeError, "integer"),
    ("session.chassis[1].slots[1.5]", TypeError, "integer"),
    ("session.device(2**32, 0)", varmex.UnknownItemError, "4294967296"),
    ("session.chassis[1].slots[99]", LookupError, "slotNum: 99"),
    ("session.device(1, 2, 3)", varmex.UnknownItemError, ""),
    ("session.u32(123)", varmex.AbsentError, "attribute: 123"),
    ("session.text(2**32)", ValueError, "4294967296"),
    ("session.u32(-1)", ValueError, "-1"),
    ("session.trigger_bridges[0].line_mapping(8)", ValueError, "8"),
    ("varmex.RoutingSession('x')", varmex.InvalidArgumentError, ""),
    ("varmex.RoutingSession('51.0.0').calculate(['PXI_Trig1'], 'PXI_Trig1')", TypeError, "lists"),
    ("varmex.RoutingSession('51.0.0').calculate('PXI_Trig1', ['PXI_Trig1'])", TypeError, "lists"),
    ("copy.copy(varmex.RoutingSession('51.0.0').calculate(['PXI_Trig1'], ['PXI_Trig1'])[0])",
     TypeError, "Route"),
    ("copy.copy(session.chassis[1])", TypeError, "Chassis"),
    ("session.wait(-1)", ValueError, "-1"),
]


@pytest.mark.parametrize("expression, kind, text", FAILURES)
def test_failures_are_of_their_class(root, expression, kind, text):
    with varmex.Session() as session:
        with pytest.raises(kind) as raised:
            eval(expression)
        assert text in str(raised.value)
    if isinstance(raised.value, varmex.Error):
        assert raised.value.code < 0 and raised.value.json.startswith('{"error_constant"')


def test_items_by_place(root):
    with varmex.Session() as session, varmex.Session() as other:
        assert session.chassis[1] == other.chassis[1] != session.chassis[2]
        assert session.chassis[1] != session.chassis[1].slots[1]
        assert len({slot for slot in session.slots} | {slot for slot in other.slots}) == len(
            session.slots)
        device = session.device(51, 0, 1)
        assert device.slot == session.chassis[2].slots[2] and device.chassis == session.chassis[2]
        assert repr(device) == "Device(bus=51, number=0, function=1, name='PXI2Slot2')"
        assert 2 in session.chassis and 99 not in session.chassis and -1 not in session.chassis
        assert session.chassis.get(99) is None and len(session.chassis) == 3
        assert [chassis.number for chassis in reversed(session.chassis)] == [3, 2, 1]
        assert session.chassis[1].trigger_bridges[2].line_mapping(6) == (6, 7)


def test_help_tells_units():
    assert "In lanes. None where" in pydoc.render_doc(varmex.Slot, renderer=pydoc.plaintext)


@pytest.mark.parametrize("length", [10, 9000])
def test_a_failure_keeps_its_text_and_runs_no_python_within_the_library(root, length):
    """What a signal handler raises there is lost. A text without end can't do without."""
    edit(root, rb"(SlotType *= *)[^\r\n]*", rb"\1" + b"N" * length, "pxiesys.ini")
    called = []
    with varmex.Session() as session:
        slot = session.chassis[1].slots[2]
        for _ in range(2):
            with pytest.raises(varmex.AbsentError) as raised:
                sys.setprofile(lambda frame, event, _: called.append(frame.f_code.co_name))
                try:
                    slot.require("type")
                finally:
                    sys.setprofile(None)
            assert json.loads(raised.value.json)["varmex_debug"]["bad_slot_type"] == "N" * length
            with pytest.raises(varmex.UnknownItemError, match="^(?!.*NNN)"):
                session.chassis[99]
    assert "require" in called and ("_provide" in called) == (length > 4000)


def test_texts_come_through_as_they_are(root):
    edit(root, b"ORX-1820", b"ORX-\xfc\xff", "pxisys.ini", "pxiesys.ini")
    with varmex.Session() as session:
        model = session.chassis[1].model
        assert model == "ORX-\udcfc\udcff" and model.encode("utf-8", "surrogateescape") == b"ORX-\xfc\xff"


LINE_8 = [
    # The mapping of source line 6 as it is written; the source lines that are refused.
    ("PXI_TRIG6 = 8", {6}),
    ("PXI_TRIG6 = 0, +08", {6}),
    ("PXI_TRIG6 = 6", set()),
    ("; a remark\rPXI_TRIG6 = 8\r", {6}),
    ("PXI_TRIG6 Line1 = 7,\nPXI_TRIG6 Line2 = 8", {6}),
    ("PXI_TRIG6 = 7," + " " * 242 + "\r8\n", {6}),
]


@pytest.mark.parametrize("mapping, refused", LINE_8)
def test_a_destination_line_8_does_not_end_the_process(root, mapping, refused):
    assert source_lines_in(mapping.encode()) == refused
    edit(root, rb"PXI_TRIG6 *= *[^\r\n]*", mapping.encode())
    with varmex.Session() as session:
        bridge = session.trigger_bridges[0]
        for line in range(8):
            if line not in refused:
                bridge.line_mapping(line)
                continue
            for ask in (bridge.line_mapping,
                        lambda line: bridge.u32(constants.varmex_u32_BridgeLineMapping0 + line)):
                with pytest.raises(varmex.ConflictError, match="line 8"):
                    ask(line)


@pytest.mark.parametrize("asked_before", [True, False])
def test_a_line_8_that_the_files_no_longer_have(root, asked_before):
    file = root / "etc/pxi/pxisys.ini"
    sound = file.read_bytes()
    edit(root, rb"PXI_TRIG6 *= *[^\r\n]*", b"PXI_TRIG6 = 8")
    with varmex.Session() as session:
        bridge = session.trigger_bridges[0]
        if asked_before:
            bridge.line_mapping(0)
        file.write_bytes(sound)
        os.utime(file, (1, 1))
        with pytest.raises(varmex.ConflictError, match="destination line 8"):
            bridge.line_mapping(6)
        if asked_before:
            bridge.line_mapping(0)


def test_a_line_8_of_the_express_file_alone(root):
    edit(root, rb"\[Chassis1LineMappingSpec1\]", b"[Elsewhere]")
    edit(root, rb"\Z", b"\n[Chassis1LineMappingSpec1]\nPXI_TRIG6 = 8\n", "pxiesys.ini")
    with varmex.Session() as session:
        with pytest.raises(varmex.ConflictError, match="destination line 8"):
            session.trigger_bridges[0].line_mapping(6)


def test_only_what_an_item_has_not_is_none(root):
    edit(root, rb"(TriggerManager *= *)[^\r\n]*", rb'\1"another"')
    with varmex.Session(synchronize=True) as session:
        assert session.warning.constant == "varmex_warningFailedSync" and session.warning.code > 0
        with pytest.raises(varmex.ConflictError):
            session.chassis[1].trigger_manager


def test_a_repr_tells_what_it_can(root):
    edit(root, b"FunctionList", b"SomethingElse")
    with varmex.Session() as session:
        slot = session.chassis[1].slots[2]
        held = {slot}
        assert repr(slot) == "Slot(chassis_number=1, number=2)"
        assert "Chassis(number=1, vendor='Orlindt" in repr(session.chassis)
    assert slot in held and repr(slot) == "<Slot of a closed session>"


def test_pictures_come_from_the_command(root, monkeypatch):
    with varmex.Session() as session:
        closed = session.chassis[2]
    assert closed._repr_svg_() is None
    monkeypatch.setenv("SOURCE_DATE_EPOCH", "1000000000")  # pictures tell the second they were made
    with varmex.Session() as session:
        drawn = subprocess.run(["varmex", "draw", "2", "-o", "-"], capture_output=True, text=True)
        assert "<svg" in drawn.stdout and session.chassis[2]._repr_svg_() == drawn.stdout
        chassis = session.chassis[2]
        file = root / "etc/pxi/pxiesys.ini"
        file.write_bytes(b"[")  # the command fails
        (root / "etc/pxi/pxisys.ini").unlink()
        assert chassis._repr_svg_() is None
        monkeypatch.setenv("PATH", str(PROJECT / "no-such-folder"))
        assert chassis._repr_svg_() is None


def test_windows_looks_for_the_dll(tmp_path, monkeypatch):
    """What there is of it here: the order of places. Nothing is loaded."""
    program = """
import ctypes, os, runpy, sys
from ctypes import util
from pathlib import Path
sys.platform = "win32"
util.find_library = lambda name: "C:/on/the/path/" + name
package = Path(sys.argv[1])
(package / "varmex.dll").touch()
library = runpy.run_path(str(package / "_library.py"))
print(*library["candidates"](), sep="\\n")
os.environ["VARMEX_LIBRARY"] = "D:/own.dll"
print(*library["candidates"](), sep="\\n")
def fail(name):
    raise OSError("No module. Try another path.")
ctypes.CDLL = fail
try:
    library["load"]()
except ImportError as error:
    print(error)
"""
    shutil.copy(Path(varmex.__file__).parent / "_library.py", tmp_path)
    monkeypatch.delenv("VARMEX_LIBRARY", raising=False)
    assert run_python(program, tmp_path).splitlines() == [
        str((str(tmp_path / "varmex.dll"), "the package")),
        str(("C:/on/the/path/varmex.dll", "the system")),
        str(("D:/own.dll", "VARMEX_LIBRARY")),
        "the varmex library was not found. Tried: D:/own.dll (VARMEX_LIBRARY): No module. Try another "
        "path. Put the folder of varmex.dll on PATH, or let VARMEX_LIBRARY name the library's file."]
