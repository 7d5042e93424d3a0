#include "ostrel/quarks/stopwatch.h"

#include <windows.h>

#include <cstdint>

namespace varmex::inline nOSTRELS100 {

std::chrono::nanoseconds monotonicTime() {
  DWORD adjustment = 0;
  DWORD increment = 0;  // in units of 100 ns
  BOOL disabled = FALSE;
  GetSystemTimeAdjustment(&adjustment, &increment, &disabled);
  const std::int64_t step = increment > 0 ? std::int64_t{100} * increment : 1;
  const std::int64_t now = static_cast<std::int64_t>(GetTickCount64()) * 1'000'000;
  return std::chrono::nanoseconds((now + step - 1) / step * step);
}

}  // namespace varmex::inline nOSTRELS100
