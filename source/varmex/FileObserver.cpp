#include "source/varmex/FileObserver.h"

#include "ostrel/quarks/throwingStatus.h"

namespace varmex {

namespace {

constexpr std::int32_t kTimedOut = -52007;

}  // namespace

// The guard throws when the monitor stands, so that what it holds is given back.
FileObserver::FileObserver(const std::string& pxiSysPath, const std::string& pxieSysPath) {
  tThrowingStatus<tStatusRecord> status;
  monitor_.emplace(std::vector{pxiSysPath, pxieSysPath}, static_cast<tStatusRecord&>(status));
}

std::uint64_t FileObserver::arm() {
  tThrowingStatus<tStatusRecord> status;
  return monitor_->arm(status);
}

bool FileObserver::waitBeyond(std::uint64_t seen, std::uint32_t timeoutMs) {
  try {
    tThrowingStatus<tStatusRecord> status;
    monitor_->wait(seen, timeoutMs, status);
  } catch (const corerr::ExceptionBase& exception) {
    if (exception.record().code != kTimedOut) throw;
    return false;
  }
  // A change or a cancel: the session knows which.
  return true;
}

}  // namespace varmex
