"""varmex: what a PXI or PXI Express installation holds.

    import varmex

    with varmex.Session() as session:
        for module in session.modules():
            print(module.place, module.title, *module.addresses)

Properties answer None where an item has no such thing; `item.require("name")` raises AbsentError,
which tells why. Failures are exceptions of the class Error. Everything may be used from any number
of threads. On Linux the environment variable VARMEX_FSROOT names a root to read below.
"""

from . import constants, routing
from ._errors import (AbsentError, AccessError, ClosedError, ConflictError, Error,
                      InvalidArgumentError, LockedError, OutOfMemoryError, ResourcesInUseError,
                      UnknownItemError, UnsupportedError)
from ._modules import Module, ModuleAttempt, PciAddress
from ._objects import (Attempt, Chassis, Device, Item, ItemKind, Numbered, Session, Slot, SlotType,
                       TriggerBridge, WaitResult, find)
from ._watch import Change, Watch, watch
from .routing import Route, RoutingSession

__version__ = constants.VERSION

__all__ = [
    "AbsentError", "AccessError", "Attempt", "Change", "Chassis", "ClosedError", "ConflictError",
    "Device", "Error", "InvalidArgumentError", "Item", "ItemKind", "LockedError", "Module",
    "ModuleAttempt", "Numbered", "OutOfMemoryError", "PciAddress", "ResourcesInUseError", "Route",
    "RoutingSession", "Session", "Slot", "SlotType", "TriggerBridge", "UnknownItemError",
    "UnsupportedError", "WaitResult", "Watch", "constants", "find", "routing", "watch",
]
