#include "tools/varmex/show.h"

#include <algorithm>
#include <iomanip>
#include <vector>

#include "tools/varmex/fields.h"

namespace tool {

namespace {

bool has(const tJson& item, const char* name) { return item.contains(name); }

// A name and its value on a line of their own, unless there is none.
void line(std::ostream& out, const char* name, const std::string& value) {
  if (!value.empty()) out << "  " << std::left << std::setw(18) << name << value << '\n';
}

std::string slotTypeName(const tJson& slot) {
  if (!has(slot, "SlotType")) return "unknown";
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

std::string addressesOf(const tJson& slot) {
  std::vector<std::string> addresses;
  for (const tJson& device : slot["Devices"]) addresses.push_back(addressOf(device));
  return joined(addresses, " ");
}

std::string quotedName(const std::string& name) { return name.empty() ? name : '"' + name + '"'; }

// The module in a slot: what its devices say, or the controller of a system slot, or where the
// module that covers the slot sits.
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
  const std::string anchor = textOf(slot, "OccupyingModuleSlot");
  const bool isCovered = !anchor.empty() && anchor != textOf(slot, "SlotNumber");
  return isCovered ? "(module of slot " + anchor + ')' : "-";
}

std::string linkOf(const tJson& slot) {
  const tJson& devices = slot["Devices"];
  if (devices.empty() || !has(devices.front(), "PeripheralModuleLinkWidthMax")) {
    const std::string width = textOf(slot, "PeripheralSlotLinkWidth1");
    return width.empty() ? width : 'x' + width;
  }
  const tJson& module = devices.front();
  return joined({'x' + textOf(module, "PeripheralModuleLinkWidthNegotiated"),
                 textOf(module, "PeripheralModuleLinkWidthMax")},
                "/");
}

// "1.3" for line 3 of trigger 1, with "controller" where the slot drives it.
std::string triggerOf(const tJson& slot, const char* number, const char* lineName,
                      const char* controllerName) {
  if (!has(slot, number)) return {};
  const std::string place = joined({textOf(slot, number), textOf(slot, lineName)}, ".");
  return has(slot, controllerName) ? place + " controller" : place;
}

using tRow = std::vector<std::string>;

tRow rowOf(const tJson& slot) {
  return {textOf(slot, "SlotNumber"),
          slotTypeName(slot),
          moduleOf(slot),
          addressesOf(slot),
          linkOf(slot),
          textOf(slot, "TriggerBusNumber"),
          triggerOf(slot, "StarTriggerNumber", "StarTriggerLine", "StarTriggerControllerName"),
          triggerOf(slot, "DStarTriggerNumber", "DStarTriggerSet", "DStarTriggerControllerName")};
}

void showTable(const std::vector<tRow>& rows, std::ostream& out) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const tRow& row : rows) {
    for (std::size_t n = 0; n < row.size(); ++n) widths[n] = std::max(widths[n], row[n].size());
  }
  for (const tRow& row : rows) {
    std::string text = "  ";
    for (std::size_t n = 0; n < row.size(); ++n) {
      if (widths[n] > 0) text += row[n] + std::string(widths[n] - row[n].size() + 2, ' ');
    }
    out << text.substr(0, text.find_last_not_of(' ') + 1) << '\n';
  }
}

// The manager with its library and whether it is native; a chassis without one has no more to say.
void showTriggerManager(const tJson& chassis, std::ostream& out) {
  const std::string manager = textOf(chassis, "ChassisTriggerManagerIdentifier");
  if (manager.empty()) return;
  line(out, "trigger manager", manager);
  const std::string library = textOf(chassis, "ChassisTriggerManagerLibrary");
  line(out, "  library", library.empty() ? "not registered" : library);
  const std::string native = textOf(chassis, "IsTriggerManagerNative");
  line(out, "  native", native == "1" ? "yes" : native == "0" ? "no" : native);
}

void showSlots(const tJson& slots, std::ostream& out) {
  if (slots.empty()) return;
  std::vector<tRow> rows;
  for (const tJson& slot : slots) rows.push_back(rowOf(slot));
  const tRow titles = {"Slot", "Type", "Module", "PCI", "Link", "Bus", "Star", "DStar"};
  rows.insert(rows.begin(), titles);
  // A column without any content keeps no title either.
  for (std::size_t n = 0; n < titles.size(); ++n) {
    const bool isEmpty =
        std::all_of(rows.begin() + 1, rows.end(), [n](const tRow& row) { return row[n].empty(); });
    if (isEmpty) rows.front()[n].clear();
  }
  out << '\n';
  showTable(rows, out);
}

// "0,3-5" for the bits of a line mask.
std::string linesOf(std::uint32_t mask) {
  std::vector<std::string> runs;
  for (int line = 0; line < 8; ++line) {
    if (!(mask >> line & 1)) continue;
    int last = line;
    while (mask >> (last + 1) & 1) ++last;
    runs.push_back(line == last ? std::to_string(line)
                                : std::to_string(line) + '-' + std::to_string(last));
    line = last;
  }
  return joined(runs, ",");
}

// "0>0 1>2,4-7" for the lines that come out anywhere.
std::string lineMapOf(const tJson& bridge) {
  std::vector<std::string> lines;
  for (int source = 0; source < 8; ++source) {
    const std::string name = "BridgeLineMapping" + std::to_string(source);
    const std::string destinations = linesOf(numberOf(bridge, name.c_str()).value_or(0));
    if (!destinations.empty()) lines.push_back(std::to_string(source) + '>' + destinations);
  }
  return joined(lines, " ");
}

void showBridges(const tJson& bridges, std::ostream& out) {
  if (bridges.empty()) return;
  std::vector<tRow> rows = {{"Bridge", "From", "To", "Lines"}};
  for (const tJson& bridge : bridges) {
    rows.push_back({textOf(bridge, "BridgeNumber"),
                    "bus " + textOf(bridge, "BridgeSourceTriggerBus"),
                    "bus " + textOf(bridge, "BridgeDestinationTriggerBus"), lineMapOf(bridge)});
  }
  out << '\n';
  showTable(rows, out);
}

}  // namespace

void showSession(const tJson& session, std::ostream& out) {
  out << "varmex " << textOf(session, "Version") << '\n';
  line(out, "pxisys.ini", textOf(session, "PxiSysPath"));
  line(out, "pxiesys.ini", textOf(session, "PxieSysPath"));
  line(out, "configuration.ini", textOf(session, "ConfigurationPath"));
  line(out, "description",
       numberOf(session, "SessionIsCurrent").value_or(0) ? "current" : "changed since");
  if (session["Chassis"].empty()) out << "\nNo chassis.\n";
  for (const tJson& chassis : session["Chassis"]) {
    out << '\n';
    showChassis(chassis, out);
  }
}

void showChassis(const tJson& chassis, std::ostream& out) {
  out << "Chassis " << textOf(chassis, "ChassisNumber") << ": "
      << joined({textOf(chassis, "ChassisVendor"), textOf(chassis, "ChassisModel")}, " ") << '\n';
  line(out, "serial number", textOf(chassis, "ChassisSerialNumber"));
  line(out, "identity", textOf(chassis, "ChassisIdentity"));
  line(out, "described in", textOf(chassis, "ChassisDescriptionFile"));
  line(out, "trigger buses", textOf(chassis, "ChassisTriggerBusList"));
  showTriggerManager(chassis, out);
  showSlots(chassis["Slots"], out);
  showBridges(chassis["TriggerBridges"], out);
}

void showSlot(const tJson& slot, std::ostream& out) {
  out << "Chassis " << textOf(slot, "ChassisNumber") << ", slot " << textOf(slot, "SlotNumber")
      << '\n';
  line(out, "type", slotTypeName(slot));
  line(out, "module", moduleOf(slot));
  line(out, "PCI addresses", addressesOf(slot));
  line(out, "link", linkOf(slot));
  line(out, "slot path", textOf(slot, "PCISlotPath"));
  line(out, "local bus left", textOf(slot, "LocalBusLeft"));
  line(out, "local bus right", textOf(slot, "LocalBusRight"));
  line(out, "trigger bus", textOf(slot, "TriggerBusStableName"));
  line(out, "star line", textOf(slot, "StarTriggerLineName"));
  line(out, "star controller", textOf(slot, "StarTriggerControllerName"));
  line(out, "dstar set", textOf(slot, "DStarTriggerSetName"));
  line(out, "dstar controller", textOf(slot, "DStarTriggerControllerName"));
}

}  // namespace tool
