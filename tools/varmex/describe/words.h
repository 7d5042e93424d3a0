#ifndef TOOLS_VARMEX_DESCRIBE_WORDS_H
#define TOOLS_VARMEX_DESCRIBE_WORDS_H

#include <cstdint>
#include <optional>
#include <string>

#include "tools/varmex/describe/address.h"
#include "tools/varmex/describe/json.h"

namespace tool {

// What `describe` tells of an item, in a few words for a person; empty where there is nothing.

std::string slotTypeName(const tJson& slot);

// The module in a slot: what its devices say, or the controller of a system slot, or where the
// module that covers the slot sits.
std::string moduleOf(const tJson& slot);

std::string addressesOf(const tJson& slot, tPciNotation notation);

// The PCI Express link of a slot, in lanes: as it runs, which an empty slot's does not, and the
// most that both the slot and its module can, which nobody knows while one of the two is not known.
// Of what is not known there is a mark where it can't be read.
struct tLink {
  std::optional<std::uint32_t> now;
  std::optional<std::uint32_t> possible;
  std::string nowMark = {};
  std::string possibleMark = {};
  bool hasModule = true;  // of PCI Express

  bool isReduced() const { return now && possible && *now < *possible; }
};
tLink linkOf(const tJson& slot);

// "x4/8 reduced" for 4 lanes now of 8 that both can, "x4/!1" and "x4/?" where that can't be read or
// is not told, "-/8" for a slot without a PXI Express module. Empty where nothing is known.
std::string linkTextOf(const tLink& link);
std::string linkTextOf(const tJson& slot);

// "1.3" for line 3 of trigger 1, with "controller" where the slot drives it. The attributes that
// tell of one kind of trigger are named.
std::string triggerOf(const tJson& slot, const char* number, const char* lineName,
                      const char* controllerName);

// "0>0 1>2,4-7" for the lines of a bridge that come out anywhere.
std::string lineMapOf(const tJson& bridge);

}  // namespace tool

#endif
