"""Trigger lines: the terminals of a module, and who holds which.

A route is a promise about one terminal under a token. What is held counts in this process alone,
for one module under one text of the device name; two modules on one bus do not exclude each other.
"""

import enum
import json
import weakref
from ctypes import byref, c_void_p
from types import TracebackType
from typing import Any, Iterable, List, NamedTuple, Optional, Type, Union

from . import _raw
from ._errors import ResourcesInUseError
from ._handles import Bound, Child, Owner
from ._objects import Device

_library = _raw.library


class Lines(enum.IntFlag):
    """The groups of lines that a routing session may be on."""

    TRIGGER_BUS = 1
    STAR = 2
    DSTAR = 4


class Terminal(NamedTuple):
    """A terminal of a routing device, as the adaptor tells of it."""

    name: str
    visibility: str
    bus_type: str
    bus_name: str
    canonical_name: str
    bus_line: int
    is_external: bool
    is_owned: bool
    is_alias: bool
    is_masked_out: bool


class Seed(NamedTuple):
    """Where a route may begin, and the token that it would hold its terminal under."""

    terminal: str
    token: str = ""
    cost: int = 0


class Conflict(NamedTuple):
    """A route of one's own session that holds a terminal already."""

    session_id: int
    ticket: int


class Route(Bound):
    """A calculated route. As a context manager it is reserved inside the block; at the end of the
    block, by `destroy` or by the collector it is destroyed, and its reservation with it."""

    __slots__ = ("ticket", "destination", "cost", "_session", "_live", "__weakref__")

    def __init__(self, session: Owner, ticket: int, destination: str, cost: int) -> None:
        self.ticket = ticket
        self.destination = destination
        self.cost = cost
        self._session = session
        self._live = [ticket]
        session.adopt(self)

    def reserve(self) -> None:
        """Takes the terminal. ResourcesInUseError, which knows the conflicting routes of this
        session, when another token holds it."""
        reply = c_void_p()
        try:
            _raw.call(_library.telmar_ra_varmex_reserveRoute, self._session.pointer, self.ticket,
                      byref(reply))
        except ResourcesInUseError as error:
            error.conflicts = tuple(Conflict(entry["sessionId"], entry["ticket"])
                                    for entry in json.loads(_raw.take_reply(reply) or "[]"))
            raise
        finally:
            _raw.take_reply(reply)

    def program(self) -> None:
        """Checks the route; changes nothing. InvalidArgumentError for one that was destroyed."""
        _raw.call(_library.telmar_ra_varmex_programRoute, self._session.pointer, self.ticket)

    def unprogram(self) -> None:
        """Does nothing."""
        _library.telmar_ra_varmex_unprogramRoute(self._session.pointer, self.ticket)

    def unreserve(self) -> None:
        """Gives the terminal back, once no other route of the session holds it."""
        _library.telmar_ra_varmex_unreserveRoute(self._session.pointer, self.ticket)

    def destroy(self, end: Any = _library.telmar_ra_varmex_destroyRoute) -> None:
        """Ends the route; a second call does nothing."""
        try:
            ticket = self._live.pop()
        except IndexError:
            return
        end(self._session.argument, ticket)
        self._session.disown(self)

    def __enter__(self) -> "Route":
        self.reserve()
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.destroy()

    def __del__(self) -> None:
        self.destroy()

    def __repr__(self) -> str:
        return f"Route(ticket={self.ticket}, destination={self.destination!r}, cost={self.cost})"


class RoutingSession(Bound):
    """A client's session on the trigger lines of one module.

    Args:
        device: a Device, its address "5.0.0", or a whole device name "5.0.0:1".
        lines: the groups of lines, unless the name tells them.

    Raises:
        InvalidArgumentError: the name has not its four numbers.
        UnknownItemError: no such device.
        AbsentError: the module's slot has not these lines.
    """

    def __init__(self, device: Union[Device, str],
                 lines: Union[Lines, int] = Lines.TRIGGER_BUS) -> None:
        name = device if isinstance(device, str) else str(device.address)
        self.device_name = name if ":" in name else f"{name}:{int(lines)}"
        self._session = Owner(
            _raw.call(_library.telmar_ra_varmex_createSession, _raw.encode(self.device_name),
                      _raw.REPLY_BUFFER),
            _library.telmar_ra_varmex_destroySession)
        self._routes: "weakref.WeakSet[Route]" = weakref.WeakSet()

    def close(self) -> None:
        """Destroys the routes that are left and ends the session. A second call does nothing."""
        for route in list(self._routes):
            route.destroy()
        self._session.closed = True

    def __enter__(self) -> "RoutingSession":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    @property
    def terminals(self) -> List[Terminal]:
        """The terminals of the module's lines."""
        iterator = Child(
            _raw.call(_library.telmar_ra_varmex_getAllTerminals, self._session.pointer),
            self._session, _library.telmar_ra_varmex_TerminalIterator_destroy)
        terminals: List[Terminal] = []
        while not _library.telmar_ra_varmex_TerminalIterator_isEnd(iterator.pointer):
            terminals.append(_terminal_at(iterator.pointer))
            _raw.call(_library.telmar_ra_varmex_TerminalIterator_next, iterator.pointer)
        return terminals

    def calculate(self, seeds: Iterable[Union[Seed, str]],
                  destinations: Iterable[str]) -> List[Route]:
        """One route for each wanted terminal that a seed stands on and nobody holds under another
        token. A seed that is a text is a terminal without a token.

        Raises:
            Error: a seed on an unknown terminal, or 1024 routes live.
            TypeError: a single text in the place of a list.
        """
        if isinstance(seeds, str) or isinstance(destinations, str):
            raise TypeError("seeds and destinations are lists, not single texts")
        listed = [seed if isinstance(seed, Seed) else Seed(seed) for seed in seeds]
        wanted = json.dumps(list(destinations), ensure_ascii=False)
        reply = c_void_p()
        try:
            _raw.call(_library.telmar_ra_varmex_calculateRoute, self._session.pointer,
                      _raw.encode(json.dumps([_seed_json(seed) for seed in listed],
                                             ensure_ascii=False)),
                      _raw.encode(wanted), None, byref(reply))
        finally:
            text = _raw.take_reply(reply)
        routes = [Route(self._session, entry["ticket"], entry["destination"], entry["cost"])
                  for entry in json.loads(text)]
        self._routes.update(routes)
        return routes

    def __repr__(self) -> str:
        return f"RoutingSession({self.device_name!r})"


def _seed_json(seed: Seed) -> Any:
    return {"terminal": seed.terminal, "cost": seed.cost, "constraints": {},
            "srcDeviceToken": seed.token}


def _terminal_at(at: c_void_p) -> Terminal:
    def text(name: bytes) -> str:
        value = _raw.call(_library.telmar_ra_varmex_TerminalIterator_getStringAttribute, at, name)
        return _raw.decode(value or b"")

    def flag(name: bytes) -> bool:
        return bool(
            _raw.call(_library.telmar_ra_varmex_TerminalIterator_getBoolAttribute, at, name))

    line: int = _raw.call(_library.telmar_ra_varmex_TerminalIterator_getU32Attribute, at,
                          b"busLine")
    return Terminal(text(b"name"), text(b"visibility"), text(b"busType"), text(b"busName"),
                    text(b"canonicalName"), line, flag(b"isExternal"), flag(b"isOwned"),
                    flag(b"isAlias"), flag(b"isMaskedOut"))
