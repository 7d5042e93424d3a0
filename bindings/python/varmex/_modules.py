"""Modules: what sits in a slot, its PCI functions as one thing."""

import re
from dataclasses import dataclass, replace
from typing import TYPE_CHECKING, Any, Dict, Iterable, List, NamedTuple, Optional, Sequence, Tuple

from . import constants as c
from ._errors import Error

if TYPE_CHECKING:
    from ._objects import Chassis, Device, Slot

_DECIMAL = re.compile(r"([0-9]+)\.([0-9]+)\.([0-9]+)")
_HEXADECIMAL = re.compile(r"(?:[0-9a-f]+:)?([0-9a-f]+):([0-9a-f]+)\.([0-9a-f]+)", re.IGNORECASE)
_LOWER = {capital: capital + 32 for capital in range(ord("A"), ord("Z") + 1)}


def _lowered(text: str) -> str:
    """Case counts for nothing in ASCII alone, as in the C++ header."""
    return text.translate(_LOWER)


def _whole(text: Optional[str]) -> Optional[str]:
    """A text for a document; None where there is nothing in it."""
    return text.encode("utf-8", "surrogateescape").decode("utf-8", "replace") if text else None


class PciAddress(NamedTuple):
    """A PCI address. Its text is decimal with dots, as the library has it: "13.0.0"."""

    bus: int
    device: int
    function: int

    @property
    def hexadecimal(self) -> str:
        """As lspci writes it, "0d:00.0"."""
        return f"{self.bus:02x}:{self.device:02x}.{self.function:x}"

    @classmethod
    def parse(cls, text: str) -> "PciAddress":
        """Reads either notation, the hexadecimal one with a domain in front or not. ValueError."""
        for pattern, base in ((_DECIMAL, 10), (_HEXADECIMAL, 16)):
            match = pattern.fullmatch(text)
            if match:
                return cls(*(int(number, base) for number in match.groups()))
        raise ValueError(f"neither BUS.DEVICE.FUNCTION in decimal, such as 33.15.0, nor "
                         f"BUS:DEVICE.FUNCTION in hexadecimal, such as 21:0f.0: {text!r}")

    def __str__(self) -> str:
        return f"{self.bus}.{self.device}.{self.function}"


@dataclass(frozen=True, eq=False)
class Module:
    """What sits in a slot, its PCI functions as one thing; or the controller in a system slot, of
    which the description may name no function.

    Everything was read when the module was made. What the description does not tell, or tells
    unreadably, is None; of a module that only pxisys.ini describes it tells functions and addresses
    alone. Modules are equal when they are in one place.

    Attributes:
        slot_number: the slot that it is anchored in.
        slots: the numbers of all slots that it covers, the anchor first.
        name: "PXI1Slot9".
        alias: the user's name for it.
        chassis_serial_number: modules have none of their own.
        addresses: one for each function, in ascending order.
        link_width: in lanes, as the link runs.
        link_width_max: in lanes, what the module can use.
        slot_link_width: in lanes, what its slot has.
        has_slot_link: whether slots of that type have a link width; those of controllers have none.
    """

    chassis_number: int
    slot_number: int
    slots: Tuple[int, ...]
    name: str
    alias: Optional[str]
    vendor: Optional[str]
    model: Optional[str]
    chassis_serial_number: Optional[str]
    chassis_identity: str
    resource_names: Tuple[str, ...]
    addresses: Tuple[PciAddress, ...]
    functions: "Tuple[Device, ...]"
    link_width: Optional[int]
    link_width_max: Optional[int]
    slot_link_width: Optional[int]
    has_slot_link: bool

    @property
    def place(self) -> str:
        """Chassis and slot, "1/9"."""
        return f"{self.chassis_number}/{self.slot_number}"

    @property
    def title(self) -> str:
        """Vendor and model, or the name where the description knows neither."""
        return " ".join(filter(None, (self.vendor, self.model))) or self.name

    @property
    def possible_link_width(self) -> Optional[int]:
        """The most lanes that both module and slot can; None where one of the two is not known."""
        if not self.has_slot_link or self.link_width_max is None:
            return self.link_width_max
        if self.slot_link_width is None:
            return None
        return min(self.link_width_max, self.slot_link_width)

    @property
    def is_link_reduced(self) -> bool:
        """Whether the link runs with fewer lanes than both can."""
        possible = self.possible_link_width
        return self.link_width is not None and possible is not None and self.link_width < possible

    def is_called(self, name: str) -> bool:
        """Whether it goes by that name: its alias, name, place, one of its resource names or PCI
        addresses ("13.0.0"). The case of letters does not matter."""
        own = (self.alias or "", self.name, self.place, *self.resource_names,
               *map(str, self.addresses))
        return bool(name) and _lowered(name) in map(_lowered, own)

    def fits(self, word: str) -> bool:
        """Whether the word is a part of what it is known by, as `Session.find` has it."""
        word = _lowered(word)
        own = (self.alias, self.vendor, self.model, self.chassis_serial_number, self.name,
               *self.resource_names)
        return (any(word in _lowered(text) for text in own if text) or word == self.place
                or self._fits_address(word))

    def to_dict(self) -> Dict[str, Any]:
        """What `varmex find --json` prints of it, as docs/varmex.schema.json has it, without faults:
        what the description does not tell, or tells unreadably, is left out. Texts have U+FFFD for
        what is no UTF-8."""
        told = {
            "place": self.place, "chassis": self.chassis_number, "slot": self.slot_number,
            "slots": list(self.slots), "name": self.name,
            "addresses": [str(address) for address in self.addresses],
            "resources": [_whole(name) for name in self.resource_names],
            "alias": _whole(self.alias), "vendor": _whole(self.vendor), "model": _whole(self.model),
            "width": self.link_width, "possibleWidth": self.possible_link_width,
            "moduleWidth": self.link_width_max, "slotWidth": self.slot_link_width,
            "reduced": self.is_link_reduced, "serial": _whole(self.chassis_serial_number),
            "identity": _whole(self.chassis_identity)}
        return {key: value for key, value in told.items() if value is not None}

    def _fits_address(self, word: str) -> bool:
        try:
            # A whole address fits itself alone: "5.0.0" is no part of "15.0.0".
            return PciAddress.parse(word) in self.addresses
        except ValueError:
            return any(str(address).startswith(word) or address.hexadecimal.startswith(word)
                       for address in self.addresses)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Module):
            return NotImplemented
        return self.place == other.place

    def __hash__(self) -> int:
        return hash(("Module", self.chassis_number, self.slot_number))


@dataclass(frozen=True)
class ModuleAttempt:
    """One of a list of modules that goes on behind what can't be opened: the module, or why there is
    none; without a slot number where the whole chassis can't be opened."""

    chassis_number: int
    slot_number: Optional[int] = None
    module: Optional[Module] = None
    error: Optional[Error] = None


def opened(attempts: Iterable[ModuleAttempt]) -> List[Module]:
    """The modules; the first error if there is one."""
    modules: List[Module] = []
    for attempt in attempts:
        if attempt.error:
            raise attempt.error
        if attempt.module:
            modules.append(attempt.module)
    return modules


def fitting(attempts: Sequence[ModuleAttempt], words: Sequence[str]) -> List[Module]:
    """See `Session.find`."""
    if not words or not all(words):
        raise ValueError("nothing to look for")
    found = [attempt.module for attempt in attempts
             if attempt.module and all(map(attempt.module.fits, words))]
    if not found:
        opened(attempts)
    return found


def named(attempts: Sequence[ModuleAttempt], name: str) -> Optional[Module]:
    """See `Session.find_module`."""
    called = [attempt.module for attempt in attempts
              if attempt.module and attempt.module.is_called(name)]
    for module in called:
        if _lowered(module.alias or "") == _lowered(name):
            return module
    if not called:
        opened(attempts)
    return called[0] if called else None


def read_modules(chassis: "Chassis") -> List[ModuleAttempt]:
    """See `Chassis.each_module`."""
    number = chassis.number
    whole = number, chassis.serial_number, chassis.identity
    attempts: List[ModuleAttempt] = []
    # Slots without a function belong to the modules that cover them.
    covered: List[Tuple[Optional[int], int]] = []
    for slot in chassis.each_slot():
        try:
            module = _read_module(whole, slot.number, slot.item) if slot.item else None
            if module or slot.error:
                attempts.append(ModuleAttempt(number, slot.number, module, slot.error))
            elif slot.item:
                covered.append((slot.item.occupying_module_slot, slot.number))
        except Error as error:
            attempts.append(ModuleAttempt(number, slot.number, error=error))
    return [_covering(attempt, covered) for attempt in attempts]


def _covering(attempt: ModuleAttempt, covered: List[Tuple[Optional[int], int]]) -> ModuleAttempt:
    if not attempt.module:
        return attempt
    more = tuple(slot for anchor, slot in covered
                 if anchor == attempt.slot_number)
    if not more:
        return attempt
    module = replace(attempt.module, slots=attempt.module.slots + more)
    return replace(attempt, module=module)


def _read_module(whole: Tuple[int, Optional[str], str], number: int,
                 slot: "Slot") -> Optional[Module]:
    """None where nothing is in the slot."""
    chassis_number, serial_number, identity = whole
    functions = tuple(slot.devices)
    alias = vendor = model = resources = width = width_max = None
    if not functions:
        alias, vendor, model, resources = (slot.system_instance_name, slot.system_vendor,
                                           slot.system_model, slot.system_address_info)
        if not (alias or vendor or model):
            return None
    elif functions[0].is_express:  # all come from one file
        one = functions[0]
        alias, vendor, model, resources = (one.instance_name, one.vendor, one.model,
                                           one.address_info)
        width, width_max = one.link_width_negotiated, one.link_width_max
    return Module(
        chassis_number, number, (number,), f"PXI{chassis_number}Slot{number}", alias, vendor, model,
        serial_number, identity, tuple(filter(None, re.split("[;+]", resources or ""))),
        tuple(function.address for function in functions), functions, width, width_max,
        slot.link_width1, slot.type is None or bool(slot.type & c.varmex_slotType_PXIePeripheral))
