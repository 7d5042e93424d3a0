#include "tools/varmex/text/slotPaths.h"

#include <limits>

namespace tool {

std::optional<std::uint32_t> rootBusOf(std::string_view text) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text.remove_prefix(1);
  if (text.empty() || text.find_first_not_of("0123456789") != text.npos) return std::nullopt;
  std::uint64_t number = 0;
  for (const char digit : text) {
    number = 10 * number + static_cast<std::uint64_t>(digit - '0');
    if (number > kMost) return std::nullopt;
  }
  return static_cast<std::uint32_t>(isNegative ? 0 - number : number);
}

}  // namespace tool
