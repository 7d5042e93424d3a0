#include "ostrel/quarks/cancellation.h"

#include <pthread.h>

namespace varmex::inline nOSTRELS100 {

tCancellationOff::tCancellationOff() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_); }

tCancellationOff::~tCancellationOff() noexcept(false) { pthread_setcancelstate(before_, nullptr); }

tCancellationOff::tLifted::tLifted(const tCancellationOff& outer) {
  pthread_setcancelstate(outer.before_, nullptr);
}

tCancellationOff::tLifted::~tLifted() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr); }

}  // namespace varmex::inline nOSTRELS100
