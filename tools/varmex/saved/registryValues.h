#ifndef TOOLS_VARMEX_SAVED_REGISTRYVALUES_H
#define TOOLS_VARMEX_SAVED_REGISTRYVALUES_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/varmex/describe/json.h"

namespace tool {

// A value of the registry, below HKEY_LOCAL_MACHINE, in the view that does not depend on who asks.
struct tRegistryValue {
  std::string key;  // "SOFTWARE\PXISA\CurrentVersion"
  std::string name;
  std::uint32_t type = 0;
  std::string data;  // as a narrow query gives it, terminators included
};

using tRegistryValues = std::vector<tRegistryValue>;

// Those of this machine that the library looks at, whatever the description names.
tRegistryValues takeRegistryValues();

tJson jsonOfRegistry(const tRegistryValues& values);

// Throws std::runtime_error, which tells what is wrong, for JSON of another form.
tRegistryValues registryOfJson(const tJson& json);

// The values as a registry editor exports them.
std::string registryTextOf(const tRegistryValues& values);

}  // namespace tool

#endif
