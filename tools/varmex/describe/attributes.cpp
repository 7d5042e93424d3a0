#include "tools/varmex/describe/attributes.h"

#include "varmex/varmex.h"

namespace tool {

namespace {

constexpr const char* kLineBits = "bits: bit n for destination line n";

}  // namespace

#define VARMEX_TEXT(name) \
  { #name, varmex_str_##name, true, nullptr }
#define VARMEX_NUMBER(name) \
  { #name, varmex_u32_##name, false, nullptr }
#define VARMEX_COUNT(name, unit) \
  { #name, varmex_u32_##name, false, unit }

const tAttributes kSessionAttributes = {VARMEX_TEXT(Version), VARMEX_NUMBER(SessionIsCurrent),
                                        VARMEX_TEXT(PxiSysPath), VARMEX_TEXT(PxieSysPath),
                                        VARMEX_TEXT(ConfigurationPath)};

const tAttributes kChassisAttributes = {VARMEX_NUMBER(ChassisNumber),
                                        VARMEX_TEXT(ChassisVendor),
                                        VARMEX_TEXT(ChassisModel),
                                        VARMEX_TEXT(ChassisSerialNumber),
                                        VARMEX_TEXT(ChassisIdentity),
                                        VARMEX_TEXT(ChassisDescriptionFile),
                                        VARMEX_TEXT(ChassisTriggerBusList),
                                        VARMEX_TEXT(ChassisTriggerManagerIdentifier),
                                        VARMEX_TEXT(ChassisTriggerManagerLibrary),
                                        VARMEX_NUMBER(IsTriggerManagerNative)};

const tAttributes kSlotAttributes = {
    VARMEX_NUMBER(ChassisNumber),
    VARMEX_NUMBER(SlotNumber),
    VARMEX_COUNT(SlotType,
                 "bits: 1 PXI-1 peripheral, 2 PXI Express peripheral, 4 PXI Express system, 8 PXI "
                 "system, 16 star controller, 32 system timing"),
    VARMEX_NUMBER(OccupyingModuleSlot),
    VARMEX_COUNT(PeripheralSlotLinkWidth1, "lanes"),
    VARMEX_COUNT(PeripheralSlotLinkWidth2, "lanes"),
    VARMEX_NUMBER(SystemSlotLinkOrigin1),
    VARMEX_NUMBER(SystemSlotLinkOrigin2),
    VARMEX_COUNT(SystemSlotLinkCount, "links"),
    VARMEX_TEXT(SystemSlotVendor),
    VARMEX_TEXT(SystemSlotModel),
    VARMEX_TEXT(SystemSlotInstanceName),
    VARMEX_TEXT(SystemSlotAddressInfo),
    VARMEX_TEXT(PCISlotPath),
    VARMEX_NUMBER(PCISlotPathRootBus),
    VARMEX_TEXT(LocalBusLeft),
    VARMEX_TEXT(LocalBusRight),
    VARMEX_NUMBER(TriggerBusNumber),
    VARMEX_TEXT(TriggerBusName),
    VARMEX_TEXT(TriggerBusStableName),
    VARMEX_NUMBER(StarTriggerNumber),
    VARMEX_NUMBER(StarTriggerLine),
    VARMEX_TEXT(StarTriggerLineName),
    VARMEX_TEXT(StarTriggerControllerName),
    VARMEX_NUMBER(DStarTriggerNumber),
    VARMEX_NUMBER(DStarTriggerSet),
    VARMEX_TEXT(DStarTriggerSetName),
    VARMEX_TEXT(DStarTriggerControllerName)};

const tAttributes kDeviceAttributes = {VARMEX_TEXT(DeviceName),
                                       VARMEX_NUMBER(ChassisNumber),
                                       VARMEX_NUMBER(SlotNumber),
                                       VARMEX_NUMBER(DeviceBus),
                                       VARMEX_NUMBER(DeviceNumber),
                                       VARMEX_NUMBER(DeviceFunction),
                                       VARMEX_NUMBER(DeviceIsExpress),
                                       VARMEX_TEXT(DeviceVendor),
                                       VARMEX_TEXT(DeviceModel),
                                       VARMEX_TEXT(DeviceInstanceName),
                                       VARMEX_TEXT(DeviceAddressInfo),
                                       VARMEX_TEXT(PeripheralModuleOccupiedSlotList),
                                       VARMEX_COUNT(PeripheralModuleLinkWidthMax, "lanes"),
                                       VARMEX_COUNT(PeripheralModuleLinkWidthNegotiated, "lanes")};

const tAttributes kBridgeAttributes = {VARMEX_NUMBER(ChassisNumber),
                                       VARMEX_NUMBER(BridgeNumber),
                                       VARMEX_NUMBER(BridgeSourceTriggerBus),
                                       VARMEX_NUMBER(BridgeDestinationTriggerBus),
                                       VARMEX_COUNT(BridgeLineMapping0, kLineBits),
                                       VARMEX_COUNT(BridgeLineMapping1, kLineBits),
                                       VARMEX_COUNT(BridgeLineMapping2, kLineBits),
                                       VARMEX_COUNT(BridgeLineMapping3, kLineBits),
                                       VARMEX_COUNT(BridgeLineMapping4, kLineBits),
                                       VARMEX_COUNT(BridgeLineMapping5, kLineBits),
                                       VARMEX_COUNT(BridgeLineMapping6, kLineBits),
                                       VARMEX_COUNT(BridgeLineMapping7, kLineBits)};

#undef VARMEX_TEXT
#undef VARMEX_NUMBER
#undef VARMEX_COUNT

}  // namespace tool
