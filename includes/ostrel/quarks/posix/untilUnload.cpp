#include "ostrel/quarks/untilUnload.h"

#include <atomic>
#include <cstdlib>

namespace varmex::inline nOSTRELS100 {

namespace {

bool isUnloading = false;
bool isExiting = false;

// An unload runs this ahead of all that was registered for the end, of `atexit` and of the
// destructors of static data.
[[gnu::destructor]] void noteUnload() { isUnloading = true; }

// The end of a process runs this ahead of what it does to libraries.
void noteEnd() { isExiting = !isUnloading; }

}  // namespace

bool isLastUse() { return isUnloading && !isExiting; }

void expectExit() {
  static std::atomic<bool> isExpected{false};
  if (!isExpected.load(std::memory_order_relaxed) && !isExpected.exchange(true)) {
    std::atexit(noteEnd);
  }
}

}  // namespace varmex::inline nOSTRELS100
