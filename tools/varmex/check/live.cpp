// What the description says against the machine's own PCI tree.

#include <algorithm>
#include <cstdio>
#include <map>

#include "tools/varmex/check/live.h"
#include "tools/varmex/machine/pciNames.h"
#include "tools/varmex/machine/thisMachine.h"

namespace tool {

namespace {

// A slot with a module that the description tells of, in words and as the machine has it.
struct tLiveModule {
  varmex::Module module;
  tPosition position;
  std::string what;                        // "DMM ORX-4081 in slot 1/9"
  std::vector<const tPciDevice*> present;  // of its addresses
  std::vector<varmex::PciAddress> missing;

  bool isController() const { return module.slotNumber == 1; }
};

using tPlace = std::pair<std::uint32_t, std::uint32_t>;  // chassis and slot

constexpr int kMostLevels = 64;  // of bridges; a tree that leads back to itself ends there

std::string addressText(std::uint32_t bus, std::uint32_t device, std::uint32_t function) {
  char text[48];
  std::snprintf(text, sizeof text, "%u.%u.%u (%02x:%02x.%x)", bus, device, function, bus, device,
                function);
  return text;
}

std::string addressText(const tPciDevice& device) {
  return addressText(device.address.bus, device.address.device, device.address.function);
}

std::string addressText(const tPciDevice* device) { return addressText(*device); }

std::string addressText(const varmex::PciAddress& address) {
  return addressText(address.bus, address.device, address.function);
}

template <class List>
std::string addressTexts(const List& list) {
  std::string text;
  for (const auto& address : list) text += (text.empty() ? "" : ", ") + addressText(address);
  return text;
}

std::string lanes(std::uint32_t count) {
  return std::to_string(count) + (count == 1 ? " lane" : " lanes");
}

std::string rate(double speed) {
  char text[32];
  std::snprintf(text, sizeof text, "%g GT/s", speed);
  return text;
}

class tLiveCheck {
 public:
  tLiveCheck(tRules& rules, const tPlan& plan, const tPciTree& tree)
      : rules_(rules), plan_(plan), tree_(tree), names_(pathBelowRoot("")) {}

  void run(const varmex::Session& session) {
    for (const auto& chassis : session.eachChassis()) {
      if (chassis.item) takeModules(*chassis.item);
    }
    for (const auto& [number, chassis] : plan_.chassis) checkPresence(number, chassis);
    for (const tLiveModule& module : modules_) {
      checkDriver(module);
      if (!module.isController()) checkLinks(module);
    }
    checkUnlisted();
  }

 private:
  void takeModules(const varmex::Chassis& chassis) {
    for (auto& attempt : chassis.eachModule()) {
      if (!attempt.module || attempt.module->addresses.empty()) continue;
      tLiveModule live{std::move(*attempt.module), {}, {}, {}, {}};
      const varmex::Module& module = live.module;
      live.what = (module.alias.empty() ? module.title() : module.alias + ' ' + module.model) +
                  " in slot " + module.place();
      live.position = positionOf(module);
      for (const varmex::PciAddress& address : module.addresses) {
        const tPciDevice* const found = tree_.find(address.bus, address.device, address.function);
        if (found == nullptr) {
          live.missing.push_back(address);
        } else {
          live.present.push_back(found);
          if (!live.isController()) addSlot(*found, {module.chassisNumber, module.slotNumber});
        }
      }
      modules_.push_back(std::move(live));
    }
  }

  tPosition positionOf(const varmex::Module& module) const {
    const std::string section = "Chassis" + std::to_string(module.chassisNumber) + "Slot" +
                                std::to_string(module.slotNumber);
    if (rules_.express.hasItem(section, "AddressInfo")) {
      return rules_.express.at(section, "AddressInfo");
    }
    return rules_.classic.at(section, "");
  }

  // The bridges above a device lead to that slot.
  void addSlot(const tPciDevice& device, const tPlace& slot) {
    const tPciDevice* bridge = tree_.parentOf(device);
    for (int n = 0; bridge != nullptr && n < kMostLevels; ++n) {
      slots_[bridge].insert(slot);
      bridge = tree_.parentOf(*bridge);
    }
  }

  // Without any of its modules a whole chassis is off, or its cable is not connected.
  void checkPresence(std::uint32_t number, const tChassisPlan& chassis) {
    std::vector<const tLiveModule*> own;
    for (const tLiveModule& module : modules_) {
      if (module.module.chassisNumber == number && !module.isController()) own.push_back(&module);
    }
    const bool isGone = own.size() > 1 && std::all_of(own.begin(), own.end(), [](const auto* one) {
                          return one->present.empty();
                        });
    if (isGone) {
      const tCheckedFile* const file = rules_.firstWith(chassis.section);
      add(tSeverity::wrong, "chassis-not-present",
          file ? file->at(chassis.section) : own.front()->position,
          "none of the " + std::to_string(own.size()) + " modules of chassis " +
              std::to_string(number) + " is on the machine's PCI buses",
          "the modules as if they were there");
    }
    for (const tLiveModule& module : modules_) {
      const bool isOfChassis = module.module.chassisNumber == number;
      if (isOfChassis && !(isGone && !module.isController())) checkPresence(module);
    }
  }

  void checkPresence(const tLiveModule& module) {
    if (module.missing.empty()) return;
    const std::string missing = addressTexts(module.missing);
    const std::string message = module.present.empty()
                                    ? module.what + " is not there: the machine has no " + missing
                                    : "the machine has " + addressTexts(module.present) + " of " +
                                          module.what + ", but no " + missing;
    add(tSeverity::wrong, "module-not-present", module.position, message,
        "the module as if it were there");
  }

  void checkDriver(const tLiveModule& module) {
    std::string without;
    for (const tPciDevice* const device : module.present) {
      if (!device->text("driver").empty() || device->isBridge()) continue;
      without +=
          (without.empty() ? "" : ", ") + addressText(*device) + ' ' + names_.nameOf(*device);
    }
    if (without.empty()) return;
    add(tSeverity::doubtful, "no-driver", module.position,
        "no driver is bound to " + module.what + ": " + without,
        "the module; programs can't reach it without a driver");
  }

  // The links between the module and the bridges that lead to it alone, from below. A bridge of two
  // halves, as switches are, has its link above the upper half.
  void checkLinks(const tLiveModule& module) {
    for (const tPciDevice* below : module.present) {
      for (int n = 0; below != nullptr && n < kMostLevels; ++n) {
        const tPciDevice* const above = tree_.parentOf(*below);
        if (above == nullptr) break;
        const bool hasLink = below->number("current_link_width").value_or(0) > 0;
        if (hasLink && checkLink(module, *below, *above)) return;
        below = nextBelow(hasLink ? tree_.parentOf(*above) : above);
      }
    }
  }

  const tPciDevice* nextBelow(const tPciDevice* bridge) const {
    const auto found = slots_.find(bridge);
    return found != slots_.end() && found->second.size() == 1 ? bridge : nullptr;
  }

  bool checkLink(const tLiveModule& module, const tPciDevice& below, const tPciDevice& above) {
    const auto ends = [&](auto read) {
      auto can = read(below);
      if (const auto other = read(above); other && (!can || *other < *can)) can = other;
      return can;
    };
    const auto width = below.number("current_link_width");
    auto widest = ends([](const tPciDevice& end) { return end.number("max_link_width"); });
    const auto slot = module.module.slotLinkWidth;
    if (widest && slot && *slot > 0) widest = std::min(*widest, *slot);
    const bool isNarrow = width && widest && *width < *widest;
    if (isNarrow) {
      addLink("link-width-reduced", module, below, "with " + lanes(*width), lanes(*widest));
    }
    const auto speed = below.speed("current_link_speed");
    const auto fastest = ends([](const tPciDevice& end) { return end.speed("max_link_speed"); });
    const bool isSlow = speed && fastest && *speed < *fastest;
    if (isSlow) addLink("link-speed-reduced", module, below, "at " + rate(*speed), rate(*fastest));
    return isNarrow || isSlow;
  }

  void addLink(const char* id, const tLiveModule& module, const tPciDevice& below,
               const std::string& now, const std::string& possible) {
    add(tSeverity::doubtful, id, module.position,
        "the link of " + module.what + " at " + addressText(below) + " runs " + now +
            ", and slot and module can use " + possible,
        module.module.linkWidth
            ? "a link of " + lanes(*module.module.linkWidth) + ", as the description has it"
            : "nothing about the link");
  }

  // Behind a bridge that leads to several slots, and on no way to a single one.
  void checkUnlisted() {
    for (const tPciDevice& device : tree_.devices()) {
      if (device.isBridge() || isListed(device)) continue;
      const bool isFirst =
          &device == tree_.devices().data() || !isSameDevice(device, (&device)[-1]);
      if (!isFirst) continue;
      const tPciDevice* bridge = tree_.parentOf(device);
      for (int n = 0; bridge != nullptr && !slots_.contains(bridge) && n < kMostLevels; ++n) {
        bridge = tree_.parentOf(*bridge);
      }
      const auto found = slots_.find(bridge);
      if (found == slots_.end() || found->second.size() < 2) continue;
      addUnlisted(device, found->second.begin()->first);
    }
  }

  void addUnlisted(const tPciDevice& device, std::uint32_t chassis) {
    const std::string section = "Chassis" + std::to_string(chassis);
    const tCheckedFile* const file = rules_.firstWith(section);
    if (file == nullptr) return;
    add(tSeverity::doubtful, "device-not-listed", file->at(section),
        addressText(device) + " is behind the bridges of chassis " + std::to_string(chassis) +
            " and in no slot of it: " + names_.nameOf(device),
        "no device at that address");
  }

  static bool isSameDevice(const tPciDevice& a, const tPciDevice& b) {
    return a.address.domain == b.address.domain && a.address.bus == b.address.bus &&
           a.address.device == b.address.device;
  }

  // Functions that the description leaves out belong to the device that it names.
  bool isListed(const tPciDevice& device) const {
    return std::any_of(modules_.begin(), modules_.end(), [&](const tLiveModule& module) {
      return std::any_of(module.module.addresses.begin(), module.module.addresses.end(),
                         [&](const varmex::PciAddress& address) {
                           return address.bus == device.address.bus &&
                                  address.device == device.address.device;
                         });
    });
  }

  void add(tSeverity severity, const char* id, const tPosition& position,
           const std::string& message, const std::string& answer) {
    rules_.findings.add(severity, id, position, message, answer);
  }

  tRules& rules_;
  const tPlan& plan_;
  const tPciTree& tree_;
  tPciNames names_;
  std::vector<tLiveModule> modules_;
  std::map<const tPciDevice*, std::set<tPlace>> slots_;  // to which each bridge leads
};

}  // namespace

void checkLive(tRules& rules, const tPlan& plan, const varmex::Session& session,
               const tPciTree& tree) {
  tLiveCheck(rules, plan, tree).run(session);
}

}  // namespace tool
