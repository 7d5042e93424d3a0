#ifndef SOURCE_VARMEX_DEVICEMAP_H
#define SOURCE_VARMEX_DEVICEMAP_H

#include <vector>

#include "ostrel/quarks/hashSeed.h"
#include "source/varmex/Device.h"
#include "source/varmex/description.h"

namespace varmex {

// From PCI bus and device numbers to the slot that holds the device. Built once, then constant.
class DeviceMap {
 public:
  // Each enters the devices of all slots of the chassis given, as one of the files has them. Both
  // raise varmex_errorInformationConflict when two places claim one device; a device that stands in
  // both files counts as such.
  void enterClassic(const tIniFile& pxiSys, const std::vector<std::uint32_t>& chassisNumbers);
  void enterExpress(const tIniFile& pxieSys, const std::vector<std::uint32_t>& chassisNumbers);

  // The place of a device; raises varmex_errorUnknownItem. The function takes no part.
  const tDevicePlace& find(const tDeviceAddress& address) const;

 private:
  struct tEntry {
    std::uint32_t bus;
    std::uint32_t device;
    tDevicePlace place;
  };

  void enter(const std::vector<tDeviceAddress>& addresses, const tDevicePlace& place);
  std::size_t findSlot(std::uint32_t bus, std::uint32_t device) const;
  void growIndex();

  std::vector<tEntry> entries_;
  std::vector<std::uint32_t> index_;  // by hash: entry number plus 1, 0 for none
  tHashSeed hashSeed_{this};
};

}  // namespace varmex

#endif
