"""varmex: what a PXI or PXI Express installation holds.

    import varmex

    with varmex.Session() as session:
        for chassis in session.chassis:
            for slot in chassis.slots:
                print(chassis.number, slot.number, slot.trigger_bus_name)

Properties answer None where an item has no such thing; `item.require("name")` raises AbsentError,
which tells why. Failures are exceptions of the class Error. Everything may be used from any number
of threads. On Linux the environment variable VARMEX_FSROOT names a root to read below.
"""

from . import constants, routing
from ._errors import (AbsentError, AccessError, ClosedError, ConflictError, Error,
                      InvalidArgumentError, LockedError, OutOfMemoryError, ResourcesInUseError,
                      UnknownItemError, UnsupportedError)
from ._objects import (Chassis, Device, Item, ItemKind, Numbered, Session, Slot, SlotType,
                       TriggerBridge, WaitResult)
from ._watch import Change, Watch, watch
from .routing import Route, RoutingSession

__version__ = constants.VERSION

__all__ = [
    "AbsentError", "AccessError", "Change", "Chassis", "ClosedError", "ConflictError", "Device",
    "Error", "InvalidArgumentError", "Item", "ItemKind", "LockedError", "Numbered",
    "OutOfMemoryError", "ResourcesInUseError", "Route", "RoutingSession", "Session", "Slot",
    "SlotType", "TriggerBridge", "UnknownItemError", "UnsupportedError", "WaitResult", "Watch",
    "constants", "routing", "watch",
]
