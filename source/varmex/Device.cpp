#include "source/varmex/Device.h"

#include <tuple>

#include "source/varmex/Slot.h"
#include "source/varmex/errorCodes.h"

namespace varmex {

Device::Device(const tRecord& record)
    : record_(record),
      name_(tShortName("PXI", record.place.chassis).add("Slot").add(record.place.slot)) {}

bool Device::isLess(const tRecord& a, const tRecord& b) {
  const auto keys = [](const tDeviceAddress& address) {
    return std::tie(address.bus, address.device, address.function);
  };
  return keys(a.address) < keys(b.address);
}

tResult<std::uint32_t> Device::getU32Attribute(std::uint32_t attribute) const {
  switch (attribute) {
    case varmex_u32_ItemType: return varmex_itemType_Device;
    case varmex_u32_ChassisNumber: return record_.place.chassis;
    case varmex_u32_SlotNumber: return record_.place.slot;
    case varmex_u32_DeviceBus: return record_.address.bus;
    case varmex_u32_DeviceNumber: return record_.address.device;
    case varmex_u32_DeviceFunction: return record_.address.function;
    case varmex_u32_PeripheralModuleLinkWidthMax:
      return moduleNumber("PeripheralModuleLinkWidthMax");
    case varmex_u32_PeripheralModuleLinkWidthNegotiated:
      return moduleNumber("PeripheralModuleLinkWidthNegotiated");
    case varmex_u32_DeviceIsExpress: return record_.place.isExpress;
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
    case varmex_str_DeviceName: return name_.c_str();
    default: return attributeNotApplicable(attribute, OSTREL_HERE);
  }
}

// The section that tells of the module.
tResult<tIniPlace> Device::module() const {
  if (record_.place.isExpress == 1) {
    return record_.description->pxieSys.placeOf(slotKey(record_.place.chassis, record_.place.slot));
  }
  return tRefusal(kErrorAttributeNotApplicable, OSTREL_HERE)
      .debug()
      .text("message", "cannot query attribute on non express device");
}

tResult<std::uint32_t> Device::moduleNumber(tLiteral item) const {
  return module().then([&](const tIniPlace& place) {
    return asUnsigned(record_.description->pxieSys.getNumber(place, item));
  });
}

tResult<const char*> Device::moduleText(tLiteral item) const {
  return module().then([&](const tIniPlace& place) {
    return record_.description->pxieSys.getValueText(place, item);
  });
}

tResult<std::unique_ptr<Item>> Device::clone() const { return std::make_unique<Device>(record_); }

tResult<std::unique_ptr<Item>> Device::openContainingItem(std::uint32_t kind) const {
  const tDevicePlace& place = record_.place;
  const auto slotPlace = Slot::find(place.chassis, place.slot, *record_.description);
  if (!slotPlace) return slotPlace.refusal();
  auto slot = std::make_unique<Slot>(*slotPlace);
  if (kind != varmex_itemType_Slot) return slot->openContainingItem(kind);
  return slot;
}

bool Device::lessThan(const Item& other) const {
  if (other.kind() != kKind) return kKind < other.kind();
  return isLess(record_, static_cast<const Device&>(other).record_);
}

}  // namespace varmex
