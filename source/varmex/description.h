#ifndef SOURCE_VARMEX_DESCRIPTION_H
#define SOURCE_VARMEX_DESCRIPTION_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "corpxiTools/iniFile.h"

namespace varmex {

// The two description files. Items keep a reference to it.
struct tDescription {
  tIniFile pxiSys;
  tIniFile pxieSys;

  // The chassis that each file lists, in file order.
  std::vector<std::uint32_t> pxiSysChassisNumbers() const;
  std::vector<std::uint32_t> pxieSysChassisNumbers() const;

  // The file that describes an item whose section either may hold, classic PXI first.
  const tIniFile* firstWith(std::string_view section) const {
    if (pxiSys.hasSection(section)) return &pxiSys;
    return pxieSys.hasSection(section) ? &pxieSys : nullptr;
  }
};

// The name of a slot behind a prefix, as in "Chassis1Slot2". Made for every slot and device of a
// walk, so the text stands in the object.
class tSlotName {
 public:
  // The prefix is no longer than "Chassis".
  tSlotName(std::string_view prefix, std::uint32_t chassis, std::uint32_t slot);

  operator std::string_view() const { return {text_, length_}; }
  const char* c_str() const { return text_; }

 private:
  char text_[sizeof "Chassis4294967295Slot4294967295"];
  std::uint8_t length_;
};

// Section names, with their numbers in plain decimal.
std::string chassisKey(std::uint32_t chassis);
tSlotName slotKey(std::uint32_t chassis, std::uint32_t slot);

// The numbers in their order, each at its first place alone. Walks that look for the first match,
// or that enter everything they meet, answer the same for it, and a list that repeats itself costs
// no more than its length.
std::vector<std::uint32_t> withoutRepeats(std::vector<std::uint32_t> numbers);

// The same for the numbers from `first` on, in place.
void dropRepeats(std::vector<std::uint32_t>& numbers, std::size_t first);

// The numbers in ascending order, each once.
std::vector<std::uint32_t> sortedUnion(std::vector<std::uint32_t> a,
                                       const std::vector<std::uint32_t>& b);

}  // namespace varmex

#endif
