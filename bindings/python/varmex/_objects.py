"""The description as objects: sessions, chassis, slots, devices, trigger bridges."""

import dataclasses
import enum
import math
import operator
import threading
import time
from ctypes import byref, c_uint64
from typing import (Any, Callable, ClassVar, Dict, Generic, Iterator, List, Optional, Tuple,
                    Type, TypeVar, Union)

from . import _attributes as a
from . import _document, _line_8, _raw
from . import constants as c
from ._errors import Error, UnknownItemError
from ._handles import Child, Owner
from ._modules import Module, ModuleAttempt, PciAddress, fitting, named, opened, read_modules

_get_u32 = _raw.library.varmex_getU32Attribute
_get_string = _raw.library.varmex_getStringAttribute
_call = _raw.call


class ItemKind(enum.IntEnum):
    """What an item is."""

    SESSION = c.varmex_itemType_Session
    CHASSIS = c.varmex_itemType_Chassis
    SLOT = c.varmex_itemType_Slot
    DEVICE = c.varmex_itemType_Device
    TRIGGER_BRIDGE = c.varmex_itemType_TriggerBridge


class SlotType(enum.IntFlag):
    """What a slot takes. A hybrid slot has both peripheral bits, a system timing slot that of a PXI
    Express peripheral, a star trigger controller position that of a PXI-1 peripheral."""

    PXI1_PERIPHERAL = c.varmex_slotType_PXI1Peripheral
    PXIE_PERIPHERAL = c.varmex_slotType_PXIePeripheral
    PXIE_SYSTEM = c.varmex_slotType_PXIeSystem
    PXI_SYSTEM = c.varmex_slotType_PXISystem
    STAR_CONTROLLER = c.varmex_slotType_StarController
    SYSTEM_TIMING = c.varmex_slotType_SystemTiming


class WaitResult(enum.IntEnum):
    """How a wait ended. True only for a change."""

    CHANGED = c.varmex_waitChanged
    TIMED_OUT = c.varmex_waitTimedOut
    CANCELLED = c.varmex_waitCancelled

    def __bool__(self) -> bool:
        return self is WaitResult.CHANGED


def _attribute_number(number: int) -> int:
    # ctypes would take its last 32 bits.
    if not 0 <= operator.index(number) <= 0xFFFFFFFF:
        raise ValueError(f"no attribute has the number {number}")
    return number


class Item(a.HasHandle):
    """What all items have in common.

    Items are equal when they are of one kind at one place, also across sessions. They keep their
    session open, may be used from any number of threads, and raise ClosedError once it is closed.
    """

    __slots__ = ("_place", "__weakref__")

    _PLACE: ClassVar[Tuple[str, ...]] = ()  # the properties that tell one from the others
    _TOLD: ClassVar[Tuple[str, ...]] = ()  # what is shown beside these

    def __init__(self, handle: Union[Child, Owner]) -> None:
        self._handle = handle

    @property
    def kind(self) -> ItemKind:
        """What the item is."""
        return ItemKind(self.u32(c.varmex_u32_ItemType))

    def u32(self, attribute: int) -> int:
        """A numeric attribute by its number in `varmex.constants`. AbsentError, Error; ValueError
        for what is no number of 32 bits."""
        number: int = _call(_get_u32, self._handle.pointer, _attribute_number(attribute))
        return number

    def text(self, attribute: int) -> str:
        """A text attribute by its number in `varmex.constants`. AbsentError, Error; ValueError for
        what is no number of 32 bits."""
        return _raw.decode(_call(_get_string, self._handle.pointer, _attribute_number(attribute)))

    def require(self, name: str) -> Any:
        """The property of that name; AbsentError, which says why, where it answers None."""
        attribute = getattr(type(self), name)
        if isinstance(attribute, a.Attribute):
            return attribute.require(self)
        return getattr(self, name)

    def to_dict(self, *, why: bool = False) -> Dict[str, Any]:
        """What the item and all below it answer, as docs/varmex.schema.json has it: what
        `varmex show --json` prints of it. What does not apply is left out, or told in "absent" with
        `why`; what can't be answered stands in "failures". Texts have U+FFFD for what is no UTF-8."""
        return _document.describe(self, a.attributes_of(type(self)), why)

    def _key(self) -> Tuple[object, ...]:
        try:
            return self._place
        except AttributeError:
            self._place: Tuple[object, ...] = tuple(getattr(self, name) for name in self._PLACE)
            return self._place

    def __eq__(self, other: object) -> bool:
        if type(other) is not type(self) or not isinstance(other, Item):
            return NotImplemented
        return self._key() == other._key()

    def __hash__(self) -> int:
        return hash((type(self).__name__, self._key()))

    def __repr__(self) -> str:
        if self._handle.session.closed:
            return f"<{type(self).__name__} of a closed session>"
        told = []
        for name in self._PLACE + self._TOLD:
            try:
                told.append(f"{name}={getattr(self, name)!r}")
            except Error as error:
                told.append(f"{name}=<{error.constant}>")
        return f"{type(self).__name__}({', '.join(told)})"

    def _list(self, kind: "Type[_T]", container: int) -> "List[_T]":
        """The items of a container, in its order."""
        library = _raw.library
        session = self._handle.session
        listed = Child(_call(library.varmex_getItemContainer, self._handle.pointer, container),
                       session, library.varmex_destroyItemContainer)
        count: int = _call(library.varmex_ItemIterator_end, listed.pointer)
        position = c_uint64(0)
        reference = byref(position)
        next_item = library.varmex_ItemIterator_nextItem
        items = []
        for index in range(count):
            pointer = next_item(listed.pointer, reference, None)
            if not pointer:  # once more, to be told why
                position.value = index
                pointer = _call(next_item, listed.pointer, reference)
            items.append(kind(Child(pointer, session)))
        return items

    def _containing(self, kind: "Type[_T]", number: ItemKind) -> "_T":
        pointer = _call(_raw.library.varmex_openContainingItem, self._handle.pointer, number)
        return kind(Child(pointer, self._handle.session))


_T = TypeVar("_T", bound=Item)


@dataclasses.dataclass(frozen=True)
class Attempt(Generic[_T]):
    """One of a list that goes on behind what can't be opened: the item, or why there is none.

    Attributes:
        number: that of the chassis or slot.
    """

    number: int
    item: Optional[_T] = None
    error: Optional[Error] = None


class Numbered(Generic[_T]):
    """Items that have numbers: `slots[7]` opens slot 7 (UnknownItemError, a LookupError, where
    there is none), iterating lists all in the order of their numbers, `7 in slots` asks.

    Listing fails as a whole where one of the items can't be opened, as the library does; opening
    the others by number goes on.
    """

    def __init__(self, open_one: Callable[[int], _T], list_all: Callable[[], List[_T]]) -> None:
        self._open_one = open_one
        self._list_all = list_all

    def __getitem__(self, number: int) -> _T:
        return self._open_one(number)

    def get(self, number: int) -> Optional[_T]:
        """The item of that number, None where there is none."""
        try:
            return self._open_one(number)
        except LookupError:
            return None

    def __iter__(self) -> Iterator[_T]:
        return iter(self._list_all())

    def __reversed__(self) -> Iterator[_T]:
        return reversed(self._list_all())

    def __len__(self) -> int:
        return len(self._list_all())

    def __contains__(self, number: object) -> bool:
        return isinstance(number, int) and number >= 0 and self.get(number) is not None

    def __repr__(self) -> str:
        return repr(self._list_all())


def _u32_argument(number: int, what: str) -> int:
    number = operator.index(number)
    if not 0 <= number <= 0xFFFFFFFF:
        raise UnknownItemError(c.varmex_errorUnknownItem,
                               '{"error_constant":"varmex_errorUnknownItem","varmex_debug":'
                               f'{{"message":"no {what} has the number {number}"}}}}')
    return number


def _open_each(listed: Numbered[_T], key: str) -> "List[Attempt[_T]]":
    """The list; if it fails, what opens by the numbers up to 255, and the one that the failure names
    under `key`, whether it exists or not."""
    try:
        return [Attempt(item.require("number"), item) for item in listed]
    except Error as failure:
        named = failure.told(key)
    attempts: "List[Attempt[_T]]" = []
    for number in [*range(256)] + ([named] if isinstance(named, int) and named > 255 else []):
        try:
            attempts.append(Attempt(number, listed[number]))
        except UnknownItemError as error:
            if number == named:
                attempts.append(Attempt(number, error=error))
        except Error as error:
            attempts.append(Attempt(number, error=error))
    return attempts


_LINE_MAPPINGS = [a.u32(f"BridgeLineMapping{line}", "") for line in range(8)]
_LINES = [tuple(line for line in range(8) if bits >> line & 1) for bits in range(256)]


class TriggerBridge(Item):
    """A bridge between two trigger buses of a chassis."""

    __slots__ = ()
    _PLACE = ("chassis_number", "number")

    chassis_number = a.u32("ChassisNumber", "Number of its chassis.")
    number = a.u32("BridgeNumber", "Number of the bridge.")
    source_trigger_bus = a.u32_if_any(
        "BridgeSourceTriggerBus", "Number of the bus that it takes signals from.")
    destination_trigger_bus = a.u32_if_any(
        "BridgeDestinationTriggerBus", "Number of the bus that it hands them to.")

    @property
    def chassis(self) -> "Chassis":
        """The chassis that it is built into."""
        return self._containing(Chassis, ItemKind.CHASSIS)

    def line_mapping(self, source_line: int) -> Tuple[int, ...]:
        """The lines 0 to 7 of the destination bus that a signal on a source line 0 to 7 may come
        out on. AbsentError; ConflictError for a destination line that does not exist, and where the
        files changed ahead of a session's first question; ValueError for a source line beyond 7."""
        if not 0 <= source_line <= 7:
            raise ValueError(f"a trigger bus has the lines 0 to 7, not {source_line}")
        self._refuse_line_8(source_line)
        return _LINES[_LINE_MAPPINGS[source_line].read(self)]

    def to_dict(self, *, why: bool = False) -> Dict[str, Any]:
        return _document.describe_bridge(self, a.attributes_of(TriggerBridge), why)

    def u32(self, attribute: int) -> int:
        """As of every item; ConflictError for a line mapping as in `line_mapping`."""
        source_line = attribute - c.varmex_u32_BridgeLineMapping0
        if 0 <= source_line <= 7:
            self._refuse_line_8(source_line)
        return super().u32(attribute)

    def _refuse_line_8(self, source_line: int) -> None:
        refusal = _line_8.refusal_for(self._handle.session, source_line)
        if refusal:
            raise refusal


class Device(Item):
    """One PCI function of a module. The properties of the module answer None unless it is a PXI
    Express one."""

    __slots__ = ()
    _PLACE = ("bus", "number", "function")
    _TOLD = ("name",)

    name = a.text("DeviceName", '"PXI1Slot2" for chassis 1, slot 2.')
    chassis_number = a.u32("ChassisNumber", "Number of its chassis.")
    slot_number = a.u32("SlotNumber", "Number of its slot.")
    bus = a.u32("DeviceBus", "PCI bus number.")
    number = a.u32("DeviceNumber", "PCI device number.")
    function = a.u32("DeviceFunction", "PCI function number.")
    is_express = a.flag("DeviceIsExpress", "Whether it is a PXI Express device.")
    vendor = a.text_if_any("DeviceVendor", "Maker of the module.")
    model = a.text_if_any("DeviceModel", "Model of the module.")
    instance_name = a.text_if_any("DeviceInstanceName", "The user's name for the module.")
    address_info = a.text_if_any(
        "DeviceAddressInfo", "Resource names of all functions of the module.")
    occupied_slot_list = a.text_if_any(
        "PeripheralModuleOccupiedSlotList", "Further slots that the module covers, between commas.")
    link_width_max = a.u32_if_any(
        "PeripheralModuleLinkWidthMax", "What the module can use.", "lanes")
    link_width_negotiated = a.u32_if_any(
        "PeripheralModuleLinkWidthNegotiated", "What the module uses.", "lanes")

    @property
    def address(self) -> PciAddress:
        """PCI address; its text is decimal, "5.0.0"."""
        return PciAddress(self.bus, self.number, self.function)

    @property
    def slot(self) -> "Slot":
        """The slot that the module is anchored in."""
        return self._containing(Slot, ItemKind.SLOT)

    @property
    def chassis(self) -> "Chassis":
        """The chassis that it is in."""
        return self._containing(Chassis, ItemKind.CHASSIS)


class Slot(Item):
    """One slot of a chassis."""

    __slots__ = ()
    _PLACE = ("chassis_number", "number")

    chassis_number = a.u32("ChassisNumber", "Number of its chassis.")
    number = a.u32("SlotNumber", "Number of the slot.")
    type = a.bits_if_any(
        "SlotType", "What the slot takes; a type that the library does not know is none.", SlotType,
        "bits: 1 PXI-1 peripheral, 2 PXI Express peripheral, 4 PXI Express system, 8 PXI system, "
        "16 star controller, 32 system timing")
    occupying_module_slot = a.u32_if_any("OccupyingModuleSlot",
        "Number of the slot that the module here is anchored in, its own for most.")
    link_width1 = a.u32_if_any("PeripheralSlotLinkWidth1", "Width of the first link.", "lanes")
    link_width2 = a.u32_if_any("PeripheralSlotLinkWidth2", "Width of the second link.", "lanes")
    link_origin1 = a.u32_if_any(
        "SystemSlotLinkOrigin1", "Link of the system slot that the first link comes from.")
    link_origin2 = a.u32_if_any(
        "SystemSlotLinkOrigin2", "Link of the system slot that the second link comes from.")
    system_link_count = a.u32_if_any(
        "SystemSlotLinkCount", "Links of a PXI Express system slot: 2 or 4.", "links")
    system_vendor = a.text_if_any(
        "SystemSlotVendor", "Maker of the module in a PXI Express system slot.")
    system_model = a.text_if_any("SystemSlotModel", "Model of that module.")
    system_instance_name = a.text_if_any(
        "SystemSlotInstanceName", "The user's name for that module.")
    system_address_info = a.text_if_any("SystemSlotAddressInfo", "Resource names of that module.")
    pci_slot_path = a.text_if_any("PCISlotPath", "PCI path of a slot for PXI-1 peripherals.")
    pci_slot_path_root_bus = a.u32_if_any("PCISlotPathRootBus", "PCI bus that the path begins at.")
    local_bus_left = a.text_if_any("LocalBusLeft", "What lies on the left local bus.")
    local_bus_right = a.text_if_any("LocalBusRight", "What lies on the right local bus.")
    trigger_bus_number = a.u32_if_any("TriggerBusNumber", "Trigger bus that the slot is on.")
    trigger_bus_name = a.text_if_any("TriggerBusName", 'Its name, "TriggerBus3".')
    trigger_bus_stable_name = a.text_if_any(
        "TriggerBusStableName", "Its name in the whole installation, as the registry asks for it.")
    star_trigger_number = a.u32_if_any(
        "StarTriggerNumber", "Star trigger, as a line or as the controller.")
    star_trigger_line = a.u32_if_any("StarTriggerLine", "Line of the star trigger.")
    star_trigger_line_name = a.text_if_any(
        "StarTriggerLineName", "Name of the line in the whole installation.")
    star_trigger_controller_name = a.text_if_any(
        "StarTriggerControllerName", "Name of the controller, in its own slot alone.")
    dstar_trigger_number = a.u32_if_any(
        "DStarTriggerNumber", "Differential star trigger, as a set or as the controller.")
    dstar_trigger_set = a.u32_if_any("DStarTriggerSet", "Set of its lines.")
    dstar_trigger_set_name = a.text_if_any(
        "DStarTriggerSetName", "Name of the set in the whole installation.")
    dstar_trigger_controller_name = a.text_if_any(
        "DStarTriggerControllerName", "Name of the controller, in its own slot alone.")

    @property
    def devices(self) -> List[Device]:
        """The PCI functions of the module that is anchored here, by address."""
        return self._list(Device, c.varmex_container_Devices)

    @property
    def chassis(self) -> "Chassis":
        """The chassis that it belongs to."""
        return self._containing(Chassis, ItemKind.CHASSIS)

    def to_dict(self, *, why: bool = False) -> Dict[str, Any]:
        return _document.describe(self, a.attributes_of(Slot), why, {
            "Devices": lambda: [device.to_dict(why=why) for device in self.devices]})


class Chassis(Item):
    """One chassis."""

    __slots__ = ()
    _PLACE = ("number",)
    _TOLD = ("vendor", "model")

    number = a.u32("ChassisNumber", "Number of the chassis.")
    vendor = a.text("ChassisVendor", "Maker.")
    model = a.text("ChassisModel", "Model.")
    serial_number = a.text_if_any("ChassisSerialNumber", "Serial number of a PXI Express chassis.")
    identity = a.text(
        "ChassisIdentity", "A text that stays the same wherever the chassis is numbered.")
    description_file = a.text_if_any(
        "ChassisDescriptionFile", "Full path of the chassis description file.")
    trigger_bus_list = a.text_if_any(
        "ChassisTriggerBusList", "Trigger bus numbers between commas, as written.")
    trigger_manager = a.text_if_any(
        "ChassisTriggerManagerIdentifier", "Identifier of the trigger manager.")
    trigger_manager_library = a.text_if_any(
        "ChassisTriggerManagerLibrary", "Library that implements the trigger manager.")
    is_trigger_manager_native = a.flag_if_any("IsTriggerManagerNative",
        "Whether the trigger manager is native. Asks the PXI service library, which takes time.")

    @property
    def slots(self) -> Numbered[Slot]:
        """Its slots: `chassis.slots[7]`, `for slot in chassis.slots`."""
        return Numbered(self._slot, lambda: self._list(Slot, c.varmex_container_Slots))

    @property
    def trigger_bridges(self) -> List[TriggerBridge]:
        """Its trigger bridges, by number."""
        return self._list(TriggerBridge, c.varmex_container_TriggerBridges)

    @property
    def devices(self) -> List[Device]:
        """The PCI functions of all its modules, by address."""
        return self._list(Device, c.varmex_container_Devices)

    def each_slot(self) -> List[Attempt[Slot]]:
        """The slots, each for itself: all of `slots` unless that fails. Then the slots that have a
        section, up to number 255 and whether they are listed or not, and the one at which `slots`
        failed."""
        return _open_each(self.slots, "slotNum")

    def modules(self) -> List[Module]:
        """What sits in the slots, in their order. Error with the first fault."""
        return opened(self.each_module())

    def each_module(self) -> List[ModuleAttempt]:
        """The modules, going on behind what can't be opened, as `each_slot` does."""
        return read_modules(self)

    def to_dict(self, *, why: bool = False) -> Dict[str, Any]:
        return _document.describe(self, a.attributes_of(Chassis), why, {
            "Slots": lambda: [
                slot.item.to_dict(why=why) if slot.item else _document.unopened(
                    {"ChassisNumber": self.number, "SlotNumber": slot.number}, ["Devices"],
                    slot.error)
                for slot in self.each_slot()],
            "TriggerBridges": lambda: [
                bridge.to_dict(why=why) for bridge in self.trigger_bridges]})

    def _slot(self, number: int) -> Slot:
        pointer = _call(_raw.library.varmex_openSlotByNumber, self._handle.pointer,
                        _u32_argument(number, "slot"))
        return Slot(Child(pointer, self._handle.session))

    def _repr_svg_(self) -> Optional[str]:
        """The picture of the chassis, for notebooks; None without the command `varmex`, and once
        the session is closed."""
        from ._picture import draw_chassis

        return None if self._handle.session.closed else draw_chassis(self.number)


_FOREVER = 0xFFFFFFFF
_SLICE = 200  # ms between two looks for Ctrl-C


class Session(Item):
    """A snapshot of the description, as it stands when the session is opened.

    Use it as a context manager, call `close`, or leave it to the collector; the order in which
    items and session go does not matter.

    Args:
        synchronize: have the PXI service library bring the description up to date first. Its
            failure is no failure of this and shows in `warning`.

    Raises:
        LockedError, AccessError: the description could not be read for 10 seconds.
        Error: anything else; docs/status-codes.md.
    """

    __slots__ = ("warning",)
    _TOLD = ("pxie_sys_path",)

    warning: Optional[Error]

    version = a.text("Version", "Version of the library.")
    is_current = a.flag(
        "SessionIsCurrent", "Whether both files are as they were when the session was opened.")
    pxi_sys_path = a.text("PxiSysPath", "Full path of pxisys.ini, there or not.")
    pxie_sys_path = a.text("PxieSysPath", "Full path of pxiesys.ini, there or not.")
    configuration_path = a.text("ConfigurationPath", "Full path of configuration.ini.")

    def __init__(self, *, synchronize: bool = False) -> None:
        pointer, warning = _raw.call_with_warning(_raw.library.varmex_openPXISession,
                                                  1 if synchronize else 0)
        super().__init__(Owner(pointer))
        self.warning = warning

    def close(self) -> None:
        """Ends the session and its waits. Items that are left raise ClosedError from now on. A
        second call does nothing."""
        session = self._handle.session
        if not session.closed:
            self.cancel_waits()
            session.closed = True

    @property
    def closed(self) -> bool:
        """Whether `close` was called."""
        return self._handle.session.closed

    def __enter__(self) -> "Session":
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    @property
    def chassis(self) -> Numbered[Chassis]:
        """All chassis: `session.chassis[1]`, `for chassis in session.chassis`."""
        return Numbered(self._chassis, lambda: self._list(Chassis, c.varmex_container_Chassis))

    @property
    def slots(self) -> List[Slot]:
        """All slots, by chassis and slot."""
        return self._list(Slot, c.varmex_container_Slots)

    @property
    def trigger_bridges(self) -> List[TriggerBridge]:
        """All trigger bridges, by chassis and number."""
        return self._list(TriggerBridge, c.varmex_container_TriggerBridges)

    @property
    def devices(self) -> List[Device]:
        """All PCI functions, by address."""
        return self._list(Device, c.varmex_container_Devices)

    def device(self, bus: int, number: int, function: int = 0) -> Device:
        """The device at a PCI address; bus and device number must be in the description, the
        function is taken as given. UnknownItemError."""
        address = _raw.DeviceAddress(0, *(_u32_argument(part, "device")
                                          for part in (bus, number, function)))
        pointer = _call(_raw.library.varmex_openDeviceByAddr, self._handle.pointer, byref(address))
        return Device(Child(pointer, self._handle.session))

    def each_chassis(self) -> List[Attempt[Chassis]]:
        """The chassis, each for itself: all of `chassis` unless that fails. Then the chassis that
        have a section, up to number 255 and whether they are listed or not, and the one at which
        `chassis` failed."""
        return _open_each(self.chassis, "chassisNumber")

    def modules(self) -> List[Module]:
        """What sits in the slots of all chassis, in their order. Error with the first fault."""
        return opened(self.each_module())

    def each_module(self) -> List[ModuleAttempt]:
        """The modules of all chassis, going on behind what can't be opened, as `each_chassis` and
        `each_slot` do."""
        attempts: List[ModuleAttempt] = []
        for chassis in self.each_chassis():
            try:
                if chassis.item:
                    attempts += chassis.item.each_module()
                else:
                    attempts.append(ModuleAttempt(chassis.number, error=chassis.error))
            except Error as error:
                attempts.append(ModuleAttempt(chassis.number, error=error))
        return attempts

    def find_module(self, name: str) -> Optional[Module]:
        """The first module that goes by that name (`Module.is_called`), one whose alias it is ahead
        of all others; None where none does. What can't be opened hides no other module, and its
        Error is raised where none goes by the name."""
        return named(self.each_module(), name)

    def find(self, *words: str) -> List[Module]:
        """The modules that all the words fit: a part of the alias, name, vendor, model, a resource
        name or the serial number of the chassis, in capitals or not; the place "1/9"; a PCI address
        or its beginning, decimal "5.0.0" or as lspci has it, "05:00.0".

        Raises:
            ValueError: a word is empty, or there is none.
            Error: no module fits, and something can't be read.
        """
        return fitting(self.each_module(), words)

    def wait(self, timeout: Optional[float] = None) -> WaitResult:
        """Blocks until the description changed, for at most `timeout` seconds, for ever without
        one. A change since the session was opened is reported at once; the session itself never
        changes, so open a new one. Other threads run meanwhile, and Ctrl-C ends it.

        Raises:
            AccessError, Error: the files can't be watched or asked about.
        """
        if timeout is not None and not timeout >= 0:
            raise ValueError(f"a time-out is a number of seconds from 0 on, not {timeout}")
        end = None if timeout is None else time.monotonic() + timeout
        # Python runs signal handlers in its main thread, between two calls of the library.
        longest = _SLICE if threading.current_thread() is threading.main_thread() else _FOREVER
        while True:
            span = longest
            if end is not None:
                left = math.ceil((end - time.monotonic()) * 1000)
                span = min(max(left, 0), longest, _FOREVER - 1)
            result = WaitResult(_call(_raw.library.varmex_waitForSessionInvalidation,
                                      self._handle.pointer, span))
            if result is not WaitResult.TIMED_OUT or (end is not None and time.monotonic() >= end):
                return result

    def cancel_waits(self) -> None:
        """Ends all waits on the session, now and later: they answer CANCELLED."""
        _raw.library.varmex_cancelWaitForInvalidation(self._handle.pointer)

    def to_dict(self, *, why: bool = False) -> Dict[str, Any]:
        """The whole document of `varmex show --json`, by docs/varmex.schema.json; `why` as of every
        item. Only what lies in a list that fails as a whole may be told in other words."""
        kinds: List[Type[Item]] = [Slot, Device, TriggerBridge]
        return _document.installation(
            _document.describe(self, a.attributes_of(Session), why),
            [attribute for kind in kinds for attribute in a.attributes_of(kind)],
            lambda: [
                chassis.item.to_dict(why=why) if chassis.item else _document.unopened(
                    {"ChassisNumber": chassis.number}, ["Slots", "TriggerBridges"], chassis.error)
                for chassis in self.each_chassis()])

    def _chassis(self, number: int) -> Chassis:
        pointer = _call(_raw.library.varmex_openChassisByNumber, self._handle.pointer,
                        _u32_argument(number, "chassis"))
        return Chassis(Child(pointer, self._handle.session))

    def _key(self) -> Tuple[object, ...]:
        return (id(self),)


def find(*words: str) -> List[Module]:
    """The modules of the installation that all the words fit, as `Session.find`. They keep a session
    of their own open. Error."""
    return Session().find(*words)
