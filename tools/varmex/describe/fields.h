#ifndef TOOLS_VARMEX_DESCRIBE_FIELDS_H
#define TOOLS_VARMEX_DESCRIBE_FIELDS_H

#include <optional>
#include <string>
#include <vector>

#include "tools/varmex/describe/address.h"
#include "tools/varmex/describe/describe.h"

namespace tool {

// What `describe` tells of an item, by the attribute's name.

// In words: empty without the attribute, a mark where its query failed.
std::string textOf(const tJson& item, const char* name);

std::optional<std::uint32_t> numberOf(const tJson& item, const char* name);

std::string addressOf(const tJson& device, tPciNotation notation);

// The parts that are not empty.
std::string joined(const std::vector<std::string>& parts, const char* separator);

}  // namespace tool

#endif
