#include <algorithm>
#include <iostream>

#include "tools/varmex/commands/list.h"
#include "tools/varmex/describe/describe.h"
#include "tools/varmex/describe/faults.h"
#include "tools/varmex/describe/fields.h"
#include "tools/varmex/describe/installation.h"
#include "tools/varmex/describe/place.h"
#include "tools/varmex/describe/words.h"
#include "tools/varmex/saved/savedFile.h"
#include "tools/varmex/text/columns.h"
#include "tools/varmex/text/failures.h"
#include "tools/varmex/text/table.h"

namespace tool {

namespace {

tRow rowOf(const tJson& slot, tPciNotation notation) {
  return {textOf(slot, "SlotNumber"),
          slotTypeName(slot),
          moduleOf(slot),
          addressesOf(slot, notation),
          linkTextOf(slot),
          textOf(slot, "TriggerBusNumber"),
          triggerOf(slot, "StarTriggerNumber", "StarTriggerLine", "StarTriggerControllerName"),
          triggerOf(slot, "DStarTriggerNumber", "DStarTriggerSet", "DStarTriggerControllerName")};
}

// The manager with its library and whether it is native; a chassis without one has no more to say.
void showTriggerManager(const tJson& chassis, std::ostream& out) {
  const std::string manager = textOf(chassis, "ChassisTriggerManagerIdentifier");
  if (manager.empty()) return;
  showLine("trigger manager", manager, out);
  const std::string library = textOf(chassis, "ChassisTriggerManagerLibrary");
  showLine("  library", library.empty() ? "not registered" : library, out);
  const std::string native = textOf(chassis, "IsTriggerManagerNative");
  showLine("  native", native == "1" ? "yes" : native == "0" ? "no" : native, out);
}

void showSlots(const tJson& slots, tPciNotation notation, std::ostream& out) {
  if (slots.empty()) return;
  std::vector<tRow> rows;
  for (const tJson& slot : slots) rows.push_back(rowOf(slot, notation));
  out << '\n';
  showTable({"Slot", "Type", "Module", titleOf(notation), "Link", "Bus", "Star", "DStar"}, rows,
            out);
}

// What the columns of the tables mean, where there is a table.
void showLegend(const tJson& description, tPciNotation notation, std::ostream& out) {
  const auto hasTable = [](const tJson& chassis) { return !chassis["Slots"].empty(); };
  const tJson& chassis = description["Chassis"];
  if (std::none_of(chassis.begin(), chassis.end(), hasTable)) return;
  out << '\n';
  showLine("PCI",
           notation == tPciNotation::decimal
               ? "bus.device.function in decimal; --pci hex writes them as lspci does"
               : "bus:device.function in hexadecimal, as lspci writes them",
           out);
  showLine("Link",
           std::string("lanes now / lanes that module and slot can; \"reduced\" is below that; ") +
               "-/8 is a slot without a PXI Express module; ? is not told",
           out);
  showLine("Star, DStar", "trigger.line of the slot, or the slot that drives the trigger", out);
  showLine("Lines", "of a bridge: a signal on line 6 comes out on 6 and 7 for 6>6-7", out);
}

std::string busOf(const tJson& bridge, const char* name) {
  const std::string mark = markOf(bridge, "opening");
  return mark.empty() ? "bus " + textOf(bridge, name) : mark;
}

void showBridges(const tJson& bridges, std::ostream& out) {
  if (bridges.empty()) return;
  std::vector<tRow> rows;
  for (const tJson& bridge : bridges) {
    rows.push_back({textOf(bridge, "BridgeNumber"), busOf(bridge, "BridgeSourceTriggerBus"),
                    busOf(bridge, "BridgeDestinationTriggerBus"), lineMapOf(bridge)});
  }
  out << '\n';
  showTable({"Bridge", "From", "To", "Lines"}, rows, out);
}

void showChassis(const tJson& chassis, tPciNotation notation, std::ostream& out) {
  out << "Chassis " << textOf(chassis, "ChassisNumber") << ": ";
  if (const std::string mark = markOf(chassis, "opening"); !mark.empty()) {
    out << mark << " can't be read\n";
    return;
  }
  out << visible(joined({textOf(chassis, "ChassisVendor"), textOf(chassis, "ChassisModel")}, " "))
      << '\n';
  showLine("serial number", textOf(chassis, "ChassisSerialNumber"), out);
  showLine("identity", textOf(chassis, "ChassisIdentity"), out);
  showLine("described in", textOf(chassis, "ChassisDescriptionFile"), out);
  showLine("trigger buses", textOf(chassis, "ChassisTriggerBusList"), out);
  showTriggerManager(chassis, out);
  showLine("slots", markOf(chassis, "Slots"), out);
  showLine("bridges", markOf(chassis, "TriggerBridges"), out);
  showSlots(chassis["Slots"], notation, out);
  showBridges(chassis["TriggerBridges"], out);
}

// "2026-11-21T14:31:07Z on rack7 (linux, varmex 19.5.0)"
std::string originOf(const tSavedInstallation& saved) {
  return saved.taken + " on " + saved.host + " (" + saved.platform + ", varmex " + saved.version +
         ')';
}

void showSession(const tJson& description, const tSavedInstallation* saved, tPciNotation notation,
                 std::ostream& out) {
  const tJson& session = description["machine"];
  out << "varmex " << textOf(session, "Version") << '\n';
  showLine("pxisys.ini", textOf(session, "PxiSysPath"), out);
  showLine("pxiesys.ini", textOf(session, "PxieSysPath"), out);
  showLine("configuration.ini", textOf(session, "ConfigurationPath"), out);
  if (saved) {
    showLine("saved", visible(originOf(*saved)), out);
  } else {
    showLine("description",
             numberOf(session, "SessionIsCurrent").value_or(0) ? "current" : "changed since", out);
  }
  if (description["Chassis"].empty()) {
    out << '\n' << noneText("chassis");
  }
  for (const tJson& chassis : description["Chassis"]) {
    out << '\n';
    showChassis(chassis, notation, out);
  }
}

void showSlot(const tJson& slot, tPciNotation notation, std::ostream& out) {
  out << "Chassis " << textOf(slot, "ChassisNumber") << ", slot " << textOf(slot, "SlotNumber")
      << '\n';
  showLine("type", slotTypeName(slot), out);
  showLine("module", moduleOf(slot), out);
  showLine(titleOf(notation), addressesOf(slot, notation), out);
  showLine("link", linkTextOf(slot), out);
  showLine("slot path", textOf(slot, "PCISlotPath"), out);
  showLine("local bus left", textOf(slot, "LocalBusLeft"), out);
  showLine("local bus right", textOf(slot, "LocalBusRight"), out);
  showLine("trigger bus", textOf(slot, "TriggerBusStableName"), out);
  showLine("star line", textOf(slot, "StarTriggerLineName"), out);
  showLine("star controller", textOf(slot, "StarTriggerControllerName"), out);
  showLine("dstar set", textOf(slot, "DStarTriggerSetName"), out);
  showLine("dstar controller", textOf(slot, "DStarTriggerControllerName"), out);
}

class tShow : public tCommand {
 public:
  tShow() : tCommand("show", "List chassis, slots, modules and trigger lines") {}

  void addOptions(CLI::App& line) override {
    line.add_option("place", place_, "A chassis (2) or a slot (2/5); all without");
    CLI::Option* const json = line.add_flag("--json", asJson_, "Print JSON");
    line.add_flag("--why", isWhyAsked_, "Print why each absent attribute is absent")->needs(json);
    addPciOption(line, notation_);
    installation_.addFrom(line);
    installation_.addSync(line);
  }

  tExitStatus run() override {
    const tPlace place = parsePlace(place_);
    const std::optional<varmex::Session> session = open();
    if (!session) return kFailed;
    if (asJson_) {
      tJsonWriter json;
      return describe(*session, place, isWhyAsked_, json, installation_.saved()) == 0 ? kDone
                                                                                      : kFailed;
    }
    tJson description = describe(*session, place);
    markFaults(description);
    showPlace(description, place);
    if (!place.slot) showLegend(description, notation_, std::cout);
    showFaults(description, std::cout);
    return description["failureCount"] == 0 ? kDone : kFailed;
  }

 private:
  // Nothing once the failure has been told.
  std::optional<varmex::Session> open() const {
    try {
      return installation_.open();
    } catch (const std::exception& failure) {
      if (asJson_) {
        tJsonWriter json;
        describeUnreadable(failure, json);
      }
      tellFailure(failure);
      return std::nullopt;
    }
  }

  void showPlace(const tJson& description, const tPlace& place) const {
    if (!place.chassis) {
      return showSession(description, installation_.saved(), notation_, std::cout);
    }
    const tJson& chassis = description["Chassis"].front();
    if (!place.slot) return showChassis(chassis, notation_, std::cout);
    showSlot(chassis["Slots"].front(), notation_, std::cout);
  }

  tInstallation installation_;
  std::string place_;
  bool asJson_ = false;
  bool isWhyAsked_ = false;
  tPciNotation notation_ = tPciNotation::decimal;
};

}  // namespace

tCommandPtr makeShow() { return std::make_unique<tShow>(); }

}  // namespace tool
