#ifndef TOOLS_VARMEX_DESCRIBE_COMPARE_H
#define TOOLS_VARMEX_DESCRIBE_COMPARE_H

#include <string>
#include <vector>

#include "tools/varmex/describe/json.h"

namespace tool {

// One difference between two descriptions, as a person tells it.
struct tChange {
  enum tKind { isNew, isGone, hasMoved, hasChanged };

  tKind kind;
  std::string item;       // "chassis", "slot", "module", "bridge"
  std::string before;     // its place, "1" or "1/9"; empty for what is new
  std::string after;      // empty for what is gone
  std::string title;      // vendor, model and name, as far as there are any
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

// In one line: "module DMM in slot 1/9: link width x4 -> x1".
std::string lineOf(const tChange& change);

// The same for a program.
tJson jsonOf(const tChange& change);

}  // namespace tool

#endif
