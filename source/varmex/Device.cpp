#include "source/varmex/Device.h"

#include <tuple>

#include "source/varmex/Slot.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

Device::Device(const tDevicePlace& place, const tDeviceAddress& address,
               const tDescription& description)
    : fields_{&description, place, address, slotKey(place.chassis, place.slot),
              tSlotName("PXI", place.chassis, place.slot)} {}

std::uint32_t Device::getU32Attribute(std::uint32_t attribute) const {
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
    default: raiseAttributeNotApplicable(attribute, OSTREL_HERE);
  }
}

const char* Device::getStringAttribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_str_DeviceVendor: return moduleText("Vendor");
    case varmex_str_DeviceModel: return moduleText("Model");
    case varmex_str_DeviceInstanceName: return moduleText("InstanceName");
    case varmex_str_DeviceAddressInfo: return moduleText("AddressInfo");
    case varmex_str_PeripheralModuleOccupiedSlotList:
      return moduleText("PeripheralModuleOccupiedSlotList");
    case varmex_str_DeviceName: return fields_.name.c_str();
    default: raiseAttributeNotApplicable(attribute, OSTREL_HERE);
  }
}

void Device::requireExpress() const {
  if (fields_.place.isExpress == 1) return;
  tFailure(kErrorAttributeNotApplicable, OSTREL_HERE)
      .debug()
      .text("message", "cannot query attribute on non express device")
      .raise();
}

std::uint32_t Device::moduleNumber(const char* item) const {
  requireExpress();
  return static_cast<std::uint32_t>(fields_.description->pxieSys.getNumber(fields_.section, item));
}

const char* Device::moduleText(const char* item) const {
  requireExpress();
  return fields_.description->pxieSys.getValueText(fields_.section, item);
}

std::unique_ptr<Item> Device::clone() const { return std::unique_ptr<Item>(new Device(fields_)); }

std::unique_ptr<Item> Device::openContainingItem(std::uint32_t kind) const {
  auto slot =
      std::make_unique<Slot>(fields_.place.chassis, fields_.place.slot, *fields_.description);
  if (kind == varmex_itemType_Slot) return slot;
  return slot->openContainingItem(kind);
}

bool Device::lessThan(const Item& other) const {
  if (other.kind() != kind()) return kind() < other.kind();
  const auto keys = [](const tDeviceAddress& address) {
    return std::tie(address.bus, address.device, address.function);
  };
  return keys(fields_.address) < keys(static_cast<const Device&>(other).fields_.address);
}

}  // namespace varmex
