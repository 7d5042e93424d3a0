#include "ostrel/quarks/cancellation.h"

// Threads of this platform are not cancelled.
namespace varmex::inline nOSTRELS100 {

tCancellationOff::tCancellationOff() = default;
tCancellationOff::~tCancellationOff() noexcept(false) = default;
tCancellationOff::tLifted::tLifted(const tCancellationOff&) {}
tCancellationOff::tLifted::~tLifted() = default;
tCancellationInSleeps::tCancellationInSleeps() = default;
tCancellationInSleeps::~tCancellationInSleeps() noexcept(false) = default;

}  // namespace varmex::inline nOSTRELS100
