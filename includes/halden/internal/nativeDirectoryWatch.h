#ifndef HALDEN_INTERNAL_NATIVEDIRECTORYWATCH_H
#define HALDEN_INTERNAL_NATIVEDIRECTORYWATCH_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "varmex/status.h"

namespace halden {

enum class tWake { changed, cancelled, timedOut, failed };

inline constexpr std::uint32_t kForever = 0xFFFFFFFF;

// The platform's notification of changes to some files. What fails leaves its reason with the
// system. All but the first two may be called by any number of threads at once.
class tNativeDirectoryWatch {
 public:
  tNativeDirectoryWatch();
  ~tNativeDirectoryWatch();

  // Sets up the cancel.
  bool create();

  // Starts to watch files by their full paths in UTF-8; a failure to widen one is reported to
  // `status`. The files need not exist, their folders must.
  bool watch(const std::vector<std::string>& files, tStatusRecord& status);

  // Makes sure that all that the paths lead over by now is watched, and tells how many changes were
  // noticed ahead of that.
  bool arm(std::uint64_t& changes);

  // Sleeps until more changes than `seen` were noticed since the start, until the cancel, or for
  // that many milliseconds. Changes count that leave the files as they were. A thread that is
  // cancelled meanwhile leaves it by unwinding.
  tWake wait(std::uint64_t seen, std::uint32_t timeoutMs);

  // For good: every later wait answers `cancelled`.
  void cancel();

 private:
  struct tState;
  std::unique_ptr<tState> state_;
};

}  // namespace halden

#endif
