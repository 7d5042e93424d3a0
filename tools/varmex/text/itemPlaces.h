#ifndef TOOLS_VARMEX_TEXT_ITEMPLACES_H
#define TOOLS_VARMEX_TEXT_ITEMPLACES_H

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

// What is wrong with an item of the description.
enum class tItemFault {
  missing,
  noNumber,
  noList,
  differs,
  noRootBus,
  noSlotPath,
  noSlotType,
  noLine
};

// An item of the description that has a fault. In the section's name '#' stands for any number,
// where it is not known which one it is.
struct tFaultyItem {
  tItemFault fault;
  std::string section;
  std::string item;
  std::string value = {};  // that is at fault, of noSlotType and noLine
};

// Where it stands, as the description's files are now, to go on behind a sentence: "\"z\" in
// /etc/pxi/pxisys.ini, line 68". The library's own words do not name the file. Empty where no file
// has that fault any more.
std::string placesOf(const tFaultyItem& faulty);

// The section with the line map of a trigger bridge.
std::string mapSectionOf(std::uint32_t chassis, std::uint32_t bridge);

// The files of the description that the library refuses for their encoding:
// "/etc/pxi/pxisys.ini is in UTF-16". Empty without any.
std::string refusedFiles();

}  // namespace tool

#endif
