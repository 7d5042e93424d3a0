#include "source/varmex/Device.h"

#include <tuple>

#include "source/varmex/Slot.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

Device::Device(const tDevicePlace& place, const tDeviceAddress& address,
               const tDescription& description)
    : description_(&description),
      place_(place),
      address_(address),
      section_(slotKey(place.chassis, place.slot)),
      name_("PXI" + std::to_string(place.chassis) + "Slot" + std::to_string(place.slot)) {}

std::uint32_t Device::getU32Attribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ItemType: return varmex_itemType_Device;
    case varmex_u32_ChassisNumber: return place_.chassis;
    case varmex_u32_SlotNumber: return place_.slot;
    case varmex_u32_DeviceBus: return address_.bus;
    case varmex_u32_DeviceNumber: return address_.device;
    case varmex_u32_DeviceFunction: return address_.function;
    case varmex_u32_PeripheralModuleLinkWidthMax:
      return moduleNumber("PeripheralModuleLinkWidthMax");
    case varmex_u32_PeripheralModuleLinkWidthNegotiated:
      return moduleNumber("PeripheralModuleLinkWidthNegotiated");
    case varmex_u32_DeviceIsExpress: return place_.isExpress;
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
    case varmex_str_DeviceName: return name_.c_str();
    default: raiseAttributeNotApplicable(attribute, OSTREL_HERE);
  }
}

void Device::requireExpress() const {
  if (place_.isExpress == 1) return;
  tFailure(kErrorAttributeNotApplicable, OSTREL_HERE)
      .debug()
      .text("message", "cannot query attribute on non express device")
      .raise();
}

std::uint32_t Device::moduleNumber(const char* item) const {
  requireExpress();
  return static_cast<std::uint32_t>(description_->pxieSys.getNumber(section_, item));
}

const char* Device::moduleText(const char* item) const {
  requireExpress();
  return description_->pxieSys.getValueText(section_, item);
}

std::unique_ptr<Item> Device::clone() const {
  return std::make_unique<Device>(place_, address_, *description_);
}

std::unique_ptr<Item> Device::openContainingItem(std::uint32_t kind) const {
  auto slot = std::make_unique<Slot>(place_.chassis, place_.slot, *description_);
  if (kind == varmex_itemType_Slot) return slot;
  return slot->openContainingItem(kind);
}

bool Device::lessThan(const Item& other) const {
  if (other.kind() != kind()) return kind() < other.kind();
  const auto keys = [](const tDeviceAddress& address) {
    return std::tie(address.bus, address.device, address.function);
  };
  return keys(address_) < keys(static_cast<const Device&>(other).address_);
}

}  // namespace varmex
