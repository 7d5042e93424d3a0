#include "ostrel/quarks/untilUnload.h"

namespace varmex::inline nOSTRELS100 {

namespace {

bool isUnloading = false;

// An unload runs this ahead of the destructors of static data, the end of a process behind them.
[[gnu::destructor]] void noteUnload() { isUnloading = true; }

}  // namespace

bool isLastUse() { return isUnloading; }

}  // namespace varmex::inline nOSTRELS100
