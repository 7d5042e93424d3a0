"""Failures of the library as exceptions."""

import json as _json
from typing import Any, Dict, Iterator, Tuple, Type

from . import constants as c


_HEAD = ("error_constant", "file", "line", "component")


def _pairs(value: Any, key: str = "") -> Iterator[Tuple[str, Any]]:
    """The names and values of a status text, whatever their depth."""
    if isinstance(value, dict):
        for name, inner in value.items():
            yield from _pairs(inner, name)
    elif isinstance(value, list):
        for inner in value:
            yield from _pairs(inner, key)
    else:
        yield key, value


class Error(Exception):
    """A failed call of the library.

    Attributes:
        code: the status code, such as -380751; docs/status-codes.md tells them all.
        constant: its symbolic name, such as "varmex_errorUnknownItem"; empty without one.
        detail: what is told of the occasion, "name: value" pairs between commas; may be empty.
        json: the status text as the library wrote it.
    """

    code: int
    constant: str
    detail: str
    json: str

    def __init__(self, code: int, json: str = "{}") -> None:
        try:
            parsed = _json.loads(json, strict=False)
        except ValueError:
            parsed = None
        fields: Dict[str, Any] = parsed if isinstance(parsed, dict) else {}
        self.code = code
        self.json = json
        self.constant = str(fields.get("error_constant", ""))
        self.detail = ", ".join(f"{name}: {value}" for name, value in _pairs(fields)
                                if name not in _HEAD)
        self._told = dict(_pairs(fields))
        super().__init__(code, json)

    def told(self, name: str) -> Any:
        """What the status text tells under a name, such as "slotNum"; None where it does not."""
        return self._told.get(name)

    def __str__(self) -> str:
        head = f"{self.constant or 'varmex'} ({self.code})"
        return f"{head}: {self.detail}" if self.detail else head


class AbsentError(Error):
    """The item has no such thing: what a property answers None for and `require` raises."""


class UnknownItemError(Error, LookupError):
    """The description holds no such chassis, slot, bridge or device."""


class ConflictError(Error):
    """The description contradicts itself."""


class InvalidArgumentError(Error, ValueError):
    """A bad argument, an unknown ticket, a malformed seed."""


class UnsupportedError(Error):
    """The item or the adaptor can't do this at all."""


class LockedError(Error, TimeoutError):
    """Another program kept configuration.ini locked for 10 seconds."""


class AccessError(Error, PermissionError):
    """A file of the description may not be read, or could not be for 10 seconds."""

    def __init__(self, code: int, json: str = "{}") -> None:
        # OSError fills attributes of its own from two arguments.
        Error.__init__(self, code, json)


class ResourcesInUseError(Error):
    """The terminal is held under another token. `conflicts` are the routes of the same session that
    hold it, if any."""

    conflicts: Tuple[Any, ...] = ()


class OutOfMemoryError(Error, MemoryError):
    """The library had no memory for the call."""


class ClosedError(ValueError):
    """The session was closed."""


_CLASSES: Dict[int, Type[Error]] = {
    c.varmex_errorAttributeNotApplicable: AbsentError,
    c.varmex_errorInformationNotAvailable: AbsentError,
    c.varmex_errorStarController: AbsentError,
    c.varmex_errorNotConnected: AbsentError,
    c.varmex_errorTriggerManagerLibraryNotFound: AbsentError,
    c.varmex_errorUnknownItem: UnknownItemError,
    c.varmex_errorInformationConflict: ConflictError,
    c.varmex_errorInvalidParameter: InvalidArgumentError,
    c.telmar_ra_errorInvalidArgument: InvalidArgumentError,
    c.ostrelerr_invalidParameter: InvalidArgumentError,
    c.varmex_errorFeatureUnsupported: UnsupportedError,
    c.telmar_ra_errorFeatureUnsupported: UnsupportedError,
    c.varmex_errorLockTimeout: LockedError,
    c.varmex_pxiSystemDescriptionInaccessible: AccessError,
    c.ostrelerr_insufficientPermissions: AccessError,
    c.varmex_fileAccessDenied: AccessError,
    c.telmar_ra_errorResourcesInUse: ResourcesInUseError,
    c.varmex_errorMemoryFull: OutOfMemoryError,
    c.ostrelerr_memoryFull: OutOfMemoryError,
}

ABSENT = frozenset(code for code, kind in _CLASSES.items() if kind is AbsentError)
"""The codes that say "this item has no such thing"."""


def error_of(code: int, json: str) -> Error:
    """The exception for a status."""
    return _CLASSES.get(code, Error)(code, json)
