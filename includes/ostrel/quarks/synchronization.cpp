#include "ostrel/quarks/synchronization.h"

#include "ostrel/quarks/failure.h"

namespace varmex::inline nOSTRELS100 {

tCriticalSection::tCriticalSection(tFixedStatus& status) {
  if (status.code < 0) return;
  try {
    lock_.emplace();
    prepareLock(*lock_);
  } catch (const std::exception&) {
    lock_.reset();
    fixedStatusSet(status, kOstrelMemoryFull.value, kComponentName, __FILE__, __LINE__);
  }
}

}  // namespace varmex::inline nOSTRELS100
