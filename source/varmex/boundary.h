#ifndef SOURCE_VARMEX_BOUNDARY_H
#define SOURCE_VARMEX_BOUNDARY_H

#include "ostrel/quarks/cancellation.h"
#include "ostrel/quarks/sourcePosition.h"
#include "ostrel/quarks/status.h"

namespace varmex {

// Called inside a catch block: turns the exception in flight into a status of `record` under the
// merge rule. An exception of a type that the boundary does not know goes on.
void reportCurrentException(tStatusRecord& record, const tSourcePosition& position);

// A record of the library's own for a caller who gave none.
class tDiscardedStatus {
 public:
  tDiscardedStatus() : record_(makeStatus()) {}
  tDiscardedStatus(const tDiscardedStatus&) = delete;
  tDiscardedStatus& operator=(const tDiscardedStatus&) = delete;
  ~tDiscardedStatus() { statusReleaseText(record_); }

  tStatusRecord& record() { return record_; }

 private:
  tStatusRecord record_;
};

// Runs `body(record)` and answers its result; the null result when it throws what the boundary
// knows.
template <class Body>
auto callInsideBoundary(tStatusRecord& record, const tSourcePosition& position, Body body)
    -> decltype(body(record)) {
  try {
    return body(record);
  } catch (...) {
    reportCurrentException(record, position);
    return decltype(body(record))();
  }
}

// The body of an exported function with a status: nothing is touched when that holds an error. A
// thread that is cancelled meanwhile is so behind it.
template <class Body>
auto callAtBoundary(tStatusRecord* status, const tSourcePosition& position, Body body)
    -> decltype(body(*status)) {
  const tCancellationOff uncancelled;
  if (!status) {
    tDiscardedStatus discarded;
    return callInsideBoundary(discarded.record(), position, body);
  }
  if (isFailure(*status)) return decltype(body(*status))();
  return callInsideBoundary(*status, position, body);
}

}  // namespace varmex

#endif
