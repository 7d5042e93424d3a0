#ifndef TOOLS_VARMEX_DESCRIBE_JSON_H
#define TOOLS_VARMEX_DESCRIBE_JSON_H

#include <nlohmann/json.hpp>

namespace tool {

// Keys stay in the order in which they are put in.
using tJson = nlohmann::ordered_json;

}  // namespace tool

#endif
