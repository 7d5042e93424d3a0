#include "tools/varmex/describe/describe.h"

namespace tool {

namespace {

struct tAttribute {
  const char* name;
  std::uint32_t number;
  bool isText;
};

#define VARMEX_TEXT(name) \
  { #name, varmex_str_##name, true }
#define VARMEX_NUMBER(name) \
  { #name, varmex_u32_##name, false }

const std::vector<tAttribute> kSessionAttributes = {
    VARMEX_TEXT(Version), VARMEX_NUMBER(SessionIsCurrent), VARMEX_TEXT(PxiSysPath),
    VARMEX_TEXT(PxieSysPath), VARMEX_TEXT(ConfigurationPath)};

const std::vector<tAttribute> kChassisAttributes = {VARMEX_NUMBER(ChassisNumber),
                                                    VARMEX_TEXT(ChassisVendor),
                                                    VARMEX_TEXT(ChassisModel),
                                                    VARMEX_TEXT(ChassisSerialNumber),
                                                    VARMEX_TEXT(ChassisIdentity),
                                                    VARMEX_TEXT(ChassisDescriptionFile),
                                                    VARMEX_TEXT(ChassisTriggerBusList),
                                                    VARMEX_TEXT(ChassisTriggerManagerIdentifier),
                                                    VARMEX_TEXT(ChassisTriggerManagerLibrary),
                                                    VARMEX_NUMBER(IsTriggerManagerNative)};

const std::vector<tAttribute> kSlotAttributes = {VARMEX_NUMBER(ChassisNumber),
                                                 VARMEX_NUMBER(SlotNumber),
                                                 VARMEX_NUMBER(SlotType),
                                                 VARMEX_NUMBER(OccupyingModuleSlot),
                                                 VARMEX_NUMBER(PeripheralSlotLinkWidth1),
                                                 VARMEX_NUMBER(PeripheralSlotLinkWidth2),
                                                 VARMEX_NUMBER(SystemSlotLinkOrigin1),
                                                 VARMEX_NUMBER(SystemSlotLinkOrigin2),
                                                 VARMEX_NUMBER(SystemSlotLinkCount),
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

const std::vector<tAttribute> kDeviceAttributes = {
    VARMEX_TEXT(DeviceName),
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
    VARMEX_NUMBER(PeripheralModuleLinkWidthMax),
    VARMEX_NUMBER(PeripheralModuleLinkWidthNegotiated)};

const std::vector<tAttribute> kBridgeAttributes = {
    VARMEX_NUMBER(ChassisNumber),          VARMEX_NUMBER(BridgeNumber),
    VARMEX_NUMBER(BridgeSourceTriggerBus), VARMEX_NUMBER(BridgeDestinationTriggerBus),
    VARMEX_NUMBER(BridgeLineMapping0),     VARMEX_NUMBER(BridgeLineMapping1),
    VARMEX_NUMBER(BridgeLineMapping2),     VARMEX_NUMBER(BridgeLineMapping3),
    VARMEX_NUMBER(BridgeLineMapping4),     VARMEX_NUMBER(BridgeLineMapping5),
    VARMEX_NUMBER(BridgeLineMapping6),     VARMEX_NUMBER(BridgeLineMapping7)};

#undef VARMEX_TEXT
#undef VARMEX_NUMBER

struct tBelow {
  const char* name;
  std::uint32_t container;
};

const std::vector<tAttribute>& attributesOf(varmex::Kind kind) {
  switch (kind) {
    case varmex::Kind::session: return kSessionAttributes;
    case varmex::Kind::chassis: return kChassisAttributes;
    case varmex::Kind::slot: return kSlotAttributes;
    case varmex::Kind::device: return kDeviceAttributes;
    default: return kBridgeAttributes;
  }
}

std::vector<tBelow> belowOf(varmex::Kind kind) {
  switch (kind) {
    case varmex::Kind::session: return {tBelow{"Chassis", varmex_container_Chassis}};
    case varmex::Kind::chassis:
      return {tBelow{"Slots", varmex_container_Slots},
              tBelow{"TriggerBridges", varmex_container_TriggerBridges}};
    case varmex::Kind::slot: return {tBelow{"Devices", varmex_container_Devices}};
    default: return {};
  }
}

}  // namespace

tJson describeAttributes(const varmex::ItemBase& item) {
  tJson json = tJson::object();
  for (const tAttribute& attribute : attributesOf(item.kind())) {
    try {
      if (attribute.isText) {
        if (const auto text = item.textIfAny(attribute.number)) json[attribute.name] = *text;
      } else {
        if (const auto number = item.u32IfAny(attribute.number)) json[attribute.name] = *number;
      }
    } catch (const varmex::Error& error) {
      json[attribute.name] = {{"error", error.code()}};
    }
  }
  return json;
}

tJson describe(const varmex::ItemBase& item) {
  tJson json = describeAttributes(item);
  for (const tBelow& below : belowOf(item.kind())) {
    tJson list = tJson::array();
    for (const varmex::Item& child : item.list(below.container)) list.push_back(describe(child));
    json[below.name] = std::move(list);
  }
  return json;
}

}  // namespace tool
