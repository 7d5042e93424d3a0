#ifndef OSTREL_QUARKS_TRANSIENTFAILURES_H
#define OSTREL_QUARKS_TRANSIENTFAILURES_H

#include <atomic>
#include <cstdint>

namespace varmex::inline nOSTRELS100 {

// Counts the failures of the moment, as for want of descriptors, that were answered as if something
// were not there. An answer during whose making the count went on may be another one soon, and is
// not kept. Any thread's failures count.
inline std::atomic<std::uint64_t> transientFailures{0};

}  // namespace varmex::inline nOSTRELS100

#endif
