#include "ostrel/quarks/forkProofLock.h"

#include <pthread.h>

#include <atomic>

namespace varmex::inline nOSTRELS100 {

namespace {

constexpr std::intptr_t kFree = 0;

// Which of the processes that were forked one from another this is, and the thread that it began
// with.
constinit std::intptr_t generation = 1;
constinit pthread_t firstThread{};

void noteFork() {
  ++generation;
  firstThread = pthread_self();
}

// Withdrawn by the system when the library is unloaded.
[[maybe_unused]] const int kForkHandler = pthread_atfork(nullptr, nullptr, noteFork);

}  // namespace

// The state is the generation of the process that holds the lock.
bool tForkProofLock::lock() {
  const std::atomic_ref<std::intptr_t> holder(state_);
  while (true) {
    std::intptr_t found = kFree;
    if (holder.compare_exchange_strong(found, generation)) return false;
    if (found == generation) {
      holder.wait(found);
    } else if (holder.compare_exchange_strong(found, generation)) {
      return true;
    }
  }
}

void tForkProofLock::unlock() {
  const std::atomic_ref<std::intptr_t> holder(state_);
  holder.store(kFree);
  holder.notify_one();
}

bool tForkProofLock::isHeldByNamesake() const {
  const std::atomic_ref<std::intptr_t> holder(const_cast<std::intptr_t&>(state_));
  return holder.load() != generation && !pthread_equal(pthread_self(), firstThread);
}

}  // namespace varmex::inline nOSTRELS100
