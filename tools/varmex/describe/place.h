#ifndef TOOLS_VARMEX_DESCRIBE_PLACE_H
#define TOOLS_VARMEX_DESCRIBE_PLACE_H

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

// Where in an installation: everywhere, in a chassis, or in one of its slots.
struct tPlace {
  std::optional<std::uint32_t> chassis;
  std::optional<std::uint32_t> slot;
};

// "CHASSIS" or "CHASSIS/SLOT"; nothing means everywhere. Throws CLI::ValidationError for another
// text.
tPlace parsePlace(const std::string& text);

}  // namespace tool

#endif
