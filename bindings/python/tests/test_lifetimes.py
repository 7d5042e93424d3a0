"""Any order of ends: collected, closed late or never, in threads, after fork. What goes wrong shows
as a crash, so each runs in a process of its own, and under the sanitizer too."""

import sys

import pytest
from conftest import run_python
from varmex._handles import Child, Owner

SETUP = """
import gc, multiprocessing, os, random, sys, threading, varmex
from varmex.routing import RoutingSession, Seed
def tree(session):
    items = [session.chassis[1], session.chassis[2].slots[2], session.device(51, 0)]
    return items + session.slots + session.devices + session.trigger_bridges
def use(items):
    return [repr(item) for item in items]
def routes():
    session = RoutingSession("51.0.0")
    found = session.calculate([Seed("PXI_Trig1", "a")], ["PXI_Trig1"])
    return [session] + found
"""

PROGRAMS = {
    "shuffled": """
random.seed(int(sys.argv[1]))
for _ in range(30):
    held = []
    for _ in range(3):
        session = varmex.Session()
        held += [session, *tree(session), *routes()]
    del session
    random.shuffle(held)
    while held:
        held.pop()
""",
    "cycles": """
class Holder: pass
for _ in range(30):
    ring = [Holder() for _ in range(8)]
    session = varmex.Session()
    for index, item in enumerate([session, *tree(session)[:5], *routes()]):
        ring[index].item, ring[index].next = item, ring[(index + 1) % 8]
    del session, item, ring
    gc.collect()
""",
    "never closed": """
sessions = [varmex.Session() for _ in range(5)]
items = [item for session in sessions for item in tree(session)]
kept = routes()
kept.append(kept)
""",
    "closed early": """
for _ in range(30):
    with varmex.Session() as session:
        items = tree(session)
    for item in items:
        assert "closed session" in repr(item)
        try:
            item.kind
            print("answered")
        except varmex.ClosedError:
            pass
""",
    "threads": """
def work(session):
    for _ in range(20):
        use(tree(session))
        session.chassis[1].slots.get(99)
        with varmex.Session() as mine:
            use(tree(mine))
session = varmex.Session()
threads = [threading.Thread(target=work, args=(session,)) for _ in range(4)]
[thread.start() for thread in threads]
session_items = tree(session)
del session
gc.collect()
[thread.join() for thread in threads]
use(session_items)
""",
}

FORKS = {
    "fork": """
session = varmex.Session()
items = tree(session)
waiter = threading.Thread(target=session.wait, args=(2,))
waiter.start()
for _ in range(5):
    child = os.fork()
    if child == 0:
        use(items)
        assert varmex.Session().wait(0.05) is varmex.WaitResult.TIMED_OUT
        session.close()
        del items, session
        gc.collect()
        os._exit(0)
    assert os.waitpid(child, 0)[1] == 0
use(items)
waiter.join()
""",
    "multiprocessing": """
def count(_):
    with varmex.Session() as mine:
        return len(mine.slots)
session = varmex.Session()
modules = session.modules()
with multiprocessing.get_context("fork").Pool(2) as pool:
    assert pool.map(count, range(4)) == [len(session.slots)] * 4
assert session.modules() == modules
try:
    import pickle
    pickle.dumps(session.chassis[1])
    print("pickled")
except TypeError:
    pass
""",
}


def test_a_handle_that_is_given_out_anew_keeps_its_session_open():
    closed = []
    held = []

    def note(handle):
        closed.append(handle.value)

    def close(handle):
        note(handle)
        held.append(Child(7, owner, note))  # as another thread may

    owner = Owner(1, note)
    Child(7, owner, close)
    owner.__del__()  # as the collector, within a cycle
    assert closed == [7]
    held.clear()
    assert closed == [7, 7, 1]


@pytest.mark.parametrize("name", list(PROGRAMS) + (list(FORKS) if sys.platform != "win32" else []))
def test_no_order_of_ends_harms(root, name):
    program = {**PROGRAMS, **FORKS}[name]
    assert run_python(SETUP + program + "\nprint('ended')", 1, PYTHONMALLOC="debug") == "ended\n"
