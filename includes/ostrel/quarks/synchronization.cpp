#include "ostrel/quarks/synchronization.h"

namespace varmex::inline nOSTRELS100 {

bool tCriticalSection::lock() {
  const auto self = std::this_thread::get_id();
  bool wasAbandoned = false;
  // Only this thread itself can have put its own name there.
  if (owner_.load(std::memory_order_relaxed) != self || lock_.isHeldByNamesake()) {
    wasAbandoned = lock_.lock();
    owner_.store(self, std::memory_order_relaxed);
    depth_ = 0;
  }
  ++depth_;
  return wasAbandoned;
}

void tCriticalSection::unlock() {
  if (--depth_ > 0) return;
  owner_.store({}, std::memory_order_relaxed);
  lock_.unlock();
}

}  // namespace varmex::inline nOSTRELS100
