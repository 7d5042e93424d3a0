#include "source/varmex/Device.h"

#include <tuple>

#include "source/varmex/Slot.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

Device::Device(const tDevicePlace& place, const tDeviceAddress& address,
               const tDescription& description)
    : fields_{&description, place, address,
              tShortName("PXI", place.chassis).add("Slot").add(place.slot)} {}

tResult<std::uint32_t> Device::getU32Attribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ItemType: return varmex_itemType_Device;
    case varmex_u32_ChassisNumber: return fields_.place.chassis;
    case varmex_u32_SlotNumber: return fields_.place.slot;
    case varmex_u32_DeviceBus: return fields_.address.bus;
    case varmex_u32_DeviceNumber: return fields_.address.device;
    case varmex_u32_DeviceFunction: return fields_.address.function;
    case varmex_u32_PeripheralModuleLinkWidthMax:
      return moduleNumber("PeripheralModuleLinkWidthMax");
    case varmex_u32_PeripheralModuleLinkWidthNegotiated:
      return moduleNumber("PeripheralModuleLinkWidthNegotiated");
    case varmex_u32_DeviceIsExpress: return fields_.place.isExpress;
    default: return attributeNotApplicable(attribute, OSTREL_HERE);
  }
}

tResult<const char*> Device::getStringAttribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_str_DeviceVendor: return moduleText("Vendor");
    case varmex_str_DeviceModel: return moduleText("Model");
    case varmex_str_DeviceInstanceName: return moduleText("InstanceName");
    case varmex_str_DeviceAddressInfo: return moduleText("AddressInfo");
    case varmex_str_PeripheralModuleOccupiedSlotList:
      return moduleText("PeripheralModuleOccupiedSlotList");
    case varmex_str_DeviceName: return fields_.name.c_str();
    default: return attributeNotApplicable(attribute, OSTREL_HERE);
  }
}

// The section that tells of the module.
tResult<tIniPlace> Device::module() const {
  if (fields_.place.isExpress == 1) {
    return fields_.description->pxieSys.placeOf(slotKey(fields_.place.chassis, fields_.place.slot));
  }
  return tRefusal(kErrorAttributeNotApplicable, OSTREL_HERE)
      .debug()
      .text("message", "cannot query attribute on non express device");
}

tResult<std::uint32_t> Device::moduleNumber(tLiteral item) const {
  return module().then([&](const tIniPlace& place) {
    return asUnsigned(fields_.description->pxieSys.getNumber(place, item));
  });
}

tResult<const char*> Device::moduleText(tLiteral item) const {
  return module().then([&](const tIniPlace& place) {
    return fields_.description->pxieSys.getValueText(place, item);
  });
}

tResult<std::unique_ptr<Item>> Device::clone() const {
  return std::unique_ptr<Item>(new Device(fields_));
}

tResult<std::unique_ptr<Item>> Device::openContainingItem(std::uint32_t kind) const {
  const tDevicePlace& place = fields_.place;
  const auto slotPlace = Slot::find(place.chassis, place.slot, *fields_.description);
  if (!slotPlace) return slotPlace.refusal();
  auto slot = std::make_unique<Slot>(*slotPlace);
  if (kind != varmex_itemType_Slot) return slot->openContainingItem(kind);
  return slot;
}

bool Device::lessThan(const Item& other) const {
  if (other.kind() != kind()) return kind() < other.kind();
  const auto keys = [](const tDeviceAddress& address) {
    return std::tie(address.bus, address.device, address.function);
  };
  return keys(fields_.address) < keys(static_cast<const Device&>(other).fields_.address);
}

}  // namespace varmex
