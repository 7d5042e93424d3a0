#ifndef TOOLS_VARMEX_MACHINE_PCITREE_H
#define TOOLS_VARMEX_MACHINE_PCITREE_H

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/varmex/describe/json.h"

namespace tool {

// A function of a device on the PCI buses of a machine, with what the system tells of it.
struct tPciDevice {
  struct tAddress {
    std::uint32_t domain = 0;
    std::uint32_t bus = 0;
    std::uint32_t device = 0;
    std::uint32_t function = 0;

    auto operator<=>(const tAddress&) const = default;
  };

  tAddress address;
  std::map<std::string, std::string> texts;  // by the name of the system's file; "driver" if bound

  // Empty without such a text.
  std::string text(const std::string& name) const;
  // "0x10b5", "4"; nothing for what is no number.
  std::optional<std::uint32_t> number(const std::string& name) const;
  // In GT/s.
  std::optional<double> speed(const std::string& name) const;
  bool isBridge() const;
};

// The PCI tree of a machine at one moment.
class tPciTree {
 public:
  tPciTree() = default;
  explicit tPciTree(std::vector<tPciDevice> devices);

  // From a folder as /sys/bus/pci/devices is one; nothing without the folder, or with an empty one.
  // What can't be read of a device counts as absent.
  static std::optional<tPciTree> read(const std::string& folder);

  // By address, each once.
  const std::vector<tPciDevice>& devices() const { return devices_; }
  // In domain 0, the one that descriptions know; null where it has none.
  const tPciDevice* find(std::uint32_t bus, std::uint32_t device, std::uint32_t function) const;
  // The bridge that leads to the bus of a device; null for one that the machine itself leads to.
  const tPciDevice* parentOf(const tPciDevice& device) const;

 private:
  std::vector<tPciDevice> devices_;
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::size_t> bridges_;  // by domain and bus
};

// As a saved file has it.
tJson jsonOfPciTree(const tPciTree& tree);

// Throws std::runtime_error, which tells what is wrong, for JSON of another form.
tPciTree pciTreeOfJson(const tJson& json);

// Where the system tells of its PCI devices.
inline constexpr const char* kPciFolder = "/sys/bus/pci/devices";

}  // namespace tool

#endif
