#include "ostrel/quarks/stopwatch.h"

namespace varmex::inline nOSTRELS100 {

std::chrono::nanoseconds monotonicTime() {
  return std::chrono::steady_clock::now().time_since_epoch();
}

}  // namespace varmex::inline nOSTRELS100
