#include "ostrel/quarks/forkProofLock.h"

#include <unistd.h>

#include <atomic>

namespace varmex::inline nOSTRELS100 {

namespace {

constexpr std::intptr_t kFree = 0;

}  // namespace

// The state is the process that holds the lock.
bool tForkProofLock::take() {
  const std::atomic_ref<std::intptr_t> holder(state_);
  const std::intptr_t own = getpid();
  while (true) {
    std::intptr_t found = kFree;
    if (holder.compare_exchange_strong(found, own)) return false;
    if (found == own) {
      holder.wait(found);
    } else if (holder.compare_exchange_strong(found, own)) {
      return true;
    }
  }
}

void tForkProofLock::give() {
  const std::atomic_ref<std::intptr_t> holder(state_);
  holder.store(kFree);
  holder.notify_one();
}

}  // namespace varmex::inline nOSTRELS100
