#ifndef SOURCE_VARMEX_DEVICEPLACES_H
#define SOURCE_VARMEX_DEVICEPLACES_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "ostrel/quarks/numberMap.h"
#include "source/varmex/Device.h"

namespace varmex {

// Places of devices by their bus and device numbers. Numbers that PCI has are not searched for:
// each of them has its entry. Descriptions may tell of others.
class tDevicePlaces {
 public:
  // The device's place, and whether it is the one given here. The first one stays.
  std::pair<const tDevicePlace&, bool> insert(const tDeviceAddress& address,
                                              const tDevicePlace& place) {
    return isOfPci(address) ? insertOfPci(numberOf(address), place)
                            : others_.insert(keyOf(address), place);
  }

  // Null when there is none. It stays where it is until the next insertion.
  const tDevicePlace* find(const tDeviceAddress& address) const {
    return isOfPci(address) ? findOfPci(numberOf(address)) : others_.find(keyOf(address));
  }

 private:
  static constexpr std::uint32_t kBuses = 256;
  static constexpr std::uint32_t kDevices = 32;  // of a bus

  using tEntry = std::uint16_t;
  static_assert(kBuses * kDevices <= std::numeric_limits<tEntry>::max());

  static bool isOfPci(const tDeviceAddress& address) {
    return address.bus < kBuses && address.device < kDevices;
  }

  static std::size_t numberOf(const tDeviceAddress& address) {
    return address.bus * kDevices + address.device;
  }

  static std::uint64_t keyOf(const tDeviceAddress& address) {
    return std::uint64_t{address.bus} << 32 | address.device;
  }

  std::pair<const tDevicePlace&, bool> insertOfPci(std::size_t number, const tDevicePlace& place) {
    if (number >= entries_.size()) grow(number);
    tEntry& entry = entries_[number];
    const bool isNew = entry == 0;
    if (isNew) {
      places_.push_back(place);
      entry = static_cast<tEntry>(places_.size());
    }
    return {places_[entry - 1U], isNew};
  }

  const tDevicePlace* findOfPci(std::size_t number) const {
    const tEntry entry = number < entries_.size() ? entries_[number] : tEntry{0};
    return entry == 0 ? nullptr : &places_[entry - 1U];
  }

  // Small installations have the first buses alone.
  void grow(std::size_t number) {
    constexpr std::size_t kFirst = 32 * kDevices;
    entries_.resize(number < kFirst ? kFirst : kBuses * kDevices);
    places_.reserve(entries_.size() / 16);
  }

  std::vector<tEntry> entries_;  // numbers of the places plus 1, 0 for none
  std::vector<tDevicePlace> places_;
  tNumberMap<tDevicePlace> others_;
};

}  // namespace varmex

#endif
