#ifndef SOURCE_VARMEX_DEVICEREADINGS_H
#define SOURCE_VARMEX_DEVICEREADINGS_H

#include <vector>

#include "corpxiTools/iniFile.h"
#include "varmex/varmex.h"

namespace varmex {

// The two ways in which a description names the devices of a slot. Both append in the order of the
// description and drop no address that they have had; a section is walked once, however often a
// list names it.

// The tree of function sections below a slot section of the classic file: functions may hold bridge
// devices that hold functions again, to any depth. One object serves for any number of slots of a
// file, one after the other, and keeps its space in between. A walk that is refused is its last.
class tFunctionWalk {
 public:
  explicit tFunctionWalk(const tIniFile& file) : file_(file) {
    levels_.reserve(kUsual);
    numbers_.reserve(kUsual);
  }

  tResult<> walkSlotFunctions(const tIniSection& section, std::vector<tDeviceAddress>& addresses);

 private:
  static constexpr std::size_t kUsual = 8;  // levels, and numbers of all of them, at most

  // Sections that hang below one section and are still to be walked.
  struct tLevel {
    const tIniSection* parent;
    std::size_t first;  // of their numbers
    std::size_t next;
    bool areFunctions;  // else bridge devices
  };

  tResult<> walkLevels(std::vector<tDeviceAddress>& addresses);
  tResult<> walkFunction(const tIniSection& parent, std::uint32_t function,
                         std::vector<tDeviceAddress>& addresses);
  tResult<> walkBridgeDevice(const tIniSection& parent, std::uint32_t device);
  tResult<> descend(const tIniSection& section, const tIniItem& list, bool toFunctions);

  tResult<> recordAddress(const tIniSection& section, std::uint32_t function,
                          std::vector<tDeviceAddress>& addresses);

  // Where the items of a section stand, mostly.
  struct tPlaces {
    std::size_t functions = 0;
    std::size_t bus = 0;
    std::size_t device = 0;
  };

  const tIniFile& file_;
  tPlaces places_;
  std::vector<tLevel> levels_;          // the last one is being walked
  std::vector<std::uint32_t> numbers_;  // of all levels
};

// A list of instrument resource names from the express file. What is no such name is passed over.
void parseResourceNames(const char* text, std::vector<tDeviceAddress>& addresses);

}  // namespace varmex

#endif
