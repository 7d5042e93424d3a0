#ifndef TOOLS_VARMEX_DESCRIBE_ATTRIBUTES_H
#define TOOLS_VARMEX_DESCRIBE_ATTRIBUTES_H

#include <cstdint>
#include <vector>

namespace tool {

struct tAttribute {
  const char* name;  // that of its constant, without the prefix
  std::uint32_t number;
  bool isText;
  const char* unit;  // null for texts and for plain numbers
};
using tAttributes = std::vector<tAttribute>;

// All attributes of each kind of item, in the order in which they are told.
extern const tAttributes kSessionAttributes;
extern const tAttributes kChassisAttributes;
extern const tAttributes kSlotAttributes;
extern const tAttributes kDeviceAttributes;
extern const tAttributes kBridgeAttributes;

}  // namespace tool

#endif
