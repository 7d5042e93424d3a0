#include "tools/varmex/describe/compare.h"

#include <map>

#include "tools/varmex/describe/fields.h"

namespace tool {

namespace {

// By what a person calls them, everything that is to be told of: a chassis by its own attributes, a
// module by those of its slot and its devices.
std::map<std::string, tJson> partsOf(const tJson& session) {
  std::map<std::string, tJson> parts;
  for (const tJson& chassis : session["Chassis"]) {
    const std::string number = textOf(chassis, "ChassisNumber");
    tJson own = chassis;
    for (const tJson& slot : chassis["Slots"]) {
      if (!slot["Devices"].empty()) {
        parts["module in slot " + number + '/' + textOf(slot, "SlotNumber")] = slot;
      }
    }
    own.erase("Slots");
    parts["chassis " + number] = std::move(own);
  }
  return parts;
}

std::string titleOf(const tJson& part) {
  const tJson& named =
      part.contains("Devices") && !part["Devices"].empty() ? part["Devices"].front() : part;
  for (const char* kind : {"Chassis", "Device"}) {
    const std::string vendor = textOf(named, (std::string(kind) + "Vendor").c_str());
    const std::string model = textOf(named, (std::string(kind) + "Model").c_str());
    if (!vendor.empty()) return " (" + vendor + ' ' + model + ')';
  }
  return {};
}

}  // namespace

std::vector<std::string> compareSessions(const tJson& before, const tJson& after) {
  const auto old = partsOf(before);
  const auto now = partsOf(after);
  std::vector<std::string> lines;
  for (const auto& [name, part] : old) {
    const auto found = now.find(name);
    if (found == now.end()) {
      lines.push_back("gone     " + name + titleOf(part));
    } else if (found->second != part) {
      lines.push_back("changed  " + name + titleOf(found->second));
    }
  }
  for (const auto& [name, part] : now) {
    if (!old.contains(name)) lines.push_back("new      " + name + titleOf(part));
  }
  return lines;
}

}  // namespace tool
