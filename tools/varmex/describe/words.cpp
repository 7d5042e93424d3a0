#include "tools/varmex/describe/words.h"

#include <algorithm>
#include <vector>

#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/lines.h"
#include "tools/varmex/text/table.h"

namespace tool {

namespace {

bool has(const tJson& item, const char* name) { return item.contains(name); }

std::string quotedName(const std::string& name) { return name.empty() ? name : '"' + name + '"'; }

}  // namespace

std::string slotTypeName(const tJson& slot) {
  if (const std::string mark = markOf(slot, "opening"); !mark.empty())
    return mark + " can't be read";
  if (!has(slot, "SlotType")) return joined({textOf(slot, "SlotType"), "unknown"}, " ");
  const std::uint32_t type = numberOf(slot, "SlotType").value_or(0);
  if (type & varmex_slotType_PXIeSystem) {
    const std::string links = textOf(slot, "SystemSlotLinkCount");
    return links.empty() ? "PXIe system" : "PXIe system, " + links + " links";
  }
  if (type & varmex_slotType_PXISystem) return "PXI system";
  if (type & varmex_slotType_SystemTiming) return "PXIe timing";
  if (type & varmex_slotType_StarController) return "PXI star controller";
  const bool takesBoth =
      (type & varmex_slotType_PXI1Peripheral) && (type & varmex_slotType_PXIePeripheral);
  if (takesBoth) return "PXIe hybrid";
  return type & varmex_slotType_PXIePeripheral ? "PXIe peripheral" : "PXI-1";
}

std::string addressesOf(const tJson& slot, tPciNotation notation) {
  std::vector<std::string> addresses;
  for (const tJson& device : slot["Devices"]) addresses.push_back(addressOf(device, notation));
  return joined(addresses, " ");
}

std::string moduleOf(const tJson& slot) {
  const std::string controller =
      joined({textOf(slot, "SystemSlotVendor"), textOf(slot, "SystemSlotModel"),
              quotedName(textOf(slot, "SystemSlotInstanceName"))},
             " ");
  if (!controller.empty()) return controller;
  const tJson& devices = slot["Devices"];
  if (!devices.empty()) {
    const tJson& first = devices.front();
    const std::string module = joined({textOf(first, "DeviceVendor"), textOf(first, "DeviceModel"),
                                       quotedName(textOf(first, "DeviceInstanceName"))},
                                      " ");
    return module.empty() ? textOf(first, "DeviceName") : module;
  }
  for (const char* const name : {"Devices", "OccupyingModuleSlot"}) {
    if (const std::string mark = markOf(slot, name); !mark.empty()) return mark;
  }
  const std::string anchor = textOf(slot, "OccupyingModuleSlot");
  const bool isCovered = !anchor.empty() && anchor != textOf(slot, "SlotNumber");
  return isCovered ? "(module of slot " + anchor + ')' : "-";
}

tLink linkOf(const tJson& slot) {
  constexpr const char* kSlotWidth = "PeripheralSlotLinkWidth1";
  constexpr const char* kModuleWidth = "PeripheralModuleLinkWidthMax";
  constexpr const char* kNow = "PeripheralModuleLinkWidthNegotiated";
  tLink link;
  const auto most = numberOf(slot, kSlotWidth);
  link.possibleMark = markOf(slot, kSlotWidth);
  const tJson& devices = slot["Devices"];
  if (devices.empty() || numberOf(devices.front(), "DeviceIsExpress") == 0U) {
    link.possible = most;
    link.hasModule = false;
    return link;
  }
  const tJson& module = devices.front();
  link.now = numberOf(module, kNow);
  link.nowMark = markOf(module, kNow);
  const auto modules = numberOf(module, kModuleWidth);
  if (link.possibleMark.empty()) link.possibleMark = markOf(module, kModuleWidth);
  // Slots of some types, as those of controllers, have no width of their own.
  const std::uint32_t type = numberOf(slot, "SlotType").value_or(varmex_slotType_PXIePeripheral);
  if ((type & varmex_slotType_PXIePeripheral) == 0) {
    link.possible = modules;
  } else if (most && modules) {
    link.possible = std::min(*most, *modules);
  }
  return link;
}

std::string linkTextOf(const tJson& slot) {
  const auto anchor = numberOf(slot, "OccupyingModuleSlot");
  const bool isCovered = anchor && anchor != numberOf(slot, "SlotNumber");
  return isCovered ? std::string() : linkTextOf(linkOf(slot));
}

std::string linkTextOf(const tLink& link) {
  const auto part = [](const std::string& number, const std::string& mark, const char* otherwise) {
    return !number.empty() ? number : !mark.empty() ? mark : otherwise;
  };
  const std::string now = link.now ? 'x' + std::to_string(*link.now) : "";
  const std::string possible = link.possible ? std::to_string(*link.possible) : "";
  if ((now + link.nowMark + possible + link.possibleMark).empty()) return {};
  return part(now, link.nowMark, link.hasModule ? "?" : "-") + '/' +
         part(possible, link.possibleMark, "?") + (link.isReduced() ? kReducedMark : "");
}

std::string triggerOf(const tJson& slot, const char* number, const char* lineName,
                      const char* controllerName) {
  if (!has(slot, number)) return markOf(slot, number);
  const std::string place = joined({textOf(slot, number), textOf(slot, lineName)}, ".");
  return has(slot, controllerName) ? place + " controller" : place;
}

std::string lineMapOf(const tJson& bridge) {
  std::vector<std::string> lines;
  for (int source = 0; source < 8; ++source) {
    const std::string name = "BridgeLineMapping" + std::to_string(source);
    const std::string mark = markOf(bridge, name.c_str());
    const std::string destinations =
        mark.empty() ? linesOf(numberOf(bridge, name.c_str()).value_or(0)) : mark;
    if (!destinations.empty()) lines.push_back(std::to_string(source) + '>' + destinations);
  }
  return joined(lines, " ");
}

}  // namespace tool
