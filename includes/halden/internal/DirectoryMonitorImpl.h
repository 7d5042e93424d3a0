#ifndef HALDEN_INTERNAL_DIRECTORYMONITORIMPL_H
#define HALDEN_INTERNAL_DIRECTORYMONITORIMPL_H

#include <string>
#include <vector>

#include "halden/internal/nativeDirectoryWatch.h"

namespace halden {

// Sleeps until something happens to some files. Any number of threads may wait at once, and all see
// each change.
class DirectoryMonitorImpl {
 public:
  // Watches from now on. The files' full paths are UTF-8; their folders must exist. A failure is
  // reported to `status`.
  DirectoryMonitorImpl(const std::vector<std::string>& files, tStatusRecord& status);
  DirectoryMonitorImpl(const DirectoryMonitorImpl&) = delete;
  DirectoryMonitorImpl& operator=(const DirectoryMonitorImpl&) = delete;

  // Watches what the paths lead over by now, and answers how many changes were seen ahead of that.
  // A failure is reported to `status`.
  std::uint64_t arm(tStatusRecord& status);

  // True when there was a change since `arm` answered `seen`, or one comes within the time; false
  // after a cancel, and on failure, which is reported to `status`: -52007 when the time ran out.
  bool wait(std::uint64_t seen, std::uint32_t timeoutMs, tStatusRecord& status);

  // Wakes all waiters, also those that come later.
  void cancel() { watch_.cancel(); }

 private:
  tNativeDirectoryWatch watch_;
};

}  // namespace halden

#endif
