"""Attributes of items as read-only properties."""

from functools import lru_cache
from operator import methodcaller
from typing import TYPE_CHECKING, Any, Callable, Generic, List, Optional, Type, TypeVar, Union, overload

from . import _raw
from . import constants as c
from ._errors import ABSENT, ClosedError
from ._handles import Bound, Child, Owner

_T = TypeVar("_T")
_decode = methodcaller("decode", "utf-8", "surrogateescape")


class HasHandle(Bound):
    """What the attributes of an item are asked of."""

    __slots__ = ("_handle",)

    _handle: Union[Child, Owner]


class Attribute(property, Generic[_T]):
    """A read-only property that asks the library for an attribute of its item.

    Attributes:
        name: that of its constant without the prefix, which is its key in `to_dict()`.
        number: the attribute's number.
        unit: its unit, None for texts and for plain numbers.
        read: what answers it of an item.
    """

    def __init__(self, name: str, doc: str, ask: Any, number: int,
                 convert: Optional[Callable[[Any], Any]], is_optional: bool,
                 unit: Optional[str]) -> None:
        self.read: Callable[[HasHandle], _T] = _reader(ask, number, convert, is_optional)
        super().__init__(self.read)
        # Handed to property it would be hidden by that of this class up to Python 3.11.
        self.__doc__ = " ".join(filter(None, [
            doc, f"In {unit}." if unit else "",
            "None where there is no such thing." if is_optional else "",
            "Error where the description can't be read."]))
        self.name = name
        self.number = number
        self.unit = unit
        self._ask = ask
        self._convert = convert

    if TYPE_CHECKING:
        @overload  # type: ignore[override]
        def __get__(self, item: None, owner: Type[Any]) -> "Attribute[_T]": ...
        @overload
        def __get__(self, item: HasHandle, owner: Type[Any]) -> _T: ...

        def __get__(self, item: Optional[HasHandle], owner: Type[Any]) -> Any: ...

    def ask(self, item: HasHandle) -> Any:
        """The library's own answer, a number or bytes. AbsentError, Error."""
        return _raw.call(self._ask, item._handle.pointer, self.number)

    def require(self, item: HasHandle) -> Any:
        """The value; AbsentError, which says why, where there is no such thing."""
        answer = self.ask(item)
        return answer if self._convert is None else self._convert(answer)


def _reader(ask: Any, number: int, convert: Optional[Callable[[Any], Any]],
            is_optional: bool) -> Callable[[HasHandle], Any]:
    """What reads an attribute. All that a program reads goes through here: no call is made that can
    be spared."""
    idle = _raw.idle
    ask_quickly = _raw.unchecked(ask)

    def read(item: HasHandle) -> Any:
        handle = item._handle
        if handle.session.closed:
            raise ClosedError("the session was closed")
        try:
            pair = idle.pop()
        except IndexError:
            pair = _raw.brief_record()
        answer = ask_quickly(handle.argument, number, pair[1])
        if not answer:  # 0 and nothing are what a refusal answers, too
            record = pair[0]
            code = record.code
            if code < 0:
                record.code = 0
                idle.append(pair)
                if is_optional and code in ABSENT:
                    return None
                answer = _raw.call(ask, handle.argument, number)
                return answer if convert is None else convert(answer)
        idle.append(pair)
        return answer if convert is None else convert(answer)

    return read


_u32 = _raw.library.varmex_getU32Attribute
_text = _raw.library.varmex_getStringAttribute


def _number_of(kind: str, name: str) -> int:
    number: int = getattr(c, f"varmex_{kind}_{name}")
    return number


def u32(name: str, doc: str, unit: Optional[str] = None) -> Attribute[int]:
    """A number that every item of the class has."""
    return Attribute(name, doc, _u32, _number_of("u32", name), None, False, unit)


def u32_if_any(name: str, doc: str, unit: Optional[str] = None) -> Attribute[Optional[int]]:
    """A number, None where the item has no such thing."""
    return Attribute(name, doc, _u32, _number_of("u32", name), None, True, unit)


def flag(name: str, doc: str) -> Attribute[bool]:
    """A number that is 1 or 0."""
    return Attribute(name, doc, _u32, _number_of("u32", name), bool, False, None)


def flag_if_any(name: str, doc: str) -> Attribute[Optional[bool]]:
    """A number that is 1 or 0, None where the item has no such thing."""
    return Attribute(name, doc, _u32, _number_of("u32", name), bool, True, None)


def bits_if_any(name: str, doc: str, kind: Type[_T], unit: str) -> Attribute[Optional[_T]]:
    """A set of bits, None where the item has no such thing."""
    convert = lru_cache(maxsize=256)(kind)
    return Attribute(name, doc, _u32, _number_of("u32", name), convert, True, unit)


def text(name: str, doc: str) -> Attribute[str]:
    """A text that every item of the class has."""
    return Attribute(name, doc, _text, _number_of("str", name), _decode, False, None)


def text_if_any(name: str, doc: str) -> Attribute[Optional[str]]:
    """A text, None where the item has no such thing."""
    return Attribute(name, doc, _text, _number_of("str", name), _decode, True, None)


def attributes_of(kind: Type[Any]) -> "List[Attribute[Any]]":
    """All attributes of a class, in the order in which they are told."""
    return [value for value in vars(kind).values() if isinstance(value, Attribute)]
