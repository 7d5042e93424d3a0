#include "tools/synthetic/pciTree.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>

namespace synthetic {

namespace {

constexpr std::uint32_t kLastBus = 255;
constexpr std::uint32_t kPortLanes = 8;
constexpr const char* kBridgeClass = "0x060400";
constexpr const char* kModuleClass = "0x118000";
constexpr const char* kSpeed = "8.0 GT/s PCIe";
constexpr const char* kSlowSpeed = "2.5 GT/s PCIe";

using tPlace = std::pair<std::uint32_t, std::uint32_t>;  // chassis and slot
using tFiles = std::map<std::string, std::string>;       // of a device, by name

std::string nameOf(std::uint32_t bus, std::uint32_t device, std::uint32_t function) {
  char name[32];
  std::snprintf(name, sizeof name, "0000:%02x:%02x.%x", bus, device, function);
  return name;
}

class tTree {
 public:
  tTree(const std::vector<tFunction>& functions, const std::vector<std::string>& faults)
      : functions_(functions) {
    for (const tFunction& function : functions) buses_.insert(function.bus);
    // Which modules are missing counts for the other faults.
    for (const bool isMissing : {true, false}) {
      for (const std::string& fault : faults) {
        if ((fault == "missing") == isMissing) choose(fault);
      }
    }
  }

  std::map<std::string, tFiles> make() {
    for (const tFunction& function : functions_) {
      addPort(function);
      addFunction(function);
    }
    return std::move(devices_);
  }

 private:
  bool has(const tFunction& function, const char* fault) const {
    const auto found = faulty_.find({function.chassis, function.slot});
    return found != faulty_.end() && found->second == fault;
  }

  // Whether a check could find it there.
  bool canHave(const tFunction& function, const std::string& fault) const {
    if (function.slot == 1) return false;
    if (isOfLink(fault)) return function.lanes > 1;
    return fault != "unlisted" || slotsThere(function.chassis).size() > 1;
  }

  static bool isOfLink(const std::string& fault) { return fault == "narrow" || fault == "slow"; }

  std::set<std::uint32_t> slotsThere(std::uint32_t chassis) const {
    std::set<std::uint32_t> slots;
    for (const tFunction& function : functions_) {
      const bool isThere = function.slot != 1 && !has(function, "missing");
      if (isThere && function.chassis == chassis) slots.insert(function.slot);
    }
    return slots;
  }

  // The first module without a fault that it can have; with a link where there is one.
  void choose(const std::string& fault) {
    if (std::find(std::begin(kPciFaults), std::end(kPciFaults), fault) == std::end(kPciFaults)) {
      throw std::invalid_argument("no such fault of a PCI tree: " + fault);
    }
    for (const bool isLinked : {true, false}) {
      for (const tFunction& function : functions_) {
        const bool fits = canHave(function, fault) && (!isLinked || function.lanes > 1);
        if (fits && faulty_.try_emplace({function.chassis, function.slot}, fault).second) return;
      }
    }
    const char* const need = isOfLink(fault) ? "; it needs a link of several lanes"
                             : fault == "unlisted"
                                 ? "; it needs a chassis with two modules beside its controller"
                                 : "";
    throw std::invalid_argument("no module is left for the fault " + fault + need);
  }

  std::uint32_t takeBus() {
    while (nextBus_ > 0 && buses_.contains(nextBus_)) --nextBus_;
    if (nextBus_ == 0) throw std::invalid_argument("a PCI tree has no bus left for the bridges");
    return nextBus_--;
  }

  void addBridge(std::uint32_t bus, std::uint32_t device, std::uint32_t function,
                 std::uint32_t behind) {
    devices_[nameOf(bus, device, function)] = {{"class", kBridgeClass},
                                               {"vendor", "0xfa01"},
                                               {"device", "0x0018"},
                                               {"secondary_bus_number", std::to_string(behind)},
                                               {"subordinate_bus_number", std::to_string(behind)},
                                               {"uevent", "DRIVER=pcieport\n"},
                                               {"max_link_speed", kSpeed},
                                               {"current_link_speed", kSpeed},
                                               {"max_link_width", std::to_string(kPortLanes)},
                                               {"current_link_width", std::to_string(kPortLanes)}};
  }

  // The bus of a chassis's switch, on which its ports are; made with the first.
  std::uint32_t busOfChassis(std::uint32_t chassis) {
    const auto [found, isNew] = switches_.try_emplace(chassis, 0);
    if (!isNew) return found->second;
    const std::uint32_t upper = takeBus();
    found->second = takeBus();
    addBridge(0, 1 + (chassis - 1) / 8, (chassis - 1) % 8, upper);
    addBridge(upper, 0, 0, found->second);
    return found->second;
  }

  // Each bus of modules has a port, unless a module's own bridge leads to it.
  void addPort(const tFunction& function) {
    if (function.bridgedBus != 0) bridged_.insert(function.bridgedBus);
    if (bridged_.contains(function.bus) || !ports_.insert(function.bus).second) return;
    const std::uint32_t bus = busOfChassis(function.chassis);
    addBridge(bus, function.slot, 0, function.bus);
    if (has(function, "unlisted")) {
      const std::uint32_t behind = takeBus();
      const std::uint32_t count = unlisted_[function.chassis]++;
      addBridge(bus, 31 - count / 8, count % 8, behind);
      addModule(behind, 0, 0, 4, nullptr);
    }
  }

  void addFunction(const tFunction& function) {
    if (has(function, "missing")) return;
    if (function.bridgedBus != 0) {
      return addBridge(function.bus, function.device, function.function, function.bridgedBus);
    }
    addModule(function.bus, function.device, function.function, function.lanes, &function);
  }

  void addModule(std::uint32_t bus, std::uint32_t device, std::uint32_t number, std::uint32_t lanes,
                 const tFunction* function) {
    const auto isOne = [&](const char* fault) { return function && has(*function, fault); };
    tFiles files = {{"class", kModuleClass}, {"vendor", "0xfa02"}, {"device", "0x4081"}};
    files["uevent"] = isOne("driverless") ? "PCI_CLASS=118000\n" : "DRIVER=rackmodule\n";
    if (lanes > 0) {
      files["max_link_width"] = std::to_string(lanes);
      files["current_link_width"] = std::to_string(isOne("narrow") ? 1 : lanes);
      files["max_link_speed"] = kSpeed;
      files["current_link_speed"] = isOne("slow") ? kSlowSpeed : kSpeed;
    }
    devices_[nameOf(bus, device, number)] = std::move(files);
  }

  const std::vector<tFunction>& functions_;
  std::map<tPlace, std::string> faulty_;
  std::set<std::uint32_t> buses_;  // of modules
  std::uint32_t nextBus_ = kLastBus;
  std::map<std::uint32_t, std::uint32_t> switches_;  // buses by chassis
  std::map<std::uint32_t, std::uint32_t> unlisted_;  // devices by chassis
  std::set<std::uint32_t> bridged_;
  std::set<std::uint32_t> ports_;
  std::map<std::string, tFiles> devices_;
};

}  // namespace

void writePciTree(const std::vector<tFunction>& functions, const std::vector<std::string>& faults,
                  const std::string& folder) {
  namespace fs = std::filesystem;
  for (const auto& [name, files] : tTree(functions, faults).make()) {
    const fs::path device = fs::path(folder) / name;
    fs::create_directories(device);
    for (const auto& [file, text] : files) {
      std::ofstream out(device / file, std::ios::binary);
      out << text << (text.ends_with('\n') ? "" : "\n") << std::flush;
      if (!out) throw std::runtime_error("can't write " + (device / file).string());
    }
  }
}

}  // namespace synthetic
