"""Times a walk of every attribute of 255 chassis of 18 slots in Python.

    pythonWalk.py BUILD

BUILD holds the command, the Python package and varmex_bench_python. Prints the processor's seconds,
best of several rounds that alternate, as bench/report.py reads them: of the package, of the same walk
in C++, and of as many calls by ctypes, with arguments of the same types, of a function that does
nothing.
"""

import ctypes
import os
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROUNDS = 2


def timed(work):
    """The processor's seconds that the work takes, and its answer."""
    start = time.process_time()
    answer = work()
    return time.process_time() - start, answer


def walk(names, session):
    count = 0

    def ask(item):
        own = names[type(item)]
        for name in own:
            getattr(item, name)
        return len(own)

    for chassis in session.chassis:
        count += ask(chassis)
        for slot in chassis.slots:
            count += ask(slot)
            count += sum(map(ask, slot.devices))
        for bridge in chassis.trigger_bridges:
            count += ask(bridge)
            for line in range(8):
                bridge.line_mapping(line)
            count += 8
    return count


def call_often(count):
    function = ctypes.CDLL(None).labs
    function.restype = ctypes.c_uint32
    function.argtypes = [ctypes.c_void_p, ctypes.c_uint32, ctypes.POINTER(ctypes.c_int)]
    status = ctypes.byref(ctypes.c_int())
    for _ in range(count):
        function(1, 4096, status)


def main(build):
    sys.path.insert(0, str(build / "python"))
    sys.dont_write_bytecode = True
    import varmex
    from varmex._attributes import attributes_of

    kinds = (varmex.Chassis, varmex.Slot, varmex.Device, varmex.TriggerBridge)
    names = {kind: [name for name, value in vars(kind).items() if value in attributes_of(kind)]
             for kind in kinds}
    with tempfile.TemporaryDirectory() as root:
        subprocess.run([build / "bin/varmex", "make", root, "express:18:18x255"], check=True)
        os.environ["VARMEX_FSROOT"] = root
        seconds = []
        with varmex.Session() as session:
            for _ in range(ROUNDS):
                package, count = timed(lambda: walk(names, session))
                bare, _ = timed(lambda: call_often(count))
                printed = subprocess.run([build / "bin/varmex_bench_python"], check=True,
                                         capture_output=True, text=True).stdout
                in_cpp, cpp = printed.split()
                if int(in_cpp) != count:
                    sys.exit(f"{count} answers, in C++ {in_cpp}")
                seconds.append((package, float(cpp), bare))
    for who, each in zip(("varmex", "cpp", "ctypes"), zip(*seconds)):
        print(f"walk/python/255/{who} {min(each)}")


if __name__ == "__main__":
    main(Path(sys.argv[1]))
