#ifndef SOURCE_VARMEX_BOUNDARY_H
#define SOURCE_VARMEX_BOUNDARY_H

#include <utility>

#include "ostrel/quarks/cancellation.h"
#include "ostrel/quarks/result.h"

namespace varmex {

// Called inside a catch block: turns the exception in flight into a status of `record`, unless that
// is null, under the merge rule. An exception of a type that the boundary does not know goes on.
void reportCurrentException(tStatusRecord* record, const tSourcePosition& position);

// The same for a refusal.
void reportRefusal(const tRefusal& refusal, tStatusRecord& record, const tSourcePosition& position);

// Throws what becomes of a refusal at the boundary, with all its texts.
[[noreturn]] void raise(const tRefusal& refusal);

// Runs `body()` and answers the value of its result; the null value when it is refused or throws
// what the boundary knows.
template <class Body>
auto callInsideBoundary(tStatusRecord* status, const tSourcePosition& position, Body body) ->
    typename decltype(body())::tValue {
  try {
    auto result = body();
    if (result) return std::move(*result);
    if (status) reportRefusal(result.refusal(), *status, position);
  } catch (...) {
    reportCurrentException(status, position);
  }
  return {};
}

// The body of an exported function with a status: nothing is touched when that holds an error. A
// thread that is cancelled meanwhile is so behind it.
template <class Body>
auto callAtBoundary(tStatusRecord* status, const tSourcePosition& position, Body body) ->
    typename decltype(body())::tValue {
  const tCancellationOff uncancelled;
  if (status && isFailure(*status)) return {};
  return callInsideBoundary(status, position, body);
}

}  // namespace varmex

#endif
