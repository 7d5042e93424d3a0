#ifndef HALDEN_INTERNAL_NATIVEDIRECTORYWATCH_H
#define HALDEN_INTERNAL_NATIVEDIRECTORYWATCH_H

#include <cstdint>
#include <memory>

#include "varmex/status.h"

namespace halden {

enum class tWake { changed, cancelled, timedOut, failed };

inline constexpr std::uint32_t kForever = 0xFFFFFFFF;

// The platform's notification of changes in one directory, not below it. What fails leaves its
// reason with the system. One thread at a time waits; any thread may cancel.
class tNativeDirectoryWatch {
 public:
  tNativeDirectoryWatch();
  ~tNativeDirectoryWatch();

  // Sets up the cancel.
  bool create();

  // Starts to watch. `path` is UTF-8; a failure to widen it is reported to `status`.
  bool watch(const char* path, tStatusRecord& status);

  // Sleeps until something in the directory changed since the last wait that answered so, until the
  // cancel, or for that many milliseconds.
  tWake wait(std::uint32_t timeoutMs);

  // For good: every later wait answers `cancelled`.
  void cancel();

 private:
  struct tState;
  std::unique_ptr<tState> state_;
};

}  // namespace halden

#endif
