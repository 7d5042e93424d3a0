// Rewrites a description over and over, as a resource manager does: under the exclusive lock, in
// place. Arguments: pxisys.ini, pxiesys.ini, configuration.ini, how often.

#include <string>

#include "tests/support/testMachine.h"

namespace {

// The two files carry one number; a reader that sees two has read between the writes.
std::string chassisSection(int round) {
  const std::string padding(static_cast<std::size_t>(round % 7 * 1000), 'p');
  return "[System]\nChassisList=1\n[Chassis1]\nVendor=V" + std::to_string(round) +
         "\nModel=M\nSlotList=\"\"\nPadding=x" + padding + "\n";
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 5) return 2;
  const int rounds = std::stoi(arguments[4]);
  for (int round = 0; round < rounds; ++round) {
    const test::tExclusiveLock lock(arguments[3]);
    test::tTestMachine::write(arguments[1], chassisSection(round));
    test::tTestMachine::write(arguments[2], chassisSection(round) + "SerialNumber=S\n");
  }
  return 0;
}
