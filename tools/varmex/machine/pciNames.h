#ifndef TOOLS_VARMEX_MACHINE_PCINAMES_H
#define TOOLS_VARMEX_MACHINE_PCINAMES_H

#include <map>
#include <string>

#include "tools/varmex/machine/pciTree.h"

namespace tool {

// The names of PCI devices, from the list "pci.ids" where one is installed. It is read at the first
// need.
class tPciNames {
 public:
  // `root` is put ahead of the places where the list may be, which are tried without it as well.
  explicit tPciNames(std::string root) : root_(std::move(root)) {}

  // "Vendor Device [10b5:8747]", as far as it has names.
  std::string nameOf(const tPciDevice& device);

 private:
  void load();

  std::string root_;
  bool isLoaded_ = false;
  std::map<std::string, std::string> names_;  // by "10b5" and "10b5:8747"
};

}  // namespace tool

#endif
