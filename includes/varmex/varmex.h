/* varmex: what a PXI or PXI Express installation holds.
 *
 * A session is a snapshot of the system description, pxisys.ini and pxiesys.ini, as it was when the
 * session was opened. Items (session, chassis, slot, device, trigger bridge) answer numbered
 * attributes; item containers list the items below an item.
 *
 * Status. Every function with a status argument does nothing and returns its null result (0 or a
 * null pointer) when the record holds an error already; a warning does not stop it. On failure it
 * returns its null result and leaves a code and a JSON text in the record. So calls may be chained
 * and the record tested once. A null status is allowed: the failure then shows in the null result
 * alone. Any function may fail with varmex_errorMemoryFull.
 *
 * Handles. A handle that a function returns is owned by the caller and released by one
 * varmex_close (containers: varmex_destroyItemContainer). Items and containers read the session's
 * description, so the session is closed last. A null handle, or one of the wrong class where a
 * function needs one class, is an error; a closed handle is undefined behaviour.
 *
 * Threads. Any number of threads may use one handle or different ones at once, but a handle must
 * not be closed while another thread uses it. A status record belongs to one call at a time.
 */
#ifndef VARMEX_VARMEX_H
#define VARMEX_VARMEX_H

#include <stdint.h>

#include "varmex/export.h"
#include "varmex/status.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct varmex_Item varmex_Item;                   /* an item, opaque */
typedef struct varmex_ItemContainer varmex_ItemContainer; /* a list of items, opaque */
typedef uint64_t varmex_ItemIterator;                     /* a position in a container, from 0 */

/* Status codes. The "error_constant" of a status text names the code. */
enum {
  varmex_errorMemoryFull = -380750,              /* out of memory */
  varmex_errorUnknownItem = -380751,             /* the description holds no such item */
  varmex_errorInvalidHandle = -380752,           /* a null handle, or one of another class */
  varmex_errorInformationConflict = -380753,     /* the description contradicts itself */
  varmex_errorFeatureUnsupported = -380754,      /* the item can't do this at all */
  varmex_errorInvalidParameter = -380755,        /* a bad argument */
  varmex_errorAttributeNotApplicable = -380756,  /* the attribute is not one of this item */
  varmex_errorInformationNotAvailable = -380757, /* the description lacks what was asked for */
  varmex_errorStarController = -380758,          /* the slot is the star trigger's controller */
  varmex_errorNotConnected = -380759,            /* the slot has no such trigger line */
  varmex_errorIterationFailure = -380760,        /* the iteration is past the end */
  varmex_errorTriggerManagerLibraryNotFound = -380761, /* no library for the trigger manager */
  varmex_warningFailedSync =
      380762, /* warning: synchronisation failed, the description may be old */
  varmex_errorLockTimeout = -380763, /* configuration.ini stayed locked ("timeoutErrorCode") */
  varmex_pxiSystemDescriptionInaccessible = -380764, /* a file of the description can't be read */
  varmex_softwareFault = -380765,           /* an internal contradiction; a malformed number */
  varmex_errorLibraryNotAvailable = -380766 /* the service library can't be loaded: only as
                                             * "wrappedCode" of the warning above */
};

/* Codes of the platform layer that may reach a caller. */
enum {
  ostrelerr_memoryFull = -52000,              /* out of memory */
  ostrelerr_invalidParameter = -52005,        /* an invalid path or argument */
  ostrelerr_osFault = -52008,                 /* a system call failed: see "internal_error" */
  ostrelerr_insufficientPermissions = -52026, /* no right to read a file's modification time */
  varmex_fileStatusFault = -50202, /* a file could not be asked about, or a folder not be found */
  varmex_fileAccessDenied = -50207 /* no right to ask about a file */
};

/* Item kinds: the value of varmex_u32_ItemType and the argument of varmex_openContainingItem. */
enum {
  varmex_itemType_Session = 0,
  varmex_itemType_Chassis = 1,
  varmex_itemType_Slot = 2,
  varmex_itemType_Device = 3,
  varmex_itemType_TriggerBridge = 4
};

/* Attributes of every item. */
#define varmex_u32_ItemType UINT32_C(0xFFFFF000) /* the item's kind */

/* Attributes of a session. Whether both description files are as they were when the session was
 * opened: 1, or 0 when either was written, made or removed since. Asks the system; may fail with
 * ostrelerr_insufficientPermissions (after a second) and ostrelerr_osFault. */
#define varmex_u32_SessionIsCurrent UINT32_C(0)
/* Full paths in the system's narrow encoding, whether the files exist or
 * not, and the library's version. */
#define varmex_str_PxiSysPath UINT32_C(0)
#define varmex_str_PxieSysPath UINT32_C(1)
#define varmex_str_ConfigurationPath UINT32_C(2)
#define varmex_str_Version UINT32_C(3)

/* Attributes of a chassis. */
#define varmex_u32_ChassisNumber UINT32_C(4096) /* also of slots, devices and trigger bridges */
/* 1 when the chassis's trigger manager is native, else 0. Asks the PXI service library, which is
 * loaded for it and unloaded again, takes its own time, and is reached in parallel by parallel
 * queries; without one every manager is native. Where that library can't tell, a registry list
 * decides, and a chassis without a manager, or with one named "None" in any case, fails with
 * varmex_errorInformationNotAvailable, one whose manager is an empty text with
 * varmex_errorInformationConflict. So does one on whose manager the two files disagree, in any
 * case. A failure of the service library comes with its own code, or ostrelerr_invalidParameter
 * when it lacks any other function. */
#define varmex_u32_IsTriggerManagerNative UINT32_C(4097)
#define varmex_str_ChassisVendor UINT32_C(4096)
#define varmex_str_ChassisModel UINT32_C(4097)
/* Identifier of the trigger manager; varmex_errorInformationNotAvailable when there is none,
 * varmex_errorInformationConflict when the two files disagree. */
#define varmex_str_ChassisTriggerManagerIdentifier UINT32_C(4098)
/* The library that implements the trigger manager, as the registry's services tree names it: found
 * at the first query and kept. Fails as the identifier does when there is none, and with
 * varmex_errorTriggerManagerLibraryNotFound when the tree names no library. */
#define varmex_str_ChassisTriggerManagerLibrary UINT32_C(4099)
/* PXI Express chassis only, else varmex_errorAttributeNotApplicable. */
#define varmex_str_ChassisSerialNumber UINT32_C(4100)
/* A text that stays the same for this chassis wherever it is numbered. */
#define varmex_str_ChassisIdentity UINT32_C(4101)
/* Full path of the chassis description file; varmex_errorInformationNotAvailable when it can't be
 * worked out. */
#define varmex_str_ChassisDescriptionFile UINT32_C(4102)
/* The trigger bus numbers as the description has them, between commas. Fails as the trigger
 * manager's identifier does. */
#define varmex_str_ChassisTriggerBusList UINT32_C(4103)

/* Attributes of a slot. Link items and texts that the description lacks fail with
 * varmex_errorInformationNotAvailable, attributes that the slot's type does not have with
 * varmex_errorAttributeNotApplicable. */
#define varmex_u32_SlotType UINT32_C(8192) /* the bits varmex_slotType_* */
/* Lanes of the links of a peripheral or system timing slot, and the numbers of the system slot's
 * links that they come from. */
#define varmex_u32_PeripheralSlotLinkWidth1 UINT32_C(8193)
#define varmex_u32_PeripheralSlotLinkWidth2 UINT32_C(8194)
#define varmex_u32_SystemSlotLinkOrigin1 UINT32_C(8195)
#define varmex_u32_SystemSlotLinkOrigin2 UINT32_C(8196)
/* Trigger lines. A slot that does not touch such lines fails with varmex_errorNotConnected; the
 * line of a star trigger controller with varmex_errorStarController. */
#define varmex_u32_TriggerBusNumber UINT32_C(8197)
#define varmex_u32_StarTriggerLine UINT32_C(8198)
#define varmex_u32_DStarTriggerSet UINT32_C(8199)
#define varmex_u32_SlotNumber UINT32_C(8200) /* also of devices */
#define varmex_u32_StarTriggerNumber UINT32_C(8201)
#define varmex_u32_DStarTriggerNumber UINT32_C(8202)
#define varmex_u32_SystemSlotLinkCount UINT32_C(8203) /* 2 or 4, PXI Express system slots only */
#define varmex_u32_PCISlotPathRootBus UINT32_C(8204)  /* slots that take PXI-1 peripherals */
/* Number of the slot that the module in this slot is anchored in, its own for most;
 * varmex_errorInformationNotAvailable when the slot is empty. */
#define varmex_u32_OccupyingModuleSlot UINT32_C(8205)
#define varmex_str_PCISlotPath UINT32_C(8192) /* slots that take PXI-1 peripherals */
#define varmex_str_TriggerBusName UINT32_C(8193)
#define varmex_str_StarTriggerLineName UINT32_C(8194)
#define varmex_str_DStarTriggerSetName UINT32_C(8195)
#define varmex_str_StarTriggerControllerName UINT32_C(8196) /* of the controller's own slot */
#define varmex_str_DStarTriggerControllerName UINT32_C(8197)
/* The module in a PXI Express system slot. */
#define varmex_str_SystemSlotVendor UINT32_C(8198)
#define varmex_str_SystemSlotModel UINT32_C(8199)
#define varmex_str_SystemSlotInstanceName UINT32_C(8200)
#define varmex_str_SystemSlotAddressInfo UINT32_C(8201)
/* Name of the trigger bus in the whole installation; it holds the chassis identity where the
 * registry asks for stable names. */
#define varmex_str_TriggerBusStableName UINT32_C(8202)
#define varmex_str_LocalBusLeft UINT32_C(8203)
#define varmex_str_LocalBusRight UINT32_C(8204)

/* Bits of varmex_u32_SlotType. A hybrid slot has both peripheral bits, a system timing slot that of
 * a PXI Express peripheral, a star trigger controller position that of a PXI-1 peripheral. */
enum {
  varmex_slotType_PXI1Peripheral = 1,
  varmex_slotType_PXIePeripheral = 2,
  varmex_slotType_PXIeSystem = 4,
  varmex_slotType_PXISystem = 8,
  varmex_slotType_StarController = 16,
  varmex_slotType_SystemTiming = 32
};

/* Attributes of a device, one PCI function of a module. Those of the module fail with
 * varmex_errorAttributeNotApplicable unless the device is a PXI Express one, and with
 * varmex_errorInformationNotAvailable when the description lacks them. */
#define varmex_u32_DeviceBus UINT32_C(12288)                           /* PCI bus number */
#define varmex_u32_DeviceNumber UINT32_C(12289)                        /* PCI device number */
#define varmex_u32_DeviceFunction UINT32_C(12290)                      /* PCI function number */
#define varmex_u32_PeripheralModuleLinkWidthMax UINT32_C(12291)        /* lanes, of the module */
#define varmex_u32_PeripheralModuleLinkWidthNegotiated UINT32_C(12292) /* lanes, of the module */
#define varmex_u32_DeviceIsExpress UINT32_C(12293) /* 1 for a PXI Express device, else 0 */
#define varmex_str_DeviceVendor UINT32_C(4096)     /* of the module, as are those down to: */
#define varmex_str_DeviceModel UINT32_C(4097)
#define varmex_str_DeviceInstanceName UINT32_C(12288)
#define varmex_str_DeviceAddressInfo UINT32_C(12289)
#define varmex_str_PeripheralModuleOccupiedSlotList UINT32_C(12290) /* slots it covers */
#define varmex_str_DeviceName UINT32_C(12291) /* "PXI1Slot2" for chassis 1, slot 2 */

/* Attributes of a trigger bridge. Buses fail with varmex_errorInformationNotAvailable when the
 * description lacks them. */
#define varmex_u32_BridgeNumber UINT32_C(16384)
#define varmex_u32_BridgeSourceTriggerBus UINT32_C(16385)
#define varmex_u32_BridgeDestinationTriggerBus UINT32_C(16386)
/* For the source line 0 to 7: the destination lines that a signal may come out on, bit n for line
 * n. varmex_errorInformationConflict for a destination line below 0 or above 8. A destination line
 * 8 in the description raises a C++ std::out_of_range, which passes through to the caller: the one
 * exception that leaves the library. Only C++ of the library's own compiler (GCC; on Windows
 * MinGW-w64) can catch it as such. On Windows it is the system's exception
 * varmex_systemException, which a host of another compiler takes with __try and __except, .NET with
 * SEHException; a host that has neither must not ask. No other thing is left undone by it, but the
 * exception's own memory, some 200 bytes, is lost. varmex.hpp does this where it has to, and throws
 * the host's own std::out_of_range. */
#define varmex_systemException UINT32_C(0x20474343)
#define varmex_u32_BridgeLineMapping0 UINT32_C(16387)
#define varmex_u32_BridgeLineMapping1 UINT32_C(16388)
#define varmex_u32_BridgeLineMapping2 UINT32_C(16389)
#define varmex_u32_BridgeLineMapping3 UINT32_C(16390)
#define varmex_u32_BridgeLineMapping4 UINT32_C(16391)
#define varmex_u32_BridgeLineMapping5 UINT32_C(16392)
#define varmex_u32_BridgeLineMapping6 UINT32_C(16393)
#define varmex_u32_BridgeLineMapping7 UINT32_C(16394)

/* A PCI address. */
typedef struct tDeviceAddress {
  uint32_t reserved; /* 0 */
  uint32_t bus;
  uint32_t device;
  uint32_t function;
} tDeviceAddress;

/* Opens a session: reads the description files, under a shared lock on configuration.ini when that
 * exists. A missing description file is no failure and gives no chassis. Bit 0 of `flags` asks the
 * PXI service library to bring the description up to date first; when that fails, the session is
 * opened all the same, and the status holds varmex_warningFailedSync with the failure's code as
 * "wrappedCode", unless it held a warning already. That library takes its own time. All other bits
 * are ignored.
 * Blocks for at most 10 seconds on each of: opening configuration.ini, its lock, each description
 * file; and for a second on each description file whose modification time may not be read. Fails
 * with varmex_errorLockTimeout, varmex_pxiSystemDescriptionInaccessible,
 * varmex_errorInformationNotAvailable (an unsupported encoding, a missing or malformed list or PCI
 * number), varmex_errorInformationConflict (two slots claim one device) and the platform layer's
 * codes, ostrelerr_osFault among them when the folder of the description is missing. */
VARMEX_EXPORT varmex_Item* VARMEX_CALL varmex_openPXISession(uint32_t flags, tStatusRecord* status);

/* Opens the chassis of that number. Fails with varmex_errorInvalidHandle unless `session` is a
 * session, varmex_errorUnknownItem when neither file has the chassis,
 * varmex_errorInformationConflict when the files disagree on it or its slot path is invalid,
 * varmex_errorInformationNotAvailable when vendor, model or what identifies it is missing,
 * varmex_softwareFault when its root bus is no number. */
VARMEX_EXPORT varmex_Item* VARMEX_CALL varmex_openChassisByNumber(varmex_Item* session,
                                                                  uint32_t chassisNumber,
                                                                  tStatusRecord* status);

/* Opens a slot of a chassis. Fails with varmex_errorInvalidHandle unless `chassis` is a chassis and
 * varmex_errorUnknownItem when neither file has the slot. */
VARMEX_EXPORT varmex_Item* VARMEX_CALL varmex_openSlotByNumber(varmex_Item* chassis,
                                                               uint32_t slotNumber,
                                                               tStatusRecord* status);

/* Opens the device at a PCI address. The bus and device number must be in the description; the
 * function is not looked at and is that of the device opened. Fails with
 * varmex_errorInvalidParameter when `address` is null or its reserved field not 0,
 * varmex_errorInvalidHandle unless `session` is a session, varmex_errorUnknownItem. */
VARMEX_EXPORT varmex_Item* VARMEX_CALL varmex_openDeviceByAddr(varmex_Item* session,
                                                               const tDeviceAddress* address,
                                                               tStatusRecord* status);

/* Opens the item of kind `kind` that contains `item`. A session refuses with
 * varmex_errorFeatureUnsupported; a chassis, and any item asked for a kind that does not contain
 * it, with varmex_errorInvalidParameter. */
VARMEX_EXPORT varmex_Item* VARMEX_CALL varmex_openContainingItem(varmex_Item* item, uint32_t kind,
                                                                 tStatusRecord* status);

/* The value of a numeric attribute. Fails with varmex_errorAttributeNotApplicable when the item
 * does not have it, and as the attribute says. */
VARMEX_EXPORT uint32_t VARMEX_CALL varmex_getU32Attribute(varmex_Item* item, uint32_t attribute,
                                                          tStatusRecord* status);

/* The text of an attribute, NUL-terminated, owned by the item or its session and valid as long as
 * both are open. Fails as varmex_getU32Attribute does. */
VARMEX_EXPORT const char* VARMEX_CALL varmex_getStringAttribute(varmex_Item* item,
                                                                uint32_t attribute,
                                                                tStatusRecord* status);

/* An independent handle to the same item. A session refuses with varmex_errorFeatureUnsupported. */
VARMEX_EXPORT varmex_Item* VARMEX_CALL varmex_duplicate(varmex_Item* item, tStatusRecord* status);

/* Releases an item; null does nothing. */
VARMEX_EXPORT void VARMEX_CALL varmex_close(varmex_Item* item);

/* What varmex_waitForSessionInvalidation answers. */
typedef uint32_t varmex_WaitResult;
enum {
  varmex_waitFailed = 0,   /* see the status */
  varmex_waitChanged = 1,  /* a description file is not as it was when the session was opened */
  varmex_waitTimedOut = 2, /* the time ran out */
  varmex_waitCancelled = 4 /* varmex_cancelWaitForInvalidation was called on the session */
};

/* Blocks until the description changed, for at most `timeout` milliseconds; 0xFFFFFFFF waits
 * without limit. A change since the session was opened is reported at once. The session itself
 * never changes: open a new one. Unlike every other function it runs whatever the status holds; an
 * error that is there already stays. Fails with varmex_errorInvalidHandle,
 * ostrelerr_insufficientPermissions and ostrelerr_osFault (as when the folder of the description is
 * gone, or the system has no descriptor or watch left). Any number of threads may wait on one
 * session, but it must not be closed while one does. On Linux a thread can be cancelled while it
 * waits, and in no other function of the library; what a waiter can't notice is in
 * docs/platforms.md. */
VARMEX_EXPORT varmex_WaitResult VARMEX_CALL
varmex_waitForSessionInvalidation(varmex_Item* session, uint32_t timeout, tStatusRecord* status);

/* Ends all waits on a session, now and later: they answer varmex_waitCancelled at once. Everything
 * else of the session works as before. What fails goes unreported: the first wait or cancel of a
 * session begins to watch its files, and a cancel that can't (the folder is gone, the system has no
 * descriptor or watch left) leaves the session uncancelled. After a wait that did not fail, if only
 * one of 0 milliseconds, no cancel fails. */
VARMEX_EXPORT void VARMEX_CALL varmex_cancelWaitForInvalidation(varmex_Item* session);

/* What a container lists, as the argument of varmex_getItemContainer. */
#define varmex_container_Chassis UINT32_C(0)           /* of a session */
#define varmex_container_Slots UINT32_C(4096)          /* of a session or chassis */
#define varmex_container_TriggerBridges UINT32_C(4097) /* of a session or chassis */
#define varmex_container_Devices UINT32_C(8192)        /* of a session, chassis or slot */

/* Lists the items of one kind below `item`, each once: chassis, slots and bridges by number,
 * devices by PCI address; maybe none. Fails with varmex_errorAttributeNotApplicable for a number
 * that is no container attribute or none of this item, and with whatever opening anything below
 * `item` fails with, also below what is listed: chassis because of one slot's fault. */
VARMEX_EXPORT varmex_ItemContainer* VARMEX_CALL varmex_getItemContainer(varmex_Item* item,
                                                                        uint32_t attribute,
                                                                        tStatusRecord* status);

/* A second handle to the list, which shares its items. */
VARMEX_EXPORT varmex_ItemContainer* VARMEX_CALL
varmex_duplicateItemContainer(varmex_ItemContainer* container, tStatusRecord* status);

/* Releases a container, also after its items were handed out; null does nothing. */
VARMEX_EXPORT void VARMEX_CALL varmex_destroyItemContainer(varmex_ItemContainer* container);

/* The position of the first item, 0, and the one behind the last. */
VARMEX_EXPORT varmex_ItemIterator VARMEX_CALL
varmex_ItemIterator_begin(varmex_ItemContainer* container, tStatusRecord* status);
VARMEX_EXPORT varmex_ItemIterator VARMEX_CALL
varmex_ItemIterator_end(varmex_ItemContainer* container, tStatusRecord* status);

/* A new handle to the item at `*position`, which moves on by one. The handle outlives the
 * container. Fails with varmex_errorInvalidParameter for a null `position` and
 * varmex_errorIterationFailure at the end. */
VARMEX_EXPORT varmex_Item* VARMEX_CALL varmex_ItemIterator_nextItem(varmex_ItemContainer* container,
                                                                    varmex_ItemIterator* position,
                                                                    tStatusRecord* status);

#ifdef __cplusplus
}
#endif

#endif
