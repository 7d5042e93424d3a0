#include "tools/varmex/describe/fields.h"

#include "tools/varmex/describe/faults.h"

namespace tool {

std::string textOf(const tJson& item, const char* name) {
  const auto found = item.find(name);
  if (found == item.end()) return markOf(item, name);
  return found->is_string() ? found->get<std::string>() : found->dump();
}

std::optional<std::uint32_t> numberOf(const tJson& item, const char* name) {
  const auto found = item.find(name);
  if (found == item.end() || !found->is_number()) return std::nullopt;
  return found->get<std::uint32_t>();
}

std::string addressOf(const tJson& device, tPciNotation notation) {
  const auto bus = numberOf(device, "DeviceBus");
  const auto number = numberOf(device, "DeviceNumber");
  const auto function = numberOf(device, "DeviceFunction");
  if (bus && number && function) return textOf({*bus, *number, *function}, notation);
  return markOf(device, "opening");
}

std::string joined(const std::vector<std::string>& parts, const char* separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (part.empty()) continue;
    if (!text.empty()) text += separator;
    text += part;
  }
  return text;
}

}  // namespace tool
