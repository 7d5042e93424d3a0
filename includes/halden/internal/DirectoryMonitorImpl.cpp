#include "halden/internal/DirectoryMonitorImpl.h"

#include "ostrel/quarks/failure.h"

namespace halden {

namespace {

using namespace varmex;

constexpr tErrorCode kTimedOut{-52007, "ostrelerr_operationTimedOut"};

void reportSystemFault(tStatusRecord& status, const tSourcePosition& position) {
  const tSystemError error = lastSystemError();
  tFailure(kOstrelOsFault, position).systemError(error).reportTo(status);
}

}  // namespace

DirectoryMonitorImpl::DirectoryMonitorImpl(const std::vector<std::string>& files,
                                           tStatusRecord& status) {
  if (isFailure(status)) return;
  if (!watch_.create() || !watch_.watch(files, status)) reportSystemFault(status, OSTREL_HERE);
}

std::uint64_t DirectoryMonitorImpl::arm(tStatusRecord& status) {
  std::uint64_t changes = 0;
  if (!isFailure(status) && !watch_.arm(changes)) reportSystemFault(status, OSTREL_HERE);
  return changes;
}

bool DirectoryMonitorImpl::wait(std::uint64_t seen, std::uint32_t timeoutMs,
                                tStatusRecord& status) {
  if (isFailure(status)) return false;
  switch (watch_.wait(seen, timeoutMs)) {
    case tWake::changed: return true;
    case tWake::cancelled: return false;
    case tWake::failed: reportSystemFault(status, OSTREL_HERE); return false;
    case tWake::timedOut: break;
  }
  tFailure(kTimedOut, OSTREL_HERE)
      .open("halden_debug")
      .u32("requested_timeout_ms", timeoutMs)
      .reportTo(status);
  return false;
}

}  // namespace halden
