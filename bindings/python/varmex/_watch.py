"""Changes of the description under asyncio."""

import asyncio
import threading
from types import TracebackType
from typing import NamedTuple, Optional, Type

from ._objects import Session, WaitResult


class Change(NamedTuple):
    """What `watch` yields: the description as it is now and as it was. Each session is the
    receiver's; it closes itself when nothing uses it any more."""

    session: Session
    previous: Session


class Watch:
    """An asynchronous iterator over the changes of the description; see `watch`."""

    def __init__(self) -> None:
        self._session = Session()

    def __aiter__(self) -> "Watch":
        return self

    async def __anext__(self) -> Change:
        """Waits for the next change. Cancelled, it ends its wait and its thread before it goes on;
        a change of that moment is told by the next call."""
        loop = asyncio.get_running_loop()
        done: "asyncio.Future[None]" = loop.create_future()
        waiter = _Waiter(self._session, loop, done)
        waiter.start()
        try:
            await done
        finally:
            # A wait that is cancelled once is so for ever: the next one needs a session that was
            # opened ahead of the question whether anything changed meanwhile.
            if waiter.is_alive():
                self._session.cancel_waits()
                waiter.join()
                self._renew()
        waiter.raise_failure()
        previous, self._session = self._session, Session()
        return Change(self._session, previous)

    def _renew(self) -> None:
        renewed = Session()
        if self._session.is_current:
            self._session = renewed

    async def aclose(self) -> None:
        """Does nothing: between two changes nothing is held but a session."""

    async def __aenter__(self) -> "Watch":
        return self

    async def __aexit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                        trace: Optional[TracebackType]) -> None:
        await self.aclose()


class _Waiter(threading.Thread):
    """A wait on a thread of its own, which ends with it."""

    def __init__(self, session: Session, loop: asyncio.AbstractEventLoop,
                 done: "asyncio.Future[None]") -> None:
        super().__init__(name="varmex watch", daemon=True)
        self._session = session
        self._loop = loop
        self._done = done
        self._failure: Optional[BaseException] = None

    def run(self) -> None:
        try:
            while self._session.wait() is WaitResult.TIMED_OUT:
                pass
        except BaseException as failure:
            self._failure = failure
        try:
            self._loop.call_soon_threadsafe(self._tell)
        except RuntimeError:
            pass  # the loop was closed meanwhile, and nobody waits

    def _tell(self) -> None:
        if not self._done.done():
            self._done.set_result(None)

    def raise_failure(self) -> None:
        if self._failure is not None:
            raise self._failure


def watch() -> Watch:
    """The changes of the description from now on: `async for change in varmex.watch()`.

    Each change is a pair of sessions, now and before. Between two changes no thread is left behind,
    and leaving the loop or cancelling the task ends the wait at once.

    Raises:
        Error: the description can't be read or watched. The watch stays usable: iterate again.
    """
    return Watch()
