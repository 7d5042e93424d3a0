#ifndef SOURCE_VARMEX_DEVICEREADINGS_H
#define SOURCE_VARMEX_DEVICEREADINGS_H

#include <string>
#include <vector>

#include "corpxiTools/iniFile.h"
#include "varmex/varmex.h"

namespace varmex {

// The two ways in which a description names the devices of a slot. Both append in the order of the
// description and drop no duplicates.

// The tree of function sections below a slot section of the classic file: functions may hold bridge
// devices that hold functions again, to any depth.
void walkSlotFunctions(const tIniFile& file, const std::string& section,
                       std::vector<tDeviceAddress>& addresses);

// A list of instrument resource names from the express file. What is no such name is passed over.
void parseResourceNames(const char* text, std::vector<tDeviceAddress>& addresses);

}  // namespace varmex

#endif
