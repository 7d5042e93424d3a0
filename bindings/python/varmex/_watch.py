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
        self._session: Optional[Session] = None  # as long as that is being opened
        self._opening: Optional[_Opening] = _Opening()
        self._is_cancelled = False

    def __aiter__(self) -> "Watch":
        return self

    async def __anext__(self) -> Change:
        """Waits for the next change. Cancelled, it ends its wait and its thread before it goes on;
        a change of that moment is told by the next call. Error."""
        waiter = _Waiter(self._session, self._opening, self._is_cancelled,
                         asyncio.get_running_loop())
        waiter.start()
        try:
            await asyncio.shield(waiter.ended)
        except BaseException as end:  # cancelled, or thrown away with its loop
            self._is_cancelled = True
            waiter.cancel()
            if isinstance(end, asyncio.CancelledError):
                await waiter.end_in_loop()
            raise
        finally:
            waiter.join()
            self._session = waiter.session
            self._opening = None
        if waiter.failure:
            raise waiter.failure
        assert waiter.renewed is not None and self._session is not None
        self._is_cancelled = False
        previous, self._session = self._session, waiter.renewed
        return Change(self._session, previous)

    async def aclose(self) -> None:
        """Does nothing: between two changes nothing is held but a session."""

    async def __aenter__(self) -> "Watch":
        return self

    async def __aexit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                        trace: Optional[TracebackType]) -> None:
        await self.aclose()


class _Opening(threading.Thread):
    """Opens a session, which takes its time while others keep the description locked."""

    def __init__(self) -> None:
        super().__init__(name="varmex watch", daemon=True)
        self._session: Optional[Session] = None
        self._failure: Optional[BaseException] = None
        self.start()

    def run(self) -> None:
        try:
            self._session = Session()
        except BaseException as failure:
            self._failure = failure

    def await_session(self) -> Session:
        """The session, once the thread has ended. Error."""
        self.join()
        if self._failure:
            raise self._failure
        assert self._session is not None
        return self._session


class _Waiter(threading.Thread):
    """A wait on a thread of its own, which ends with it. All that may block is done here."""

    def __init__(self, session: Optional[Session], opening: Optional[_Opening],
                 is_cancelled: bool, loop: asyncio.AbstractEventLoop) -> None:
        super().__init__(name="varmex watch", daemon=True)
        self.session = session
        self.renewed: Optional[Session] = None
        self.failure: Optional[BaseException] = None
        self.ended: "asyncio.Future[None]" = loop.create_future()
        self._opening = opening
        self._is_cancelled = is_cancelled
        self._must_end = False
        self._loop = loop

    def cancel(self) -> None:
        """Ends the wait, and the thread soon after."""
        self._must_end = True
        if self.session:
            self.session.cancel_waits()

    async def end_in_loop(self) -> None:
        """Waits for the end while the loop goes on: others may hold up the opening of a session."""
        while not self.ended.done():
            try:
                await asyncio.shield(self.ended)
            except asyncio.CancelledError:
                pass

    def run(self) -> None:
        try:
            self.renewed = self._await_change()
        except BaseException as failure:
            self.failure = failure
        try:
            self._loop.call_soon_threadsafe(self._tell)
        except RuntimeError:
            pass  # the loop was closed meanwhile, and nobody waits

    def _await_change(self) -> Optional[Session]:
        if self.session is None:
            self.session = self._opening.await_session() if self._opening else Session()
        elif self._is_cancelled:
            # A session whose waits were cancelled once waits no more. Another takes its place, opened
            # ahead of the question whether anything changed meanwhile.
            renewed = Session()
            if not self.session.is_current:
                return renewed
            self.session = renewed
        result = WaitResult.TIMED_OUT
        while result is WaitResult.TIMED_OUT and not self._must_end:
            result = self.session.wait()
        return None if self._must_end else Session()

    def _tell(self) -> None:
        if not self.ended.done():
            self.ended.set_result(None)


def watch() -> Watch:
    """The changes of the description from now on: `async for change in varmex.watch()`.

    Each change is a pair of sessions, now and before. Between two changes no thread is left behind,
    and leaving the loop or cancelling the task ends the wait at once. A watch serves one task. This
    answers at once; a thread opens the session that the first wait begins with, and ends.

    Waiting raises:
        Error: the description can't be read or watched. The watch stays usable: iterate again.
    """
    return Watch()
