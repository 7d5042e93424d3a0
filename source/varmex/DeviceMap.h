#ifndef SOURCE_VARMEX_DEVICEMAP_H
#define SOURCE_VARMEX_DEVICEMAP_H

#include "source/varmex/description.h"
#include "source/varmex/devicePlaces.h"

namespace varmex {

// From PCI bus and device numbers to the slot that holds the device. Built once, then constant.
class DeviceMap {
 public:
  // Each enters the devices of all slots of the chassis given, as one of the files has them. Both
  // refuse with varmex_errorInformationConflict when two places claim one device; a device that
  // stands in both files counts as such.
  tResult<> enterClassic(const tIniFile& pxiSys, tNumbers chassisNumbers);
  tResult<> enterExpress(const tIniFile& pxieSys, tNumbers chassisNumbers);

  // The place of a device, or varmex_errorUnknownItem. The function takes no part.
  tResult<tDevicePlace> find(const tDeviceAddress& address) const;

 private:
  tDevicePlaces places_;
};

}  // namespace varmex

#endif
