"""The description as objects: sessions, chassis, slots, devices, trigger bridges."""

import enum
import math
import re
import threading
import time
from ctypes import byref, c_uint64
from typing import (Any, Callable, Generic, Iterator, List, Optional, Tuple, Type, TypeVar,
                    Union, overload)

from . import _raw
from . import constants as c
from ._errors import ClosedError, Error, error_of
from ._handles import Child, Owner

_get_u32 = _raw.library.varmex_getU32Attribute
_get_string = _raw.library.varmex_getStringAttribute
_call = _raw.call
_call_if_any = _raw.call_if_any


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


class _Attribute:
    """A read-only property that asks the library for an attribute by number."""

    def __init__(self, attribute: int, doc: str) -> None:
        self.attribute = attribute
        self.__doc__ = doc

    def __set__(self, item: "Item", value: object) -> None:
        raise AttributeError("the description is read-only")

    def require(self, item: "Item") -> Any:
        raise NotImplementedError


class _U32(_Attribute):
    """A number that every item of the class has."""

    @overload
    def __get__(self, item: None, owner: type) -> "_U32": ...
    @overload
    def __get__(self, item: "Item", owner: type) -> int: ...

    def __get__(self, item: Optional["Item"], owner: type) -> Union["_U32", int]:
        return self if item is None else self.require(item)

    def require(self, item: "Item") -> int:
        number: int = _call(_get_u32, item._handle.pointer, self.attribute)
        return number


class _Flag(_Attribute):
    """A number that is 1 or 0."""

    @overload
    def __get__(self, item: None, owner: type) -> "_Flag": ...
    @overload
    def __get__(self, item: "Item", owner: type) -> bool: ...

    def __get__(self, item: Optional["Item"], owner: type) -> Union["_Flag", bool]:
        return self if item is None else self.require(item)

    def require(self, item: "Item") -> bool:
        return bool(_call(_get_u32, item._handle.pointer, self.attribute))


class _FlagIfAny(_Attribute):
    """The same, None where the item has no such thing."""

    @overload
    def __get__(self, item: None, owner: type) -> "_FlagIfAny": ...
    @overload
    def __get__(self, item: "Item", owner: type) -> Optional[bool]: ...

    def __get__(self, item: Optional["Item"], owner: type) -> Union["_FlagIfAny", bool, None]:
        if item is None:
            return self
        number = _call_if_any(_get_u32, item._handle.pointer, self.attribute)
        return None if number is None else bool(number)

    def require(self, item: "Item") -> bool:
        return bool(_call(_get_u32, item._handle.pointer, self.attribute))


class _U32IfAny(_Attribute):
    """A number, None where the item has no such thing."""

    @overload
    def __get__(self, item: None, owner: type) -> "_U32IfAny": ...
    @overload
    def __get__(self, item: "Item", owner: type) -> Optional[int]: ...

    def __get__(self, item: Optional["Item"], owner: type) -> Union["_U32IfAny", int, None]:
        if item is None:
            return self
        number: Optional[int] = _call_if_any(_get_u32, item._handle.pointer, self.attribute)
        return number

    def require(self, item: "Item") -> int:
        number: int = _call(_get_u32, item._handle.pointer, self.attribute)
        return number


class _Text(_Attribute):
    """A text that every item of the class has."""

    @overload
    def __get__(self, item: None, owner: type) -> "_Text": ...
    @overload
    def __get__(self, item: "Item", owner: type) -> str: ...

    def __get__(self, item: Optional["Item"], owner: type) -> Union["_Text", str]:
        return self if item is None else self.require(item)

    def require(self, item: "Item") -> str:
        text: bytes = _call(_get_string, item._handle.pointer, self.attribute)
        return text.decode("utf-8", "surrogateescape")


class _TextIfAny(_Attribute):
    """A text, None where the item has no such thing."""

    @overload
    def __get__(self, item: None, owner: type) -> "_TextIfAny": ...
    @overload
    def __get__(self, item: "Item", owner: type) -> Optional[str]: ...

    def __get__(self, item: Optional["Item"], owner: type) -> Union["_TextIfAny", str, None]:
        if item is None:
            return self
        text: Optional[bytes] = _call_if_any(_get_string, item._handle.pointer, self.attribute)
        return None if text is None else text.decode("utf-8", "surrogateescape")

    def require(self, item: "Item") -> str:
        text: bytes = _call(_get_string, item._handle.pointer, self.attribute)
        return text.decode("utf-8", "surrogateescape")


class Item:
    """What all items have in common.

    Items are equal when they are of one kind at one place, also across sessions. They keep their
    session open, may be used from any number of threads, and raise ClosedError once it is closed.
    """

    __slots__ = ("_handle", "__weakref__")

    _handle: Union[Child, Owner]

    def __init__(self, handle: Union[Child, Owner]) -> None:
        self._handle = handle

    @property
    def kind(self) -> ItemKind:
        """What the item is."""
        return ItemKind(self.u32(c.varmex_u32_ItemType))

    def u32(self, attribute: int) -> int:
        """A numeric attribute by its number in `varmex.constants`. AbsentError, Error."""
        number: int = _call(_get_u32, self._handle.pointer, attribute)
        return number

    def text(self, attribute: int) -> str:
        """A text attribute by its number in `varmex.constants`. AbsentError, Error."""
        text: bytes = _call(_get_string, self._handle.pointer, attribute)
        return text.decode("utf-8", "surrogateescape")

    def require(self, name: str) -> Any:
        """The property of that name; AbsentError, which says why, where it answers None."""
        attribute = getattr(type(self), name)
        if isinstance(attribute, _Attribute):
            return attribute.require(self)
        return getattr(self, name)

    def _key(self) -> Tuple[object, ...]:
        raise NotImplementedError

    def __eq__(self, other: object) -> bool:
        if type(other) is not type(self) or not isinstance(other, Item):
            return NotImplemented
        return self._key() == other._key()

    def __hash__(self) -> int:
        return hash((type(self).__name__, self._key()))

    def __reduce__(self) -> Any:
        raise TypeError(f"a {type(self).__name__} belongs to this process; open it anew elsewhere")

    def _list(self, kind: "Type[_T]", container: int) -> "List[_T]":
        """The items of a container, in its order."""
        library = _raw.library
        session = self._handle.session
        listed = Child(_call(library.varmex_getItemContainer, self._handle.pointer, container),
                       session, library.varmex_destroyItemContainer)
        count: int = _call(library.varmex_ItemIterator_end, listed.pointer)
        position = c_uint64(0)
        reference = byref(position)
        return [kind(Child(
            _call(library.varmex_ItemIterator_nextItem, listed.pointer, reference), session))
            for _ in range(count)]

    def _containing(self, kind: "Type[_T]", number: ItemKind) -> "_T":
        pointer = _call(_raw.library.varmex_openContainingItem, self._handle.pointer, number)
        return kind(Child(pointer, self._handle.session))


_T = TypeVar("_T", bound=Item)


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

    def __len__(self) -> int:
        return len(self._list_all())

    def __contains__(self, number: object) -> bool:
        return isinstance(number, int) and number >= 0 and self.get(number) is not None

    def __repr__(self) -> str:
        return repr(self._list_all())


def _u32_argument(number: int, what: str) -> int:
    if not 0 <= number <= 0xFFFFFFFF:
        raise LookupError(f"no {what} has the number {number}")
    return number


_LINE_8 = ('{"error_constant":"varmex_errorInformationConflict","varmex_debug":{"message":'
           '"a line mapping of the description names the destination line 8"}}')
_LINE_MAP = re.compile(rb"^\s*\"?PXI_TRIG[^=\r\n\0]*=[^\r\n\0]*8", re.MULTILINE)


def _maps_a_line_8(session: int) -> bool:
    """Whether a line mapping of the description may name the line 8. The library answers it with
    a C++ exception, which ends a process that has no C++ to catch it: so it is not asked."""
    for attribute in (c.varmex_str_PxiSysPath, c.varmex_str_PxieSysPath):
        path: bytes = _call(_get_string, session, attribute)
        try:
            with open(path, "rb") as file:
                if _LINE_MAP.search(file.read()):
                    return True
        except OSError:
            pass
    return False


class TriggerBridge(Item):
    """A bridge between two trigger buses of a chassis."""

    __slots__ = ()

    chassis_number = _U32(c.varmex_u32_ChassisNumber, "Number of its chassis.")
    number = _U32(c.varmex_u32_BridgeNumber, "Number of the bridge.")
    source_trigger_bus = _U32IfAny(c.varmex_u32_BridgeSourceTriggerBus,
                                   "Number of the bus that it takes signals from.")
    destination_trigger_bus = _U32IfAny(c.varmex_u32_BridgeDestinationTriggerBus,
                                        "Number of the bus that it hands them to.")

    @property
    def chassis(self) -> "Chassis":
        """The chassis that it is built into."""
        return self._containing(Chassis, ItemKind.CHASSIS)

    def line_mapping(self, source_line: int) -> Tuple[int, ...]:
        """The lines 0 to 7 of the destination bus that a signal on a source line 0 to 7 may come
        out on. AbsentError, ConflictError for a destination line that does not exist; ValueError
        for a source line beyond 7."""
        if not 0 <= source_line <= 7:
            raise ValueError(f"a trigger bus has the lines 0 to 7, not {source_line}")
        if _maps_a_line_8(self._handle.session.pointer):
            raise error_of(c.varmex_errorInformationConflict, _LINE_8)
        bits = self.u32(c.varmex_u32_BridgeLineMapping0 + source_line)
        return tuple(line for line in range(8) if bits >> line & 1)

    def _key(self) -> Tuple[object, ...]:
        return self.chassis_number, self.number

    def __repr__(self) -> str:
        return f"TriggerBridge(chassis={self.chassis_number}, number={self.number})"


class Device(Item):
    """One PCI function of a module. The properties of the module answer None unless it is a PXI
    Express one."""

    __slots__ = ()

    name = _Text(c.varmex_str_DeviceName, '"PXI1Slot2" for chassis 1, slot 2.')
    chassis_number = _U32(c.varmex_u32_ChassisNumber, "Number of its chassis.")
    slot_number = _U32(c.varmex_u32_SlotNumber, "Number of its slot.")
    bus = _U32(c.varmex_u32_DeviceBus, "PCI bus number.")
    number = _U32(c.varmex_u32_DeviceNumber, "PCI device number.")
    function = _U32(c.varmex_u32_DeviceFunction, "PCI function number.")
    is_express = _Flag(c.varmex_u32_DeviceIsExpress, "Whether it is a PXI Express device.")
    vendor = _TextIfAny(c.varmex_str_DeviceVendor, "Maker of the module.")
    model = _TextIfAny(c.varmex_str_DeviceModel, "Model of the module.")
    instance_name = _TextIfAny(c.varmex_str_DeviceInstanceName, "The user's name for the module.")
    address_info = _TextIfAny(c.varmex_str_DeviceAddressInfo,
                              "Resource names of all functions of the module.")
    occupied_slot_list = _TextIfAny(c.varmex_str_PeripheralModuleOccupiedSlotList,
                                    "Further slots that the module covers, between commas.")
    link_width_max = _U32IfAny(c.varmex_u32_PeripheralModuleLinkWidthMax,
                               "Lanes that the module can use.")
    link_width_negotiated = _U32IfAny(c.varmex_u32_PeripheralModuleLinkWidthNegotiated,
                                      "Lanes that the module uses.")

    @property
    def address(self) -> str:
        """PCI address in decimal, "5.0.0": bus, device, function."""
        return f"{self.bus}.{self.number}.{self.function}"

    @property
    def slot(self) -> "Slot":
        """The slot that the module is anchored in."""
        return self._containing(Slot, ItemKind.SLOT)

    @property
    def chassis(self) -> "Chassis":
        """The chassis that it is in."""
        return self._containing(Chassis, ItemKind.CHASSIS)

    def _key(self) -> Tuple[object, ...]:
        return self.bus, self.number, self.function

    def __repr__(self) -> str:
        return (f"Device(bus={self.bus}, number={self.number}, function={self.function}, "
                f"name={self.name!r})")


class Slot(Item):
    """One slot of a chassis."""

    __slots__ = ()

    chassis_number = _U32(c.varmex_u32_ChassisNumber, "Number of its chassis.")
    number = _U32(c.varmex_u32_SlotNumber, "Number of the slot.")
    occupying_module_slot = _U32IfAny(
        c.varmex_u32_OccupyingModuleSlot,
        "Number of the slot that the module here is anchored in, its own for most; None when empty.")
    link_width1 = _U32IfAny(c.varmex_u32_PeripheralSlotLinkWidth1, "Lanes of the first link.")
    link_width2 = _U32IfAny(c.varmex_u32_PeripheralSlotLinkWidth2, "Lanes of the second link.")
    link_origin1 = _U32IfAny(c.varmex_u32_SystemSlotLinkOrigin1,
                             "Link of the system slot that the first link comes from.")
    link_origin2 = _U32IfAny(c.varmex_u32_SystemSlotLinkOrigin2,
                             "Link of the system slot that the second link comes from.")
    system_link_count = _U32IfAny(c.varmex_u32_SystemSlotLinkCount,
                                  "Links of a PXI Express system slot: 2 or 4.")
    system_vendor = _TextIfAny(c.varmex_str_SystemSlotVendor,
                               "Maker of the module in a PXI Express system slot.")
    system_model = _TextIfAny(c.varmex_str_SystemSlotModel, "Model of that module.")
    system_instance_name = _TextIfAny(c.varmex_str_SystemSlotInstanceName,
                                      "The user's name for that module.")
    system_address_info = _TextIfAny(c.varmex_str_SystemSlotAddressInfo,
                                     "Resource names of that module.")
    pci_slot_path = _TextIfAny(c.varmex_str_PCISlotPath,
                               "PCI path of a slot for PXI-1 peripherals.")
    pci_slot_path_root_bus = _U32IfAny(c.varmex_u32_PCISlotPathRootBus,
                                       "PCI bus that the path begins at.")
    local_bus_left = _TextIfAny(c.varmex_str_LocalBusLeft, "What lies on the left local bus.")
    local_bus_right = _TextIfAny(c.varmex_str_LocalBusRight, "What lies on the right local bus.")
    trigger_bus_number = _U32IfAny(c.varmex_u32_TriggerBusNumber,
                                   "Trigger bus that the slot is on.")
    trigger_bus_name = _TextIfAny(c.varmex_str_TriggerBusName, 'Its name, "TriggerBus3".')
    trigger_bus_stable_name = _TextIfAny(
        c.varmex_str_TriggerBusStableName,
        "Its name in the whole installation, as the registry asks for it.")
    star_trigger_number = _U32IfAny(c.varmex_u32_StarTriggerNumber,
                                    "Star trigger, as a line or as the controller.")
    star_trigger_line = _U32IfAny(c.varmex_u32_StarTriggerLine, "Line of the star trigger.")
    star_trigger_line_name = _TextIfAny(c.varmex_str_StarTriggerLineName,
                                        "Name of the line in the whole installation.")
    star_trigger_controller_name = _TextIfAny(c.varmex_str_StarTriggerControllerName,
                                              "Name of the controller, in its own slot alone.")
    dstar_trigger_number = _U32IfAny(c.varmex_u32_DStarTriggerNumber,
                                     "Differential star trigger, as a set or as the controller.")
    dstar_trigger_set = _U32IfAny(c.varmex_u32_DStarTriggerSet, "Set of its lines.")
    dstar_trigger_set_name = _TextIfAny(c.varmex_str_DStarTriggerSetName,
                                        "Name of the set in the whole installation.")
    dstar_trigger_controller_name = _TextIfAny(c.varmex_str_DStarTriggerControllerName,
                                               "Name of the controller, in its own slot alone.")

    @property
    def type(self) -> Optional[SlotType]:
        """What the slot takes; None for a type that the library does not know."""
        bits = _call_if_any(_get_u32, self._handle.pointer, c.varmex_u32_SlotType)
        return None if bits is None else SlotType(bits)

    @property
    def devices(self) -> List[Device]:
        """The PCI functions of the module that is anchored here, by address."""
        return self._list(Device, c.varmex_container_Devices)

    @property
    def chassis(self) -> "Chassis":
        """The chassis that it belongs to."""
        return self._containing(Chassis, ItemKind.CHASSIS)

    def _key(self) -> Tuple[object, ...]:
        return self.chassis_number, self.number

    def __repr__(self) -> str:
        return f"Slot(chassis={self.chassis_number}, number={self.number})"


class Chassis(Item):
    """One chassis."""

    __slots__ = ()

    number = _U32(c.varmex_u32_ChassisNumber, "Number of the chassis.")
    vendor = _Text(c.varmex_str_ChassisVendor, "Maker.")
    model = _Text(c.varmex_str_ChassisModel, "Model.")
    serial_number = _TextIfAny(c.varmex_str_ChassisSerialNumber,
                               "Serial number of a PXI Express chassis.")
    identity = _Text(c.varmex_str_ChassisIdentity,
                     "A text that stays the same wherever the chassis is numbered.")
    description_file = _TextIfAny(c.varmex_str_ChassisDescriptionFile,
                                  "Full path of the chassis description file.")
    trigger_bus_list = _TextIfAny(c.varmex_str_ChassisTriggerBusList,
                                  "Trigger bus numbers between commas, as written.")
    trigger_manager = _TextIfAny(c.varmex_str_ChassisTriggerManagerIdentifier,
                                 "Identifier of the trigger manager.")
    trigger_manager_library = _TextIfAny(c.varmex_str_ChassisTriggerManagerLibrary,
                                         "Library that implements the trigger manager.")
    is_trigger_manager_native = _FlagIfAny(
        c.varmex_u32_IsTriggerManagerNative,
        "Whether the trigger manager is native. Asks the PXI service library, which takes its time.")

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

    def _slot(self, number: int) -> Slot:
        pointer = _call(_raw.library.varmex_openSlotByNumber, self._handle.pointer,
                        _u32_argument(number, "slot"))
        return Slot(Child(pointer, self._handle.session))

    def _key(self) -> Tuple[object, ...]:
        return (self.number,)

    def __repr__(self) -> str:
        return f"Chassis(number={self.number}, vendor={self.vendor!r}, model={self.model!r})"

    def _repr_svg_(self) -> Optional[str]:
        """The picture of the chassis, for notebooks; None without the command `varmex`."""
        from ._picture import draw_chassis

        return draw_chassis(self.number)


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

    warning: Optional[Error]

    version = _Text(c.varmex_str_Version, "Version of the library.")
    pxi_sys_path = _Text(c.varmex_str_PxiSysPath, "Full path of pxisys.ini, there or not.")
    pxie_sys_path = _Text(c.varmex_str_PxieSysPath, "Full path of pxiesys.ini, there or not.")
    configuration_path = _Text(c.varmex_str_ConfigurationPath, "Full path of configuration.ini.")
    is_current = _Flag(c.varmex_u32_SessionIsCurrent,
                       "Whether both files are as they were when the session was opened.")

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

    def _chassis(self, number: int) -> Chassis:
        pointer = _call(_raw.library.varmex_openChassisByNumber, self._handle.pointer,
                        _u32_argument(number, "chassis"))
        return Chassis(Child(pointer, self._handle.session))

    def _key(self) -> Tuple[object, ...]:
        return (id(self),)

    def __repr__(self) -> str:
        return f"<varmex.Session {'closed' if self.closed else self.pxie_sys_path}>"

