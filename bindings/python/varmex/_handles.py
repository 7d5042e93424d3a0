"""Handles that close themselves, an owner's always after those of what came from it.

Finalizers run in any thread, at any moment and, within a cycle, in any order. So an owner stays open
until the last of its children is closed. Sets and lists do their work in one step under the
interpreter's lock: nothing here waits.
"""

from ctypes import c_void_p
from typing import Any, Callable, FrozenSet, List, Optional, Set

from . import _raw
from ._errors import ClosedError


class Bound:
    """What stands for something of this process: a copy of it would end it a second time."""

    __slots__ = ()

    def __reduce__(self) -> Any:
        raise TypeError(f"a {type(self).__name__} belongs to this process; open it anew elsewhere")


class Owner:
    """An open handle with children. `closed` is set when the user ended it: what uses it after that
    is refused, while the handle itself stays open until its last user is gone. `argument` is the
    handle whether or not it was ended, in the form that calls take without a conversion."""

    __slots__ = ("closed", "source_lines_to_8", "argument", "_close", "_children", "_open", "_released")

    def __init__(self, pointer: int, close: Any = _raw.library.varmex_close) -> None:
        self.closed = False
        self.source_lines_to_8: Optional[FrozenSet[int]] = None  # once that is known
        self.argument = c_void_p(pointer)
        self._close = close
        self._children: Set[int] = set()
        self._open: List[c_void_p] = [self.argument]
        self._released = False

    @property
    def pointer(self) -> c_void_p:
        if self.closed:
            raise ClosedError("the session was closed")
        return self.argument

    @property
    def session(self) -> "Owner":
        return self

    def adopt(self, child: object) -> None:
        # Not by its handle: the library may give that to another child before this one is disowned.
        self._children.add(id(child))

    def disown(self, child: object) -> None:
        self._children.discard(id(child))
        if self._released:
            self._close_when_last()

    def __del__(self) -> None:
        self._released = True
        self._close_when_last()

    def _close_when_last(self) -> None:
        if not self._children:
            try:
                argument = self._open.pop()
            except IndexError:
                return
            self._close(argument)


class Child:
    """An open handle that came from a session: an item, a list, an iterator. `argument` as of an
    owner's."""

    __slots__ = ("argument", "_close", "session")

    def __init__(self, pointer: int, session: Owner,
                 close: Any = _raw.library.varmex_close) -> None:
        self.argument = c_void_p(pointer)
        self._close: Callable[[c_void_p], Optional[object]] = close
        self.session = session
        session.adopt(self)

    @property
    def pointer(self) -> c_void_p:
        if self.session.closed:
            raise ClosedError("the session of this item was closed")
        return self.argument

    def __del__(self) -> None:
        self._close(self.argument)
        self.session.disown(self)
