"""The C interface: prototypes, status records, calls.

`call` and its kin are what the rest of the package uses; all they take and give are numbers, bytes
and handles as integers.
"""

import ctypes
from ctypes import (CFUNCTYPE, POINTER, Structure, byref, c_bool, c_char_p, c_int32, c_size_t,
                    c_uint32, c_uint64, c_void_p)
from typing import Any, Dict, List, Optional, Tuple

from . import _library
from ._errors import Error, error_of

Argument = Any
"""What ctypes takes for an argument."""


class Record(Structure):
    """tStatusRecord."""

    code: int
    capacity: int
    text: Optional[int]


Reallocate = CFUNCTYPE(c_bool, POINTER(Record), c_uint32)

Record._fields_ = [
    ("code", c_int32),
    ("capacity", c_uint32),
    ("reallocate", Reallocate),
    ("text", c_void_p),
]


class DeviceAddress(Structure):
    """tDeviceAddress."""

    _fields_ = [("reserved", c_uint32), ("bus", c_uint32), ("device", c_uint32),
                ("function", c_uint32)]


_realloc: Any = ctypes.pythonapi.PyMem_RawRealloc
_realloc.argtypes = [c_void_p, c_size_t]
_realloc.restype = c_void_p
_free: Any = ctypes.pythonapi.PyMem_RawFree
_free.argtypes = [c_void_p]
_free.restype = None

ReallocFunc = CFUNCTYPE(c_void_p, c_void_p, c_size_t)
REPLY_BUFFER = ctypes.cast(_realloc, ReallocFunc)
"""What replies of the adaptor are written into; `take_reply` frees it."""


_grown: Dict[int, Any] = {}  # buffers by the address of their record


def _provide(record: Any, capacity: int) -> bool:
    """The buffer policy of a record: the text is kept."""
    fields = record.contents
    if capacity > fields.capacity:
        text = ctypes.string_at(fields.text) if fields.text else b"{}"
        size = max(512, 2 * fields.capacity, capacity)
        try:
            buffer = ctypes.create_string_buffer(text, size)
        except MemoryError:
            return False
        _grown[ctypes.addressof(fields)] = buffer
        fields.text, fields.capacity = ctypes.addressof(buffer), size
    elif capacity == 0:
        fields.text, fields.capacity = None, 0
    return True


_PROVIDE = Reallocate(_provide)

library = _library.load()
"""The loaded library."""

_STATUS = POINTER(Record)
_PROTOTYPES: List[Tuple[str, Any, Tuple[Any, ...]]] = [
    # Name, result, arguments.
    ("varmex_openPXISession", c_void_p, (c_uint32, _STATUS)),
    ("varmex_openChassisByNumber", c_void_p, (c_void_p, c_uint32, _STATUS)),
    ("varmex_openSlotByNumber", c_void_p, (c_void_p, c_uint32, _STATUS)),
    ("varmex_openDeviceByAddr", c_void_p, (c_void_p, POINTER(DeviceAddress), _STATUS)),
    ("varmex_openContainingItem", c_void_p, (c_void_p, c_uint32, _STATUS)),
    ("varmex_getU32Attribute", c_uint32, (c_void_p, c_uint32, _STATUS)),
    ("varmex_getStringAttribute", c_char_p, (c_void_p, c_uint32, _STATUS)),
    ("varmex_close", None, (c_void_p,)),
    ("varmex_waitForSessionInvalidation", c_uint32, (c_void_p, c_uint32, _STATUS)),
    ("varmex_cancelWaitForInvalidation", None, (c_void_p,)),
    ("varmex_getItemContainer", c_void_p, (c_void_p, c_uint32, _STATUS)),
    ("varmex_destroyItemContainer", None, (c_void_p,)),
    ("varmex_ItemIterator_end", c_uint64, (c_void_p, _STATUS)),
    ("varmex_ItemIterator_nextItem", c_void_p, (c_void_p, POINTER(c_uint64), _STATUS)),
    ("telmar_ra_varmex_createSession", c_void_p, (c_char_p, ReallocFunc, _STATUS)),
    ("telmar_ra_varmex_destroySession", None, (c_void_p,)),
    ("telmar_ra_varmex_calculateRoute", c_int32,
     (c_void_p, c_char_p, c_char_p, c_void_p, POINTER(c_void_p), _STATUS)),
    ("telmar_ra_varmex_reserveRoute", None, (c_void_p, c_uint32, POINTER(c_void_p), _STATUS)),
    ("telmar_ra_varmex_programRoute", None, (c_void_p, c_uint32, _STATUS)),
    ("telmar_ra_varmex_unprogramRoute", None, (c_void_p, c_uint32)),
    ("telmar_ra_varmex_unreserveRoute", None, (c_void_p, c_uint32)),
    ("telmar_ra_varmex_destroyRoute", None, (c_void_p, c_uint32)),
    ("telmar_ra_varmex_getAllTerminals", c_void_p, (c_void_p, _STATUS)),
    ("telmar_ra_varmex_TerminalIterator_next", None, (c_void_p, _STATUS)),
    ("telmar_ra_varmex_TerminalIterator_isEnd", c_bool, (c_void_p,)),
    ("telmar_ra_varmex_TerminalIterator_getStringAttribute", c_char_p,
     (c_void_p, c_char_p, _STATUS)),
    ("telmar_ra_varmex_TerminalIterator_getBoolAttribute", c_bool, (c_void_p, c_char_p, _STATUS)),
    ("telmar_ra_varmex_TerminalIterator_getU32Attribute", c_uint32,
     (c_void_p, c_char_p, _STATUS)),
    ("telmar_ra_varmex_TerminalIterator_destroy", None, (c_void_p,)),
]

for _name, _result, _arguments in _PROTOTYPES:
    try:
        _function = getattr(library, _name)
    except AttributeError as _error:
        raise ImportError(f"{library._name} is no varmex library of this version: "
                          f"it lacks {_name}") from _error
    _function.restype = _result
    _function.argtypes = _arguments



def unchecked(function: Any) -> Any:
    """The same function, taking its arguments as they come: a handle must be a c_void_p, a number
    passes for 32 bits. That spares a quarter of the call."""
    twin = library[function.__name__]
    twin.restype = function.restype
    return twin


# Records without a text, for calls whose failure mostly is an answer. A call takes one and puts it
# back, so that threads, signal handlers and finalizers never share one.
idle: List[Tuple[Record, Any]] = []


def brief_record() -> Tuple[Record, Any]:
    """A record without a text and the reference to it that a call takes."""
    record = Record()
    return record, byref(record)


class _TextRecord(Record):
    """A record with room for nearly every text: what a signal handler raises during a call, such as
    KeyboardInterrupt, is lost if it runs inside the callback for more."""

    def __init__(self) -> None:
        self._room = ctypes.create_string_buffer(4096)
        super().__init__(reallocate=_PROVIDE)
        self._clear()

    def _clear(self) -> None:
        self._room.value = b"{}"
        self.text, self.capacity = ctypes.addressof(self._room), len(self._room)
        self.code = 0
        _grown.pop(ctypes.addressof(self), None)

    def take(self) -> Error:
        """What a call told; the record may serve again."""
        error = error_of(self.code, decode(ctypes.string_at(self.text)) if self.text else "{}")
        self._clear()
        return error


_idle_texts: List[Tuple[_TextRecord, Any]] = []


def call(function: Any, *arguments: Argument) -> Any:
    """Calls with a status as the last argument and answers the result. Error on failure."""
    return call_with_warning(function, *arguments)[0]


def call_with_warning(function: Any, *arguments: Argument) -> Tuple[Any, Optional[Error]]:
    """As `call`; the second value is the warning that came with the result."""
    try:
        pair = _idle_texts.pop()
    except IndexError:
        fresh = _TextRecord()
        pair = fresh, byref(fresh)
    record, reference = pair
    result = function(*arguments, reference)
    status = record.take() if record.code else None
    _idle_texts.append(pair)  # what was interrupted on the way here is not put back
    if status and status.code < 0:
        raise status
    return result, status


def take_reply(reply: c_void_p) -> str:
    """The text of a reply, "" when there is none (any more); frees its buffer."""
    if not reply.value:
        return ""
    try:
        return decode(ctypes.string_at(reply.value))
    finally:
        _free(reply)
        reply.value = None


def decode(text: bytes) -> str:
    """A text of the description. Bytes that are no UTF-8 come through as lone surrogates and go
    back by `encode`."""
    return text.decode("utf-8", "surrogateescape")


def encode(text: str) -> bytes:
    return text.encode("utf-8", "surrogateescape")

