"""Items as documents by docs/varmex.schema.json, as the command prints them."""

from typing import TYPE_CHECKING, Any, Callable, Dict, Iterable, List, Mapping, Optional, Tuple

from . import constants as c
from ._absence import ROWS
from ._attributes import Attribute
from ._errors import AbsentError, Error
from ._line_8 import LineEightError

if TYPE_CHECKING:
    from ._objects import Item, TriggerBridge

Document = Dict[str, Any]
Lists = Mapping[str, Callable[[], List[Document]]]

SCHEMA_VERSION = 1
_LINE_BITS = "bits: bit n for destination line n"
_LINES = [f"BridgeLineMapping{line}" for line in range(8)]


def describe(item: "Item", attributes: "Iterable[Attribute[Any]]", why: bool,
             lists: Lists = {}) -> Document:
    """What an item answers, and its lists."""
    return _told([(attribute.name, _asking(item, attribute)) for attribute in attributes], why,
                 lists)


def describe_bridge(bridge: "TriggerBridge", attributes: "Iterable[Attribute[Any]]",
                    why: bool) -> Document:
    """The same of a bridge, with its line mappings as bits."""
    def mapping(line: int) -> Callable[[], Any]:
        return lambda: bridge.u32(c.varmex_u32_BridgeLineMapping0 + line)

    questions = [(attribute.name, _asking(bridge, attribute)) for attribute in attributes]
    return _told(questions + [(name, mapping(line)) for line, name in enumerate(_LINES)], why, {})


def unopened(place: Document, lists: List[str], error: Optional[Error]) -> Document:
    """An item of which nothing but its place is known."""
    return {**place, **{name: [] for name in lists},
            "failures": {"opening": _reason(error)} if error else {}}


def installation(machine: Document, attributes: "Iterable[Attribute[Any]]",
                 read_chassis: Callable[[], List[Document]]) -> Document:
    """The document of a whole installation."""
    units = {attribute.name: attribute.unit for attribute in attributes if attribute.unit}
    units.update({name: _LINE_BITS for name in _LINES})
    document = {"schemaVersion": SCHEMA_VERSION, "machine": machine, "units": units,
                **_told([], False, {"Chassis": read_chassis})}
    document["failureCount"] = _count_failures(document)
    return document


def _asking(item: "Item", attribute: "Attribute[Any]") -> Callable[[], Any]:
    def ask() -> Any:
        answer = attribute.ask(item)
        return answer.decode("utf-8", "replace") if isinstance(answer, bytes) else answer
    return ask


def _told(questions: "List[Tuple[str, Callable[[], Any]]]", why: bool, lists: Lists) -> Document:
    told: Document = {}
    absent: Document = {}
    failures: Document = {}
    for name, ask in questions:
        try:
            told[name] = ask()
        except Error as error:
            (absent if _is_absence(name, error) else failures)[name] = _reason(error)
    for name, read in lists.items():
        told[name] = []
        try:
            told[name] = read()
        except Error as error:
            failures[name] = _reason(error)
    if absent and why:
        told["absent"] = absent
    if failures:
        told["failures"] = failures
    return told


def _is_absence(name: str, error: Error) -> bool:
    """Whether the description says nothing about the attribute, or the item is of another kind. The
    code for "not available" stands for what can't be read, too; the text tells them apart, by the
    rows that the command goes by."""
    if not isinstance(error, AbsentError) or error.code != c.varmex_errorInformationNotAvailable:
        return isinstance(error, AbsentError)
    absence, otherwise = next(row[1:] for row in ROWS if row[0] in error.json)
    return absence != (otherwise == name)


def _reason(error: Error) -> Document:
    if isinstance(error, LineEightError):
        return {"code": 0, "constant": "std::out_of_range", "detail": "invalid bitset<N> position"}
    return {"code": error.code, "constant": error.constant,
            "detail": error.detail.encode("utf-8", "surrogateescape").decode("utf-8", "replace")}


def _count_failures(document: Document) -> int:
    below = [item for value in document.values() if isinstance(value, list) for item in value]
    below += [document["machine"]] if "machine" in document else []
    return len(document.get("failures", {})) + sum(map(_count_failures, below))
