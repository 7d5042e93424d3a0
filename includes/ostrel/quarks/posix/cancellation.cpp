#include "ostrel/quarks/cancellation.h"

#include <pthread.h>

namespace varmex::inline nOSTRELS100 {

tCancellationOff::tCancellationOff() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_); }

tCancellationOff::~tCancellationOff() noexcept(false) { pthread_setcancelstate(before_, nullptr); }

tCancellationOff::tLifted::tLifted(const tCancellationOff& outer) {
  pthread_setcancelstate(outer.before_, nullptr);
}

tCancellationOff::tLifted::~tLifted() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr); }

tCancellationInSleeps::tCancellationInSleeps() {
  pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &before_);
}

tCancellationInSleeps::~tCancellationInSleeps() noexcept(false) {
  pthread_setcanceltype(before_, nullptr);
}

}  // namespace varmex::inline nOSTRELS100
