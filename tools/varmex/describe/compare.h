#ifndef TOOLS_VARMEX_DESCRIBE_COMPARE_H
#define TOOLS_VARMEX_DESCRIBE_COMPARE_H

#include <string>
#include <vector>

#include "tools/varmex/describe/address.h"
#include "tools/varmex/describe/json.h"

namespace tool {

// One difference between two descriptions, as a person tells it.
struct tChange {
  enum tKind { isNew, isGone, hasMoved, hasChanged };

  tKind kind;
  std::string item;       // "chassis", "slot", "module", "bridge"
  std::string before;     // its place, "1" or "1/9"; empty for what is new
  std::string after;      // empty for what is gone
  std::string title;      // of a module name or vendor, and model; of a chassis vendor and model
  std::string attribute;  // of what has changed, in words
  std::string from;       // empty where there was nothing
  std::string to;
};

// What is new, gone, moved or changed from one document of `describe` to another. Chassis are the
// same by their identity, else by their number; modules by name, vendor and model, else by their
// place. What follows from another difference does not count: names that are made from a serial
// number or a place, the modules of a chassis that came, went or has another number, addresses of a
// module that moved.
std::vector<tChange> compare(const tJson& before, const tJson& after);

// In one line: "DMM ORX-4081 in slot 1/9: link width x4 -> x1", "DMM ORX-4081: slot 1/9 -> 1/11".
std::string lineOf(const tChange& change, tPciNotation notation);

// The same for a program, addresses in decimal.
tJson jsonOf(const tChange& change);

// By what changes can be told apart: "new", "gone", "moved", "changed", the items, and the
// attributes with hyphens for blanks ("link-width").
std::vector<std::string> kindsOfChange();
bool isOfKind(const tChange& change, const std::string& kind);

inline constexpr const char* kAddressKind = "PCI-addresses";

}  // namespace tool

#endif
