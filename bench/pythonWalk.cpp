// The walk of bench/pythonWalk.py in C++: each attribute of each item of the installation at
// VARMEX_FSROOT, by varmex.hpp. Prints the number of answers and the processor's seconds.

#include <algorithm>
#include <cstdio>
#include <ctime>

#include "tools/varmex/describe/attributes.h"
#include "varmex/varmex.hpp"

namespace {

std::size_t ask(const varmex::ItemBase& item, const tool::tAttributes& attributes) {
  for (const tool::tAttribute& attribute : attributes) {
    if (attribute.isText)
      (void)item.textIfAny(attribute.number);
    else
      (void)item.u32IfAny(attribute.number);
  }
  return attributes.size();
}

std::size_t walk(const varmex::Session& session) {
  std::size_t count = 0;
  for (const varmex::Chassis& chassis : session.chassis()) {
    count += ask(chassis, tool::kChassisAttributes);
    for (const varmex::Slot& slot : chassis.slots()) {
      count += ask(slot, tool::kSlotAttributes);
      for (const varmex::Device& device : slot.devices()) {
        count += ask(device, tool::kDeviceAttributes);
      }
    }
    for (const varmex::TriggerBridge& bridge : chassis.triggerBridges()) {
      count += ask(bridge, tool::kBridgeAttributes);
    }
  }
  return count;
}

}  // namespace

int main() {
  const varmex::Session session;
  std::size_t count = 0;
  double best = 1e9;
  for (int round = 0; round < 5; ++round) {
    const std::clock_t start = std::clock();
    count = walk(session);
    best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  std::printf("%zu %g\n", count, best);
}
