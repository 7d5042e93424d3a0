#include "source/varmex/fileStamp.h"

#include "ostrel/quarks/failure.h"
#include "ostrel/quarks/throwingStatus.h"
#include "source/varmex/timedRetry.h"

namespace varmex {

namespace {

halden::tFileTimeStamp readStamp(const std::string& path) {
  tThrowingStatus<tStatusRecord> status;
  std::uint64_t time = 0;
  if (!halden::readLastWriteTime(path, time, status)) return {};
  return {true, static_cast<std::uint32_t>(time), static_cast<std::uint32_t>(time >> 32)};
}

}  // namespace

halden::tFileTimeStamp stampWithRetry(const std::string& path) {
  constexpr std::chrono::milliseconds kLimit{1'000};
  const tStopwatch stopwatch;
  while (true) {
    std::chrono::milliseconds remaining{0};
    try {
      return readStamp(path);
    } catch (const corerr::ExceptionBase& exception) {
      remaining = stopwatch.remaining(kLimit);
      if (exception.record().code != kOstrelInsufficientPermissions.value) throw;
      if (remaining.count() == 0) throw;
    }
    std::this_thread::sleep_for(std::min(remaining, kRetryPause));
  }
}

}  // namespace varmex
