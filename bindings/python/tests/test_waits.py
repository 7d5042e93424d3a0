"""Waits, in threads and under asyncio."""

import asyncio
import os
import signal
import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import pytest
import varmex
from varmex import WaitResult

LIMIT = 60  # seconds, against hanging


def touch(root):
    file = root / "etc/pxi/pxisys.ini"
    changed = root / "changed.ini"
    changed.write_bytes(file.read_bytes() + b"; changed\n")
    os.utime(changed, (1, time.time() + 5))
    os.replace(changed, file)  # at once: what was opened in between would not be current


async def expect_change(watch, root):
    """One that comes while nobody waits is told as soon as somebody does."""
    touch(root)
    change = await asyncio.wait_for(watch.__anext__(), LIMIT)
    assert change.session.is_current and not change.previous.is_current


@pytest.mark.parametrize("in_main_thread", [True, False])
def test_wait_sees_a_change_and_keeps_to_its_time(root, in_main_thread):
    def waits():
        with varmex.Session() as session:
            before = time.monotonic()
            assert session.wait(0.3) is WaitResult.TIMED_OUT
            assert not session.wait(0)
            assert time.monotonic() - before >= 0.3
            threading.Timer(0.2, touch, [root]).start()
            assert session.wait(LIMIT) is WaitResult.CHANGED and session.wait()

    if in_main_thread:
        waits()
    else:
        with ThreadPoolExecutor() as threads:
            threads.submit(waits).result()


def test_others_run_while_one_waits_and_close_ends_it(root):
    session = varmex.Session()
    chassis = session.chassis[1]
    with ThreadPoolExecutor() as threads:
        wait = threads.submit(session.wait)
        for _ in range(100):
            assert chassis.number == 1
        session.close()
        # The wait had begun, or begins with a session that is closed.
        failure = wait.exception(LIMIT)
        assert isinstance(failure, varmex.ClosedError) or wait.result() is WaitResult.CANCELLED
    with pytest.raises(varmex.ClosedError):
        chassis.number


@pytest.mark.skipif(sys.platform == "win32", reason="sends a signal")
def test_an_interrupt_ends_a_wait(root):
    program = ("import varmex\nsession = varmex.Session()\nprint('waits', flush=True)\n"
               "try:\n  session.wait()\nexcept KeyboardInterrupt:\n  print('interrupted')\n")
    with subprocess.Popen([sys.executable, "-c", program], stdout=subprocess.PIPE,
                          text=True) as process:
        assert process.stdout.readline() == "waits\n"
        time.sleep(0.5)
        process.send_signal(signal.SIGINT)
        assert process.communicate(timeout=LIMIT)[0] == "interrupted\n"


def test_watch_tells_changes_and_leaves_no_thread(root):
    async def main():
        before = threading.active_count()
        asyncio.get_running_loop().call_later(0.2, touch, root)
        seen = []
        async for change in varmex.watch():
            seen.append((change.previous.is_current, change.session.is_current))
            if len(seen) == 2:
                break
            touch(root)
            await asyncio.sleep(0)
        assert threading.active_count() == before
        return seen

    assert asyncio.run(asyncio.wait_for(main(), LIMIT))[0] == (False, True)


def test_watch_is_cancelled_at_once_and_goes_on_after_it(root):
    async def main():
        watch = varmex.watch()
        for _ in range(3):
            task = asyncio.ensure_future(watch.__anext__())
            await asyncio.sleep(0.1)
            task.cancel()
            with pytest.raises(asyncio.CancelledError):
                await task
        assert threading.active_count() == 1
        await expect_change(watch, root)

    asyncio.run(main())


def test_a_watch_that_is_thrown_away_leaves_no_thread(root):
    loop = asyncio.new_event_loop()
    waiting = varmex.watch().__anext__()
    task = loop.create_task(waiting)
    task._log_destroy_pending = False
    loop.run_until_complete(asyncio.sleep(0.1))
    assert threading.active_count() == 2
    waiting.close()
    assert threading.active_count() == 1
    loop.close()


@pytest.mark.skipif(sys.platform == "win32", reason="holds the lock as flock does")
@pytest.mark.parametrize("is_locked_before", [False, True])
def test_a_loop_goes_on_while_others_hold_the_lock(root, is_locked_before):
    import fcntl

    async def main():
        with open(root / "var/lib/PXISA/configuration.ini") as lock:
            if is_locked_before:
                fcntl.flock(lock, fcntl.LOCK_EX)
            watch = varmex.watch()
            await asyncio.sleep(0.1)
            fcntl.flock(lock, fcntl.LOCK_EX)
            task = asyncio.ensure_future(watch.__anext__())
            await asyncio.sleep(0.1)
            touch(root)
            await asyncio.sleep(0.5)  # a thread is opening a session now
            task.cancel()
            for _ in range(5):
                await asyncio.sleep(0.02)
                assert not task.done()
                task.cancel()
        with pytest.raises(asyncio.CancelledError):
            await task
        assert threading.active_count() == 1
        await expect_change(watch, root)

    asyncio.run(main())
